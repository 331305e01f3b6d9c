#include "tests/system/standin/StandinFixture.h"

void CStandinTest::SetUp()
{
    ASSERT_EQ(WBEM_S_NO_ERROR, Connect(L"root\\cimv2", nullptr, m_services));
}

void CStandinTest::TearDown()
{
    m_services.Reset();
}

HRESULT CStandinTest::Connect(const wchar_t* nameSpace, const wchar_t* locale,
                              ComPtr<IWbemServices>& services)
{
    ComPtr<IWbemLocator> locator;
    const HRESULT hr = CoCreateInstance(CLSID_WbemLocator, nullptr, CLSCTX_INPROC_SERVER,
                                        __uuidof(IWbemLocator), locator.PutVoid());
    return FAILED(hr) ? hr
                      : locator->ConnectServer(CBstr(nameSpace).Get(), nullptr, nullptr, CBstr(locale).Get(),
                                               0, nullptr, nullptr, services.Put());
}

Objects ReadAll(IEnumWbemClassObject* objects, HRESULT& end)
{
    Objects all;
    for (;;)
    {
        IWbemClassObject* batch[16] = {};
        ULONG returned = 0;
        end = objects->Next(60000, 16, batch, &returned);
        for (ULONG i = 0; i < returned; ++i)
        {
            all.emplace_back();
            all.back().Attach(batch[i]);
        }
        if (end != WBEM_S_NO_ERROR)
            return all;
    }
}

std::wstring Text(IWbemClassObject* object, const wchar_t* property)
{
    CVariant value;
    if (!object || FAILED(object->Get(property, 0, value.Put(), nullptr, nullptr)))
        return L"(error)";
    if (value.vt == VT_NULL)
        return L"(null)";
    if (value.vt == VT_BOOL)
        return value.boolVal ? L"true" : L"false";
    CVariant text;
    return SUCCEEDED(VariantChangeType(text.Put(), &value, 0, VT_BSTR)) ? text.bstrVal : L"(error)";
}

std::vector<std::wstring> Texts(const Objects& objects, const wchar_t* property)
{
    std::vector<std::wstring> texts;
    for (const ComPtr<IWbemClassObject>& object : objects)
        texts.push_back(Text(object.Get(), property));
    return texts;
}

ComPtr<IWbemClassObject> TakeErrorObject()
{
    ComPtr<IErrorInfo> info;
    ComPtr<IWbemClassObject> status;
    if (GetErrorInfo(0, info.Put()) == S_OK)
        info.As(status);
    return status;
}

ComPtr<IWbemClassObject> InParameters(IWbemServices* services, const wchar_t* method, const wchar_t* name,
                                      LONG value)
{
    ComPtr<IWbemClassObject> definition;
    ComPtr<IWbemClassObject> signature;
    ComPtr<IWbemClassObject> in;
    EXPECT_EQ(WBEM_S_NO_ERROR,
              services->GetObject(CBstr(L"StandinTest_Item").Get(), 0, nullptr, definition.Put(), nullptr));
    EXPECT_EQ(WBEM_S_NO_ERROR, definition->GetMethod(method, 0, signature.Put(), nullptr));
    EXPECT_EQ(WBEM_S_NO_ERROR, signature->SpawnInstance(0, in.Put()));
    CVariant number = CVariant::FromLong(value);
    EXPECT_EQ(WBEM_S_NO_ERROR, in->Put(name, 0, &number, 0));
    return in;
}
