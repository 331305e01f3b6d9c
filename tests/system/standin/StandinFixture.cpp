#include "tests/system/standin/StandinFixture.h"

#include "tests/system/standin/TestProviderIds.h"
#include "tests/system/support/Process.h"

namespace
{
constexpr wchar_t kSettings[] = L"SOFTWARE\\WMI stand-in";

std::wstring Quoted(const std::wstring& path)
{
    return L"\"" + path + L"\"";
}

void RunOrFail(const std::wstring& commandLine)
{
    const CRunResult result = RunProgram(commandLine);
    ASSERT_EQ(0u, result.ExitCode) << result.Output;
}

std::wstring ServerKey(const CLSID& clsid)
{
    wchar_t text[40] = {};
    StringFromGUID2(clsid, text, 40);
    return std::wstring(L"SOFTWARE\\Classes\\CLSID\\") + text;
}

void RegisterProvider(const CLSID& clsid)
{
    const std::wstring server = Quoted(BinFolder() + L"StandinTestProvider.exe");
    CRegKey key;
    RegCreateKeyExW(HKEY_LOCAL_MACHINE, (ServerKey(clsid) + L"\\LocalServer32").c_str(), 0, nullptr, 0,
                    KEY_ALL_ACCESS, nullptr, key.Put(), nullptr);
    RegSetValueExW(key.Get(), nullptr, 0, REG_SZ, reinterpret_cast<const BYTE*>(server.c_str()),
                   static_cast<DWORD>((server.size() + 1) * sizeof(wchar_t)));
}

// The service's settings as they were before this program, to be put back after it.
std::vector<BYTE> g_mofFiles;

std::vector<BYTE> ReadMofFiles()
{
    DWORD size = 0;
    RegGetValueW(HKEY_LOCAL_MACHINE, kSettings, L"MofFiles", RRF_RT_REG_MULTI_SZ, nullptr, nullptr, &size);
    std::vector<BYTE> files(size);
    RegGetValueW(HKEY_LOCAL_MACHINE, kSettings, L"MofFiles", RRF_RT_REG_MULTI_SZ, nullptr, files.data(),
                 &size);
    return files;
}

void RestoreSettings()
{
    RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, kSettings, L"IdleMilliseconds");
    if (g_mofFiles.empty())
        RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, kSettings, L"MofFiles");
    else
        RegSetKeyValueW(HKEY_LOCAL_MACHINE, kSettings, L"MofFiles", REG_MULTI_SZ, g_mofFiles.data(),
                        static_cast<DWORD>(g_mofFiles.size()));
}

HANDLE NewEvent()
{
    return CreateEventW(nullptr, TRUE, FALSE, nullptr);
}
} // namespace

void CStandinTest::SetUpTestSuite()
{
    CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    const std::wstring service = Quoted(BinFolder() + L"WmiStandin.exe");
    g_mofFiles = ReadMofFiles();
    RunOrFail(L"regsvr32.exe /s " + Quoted(BinFolder() + L"WmiStandin.dll"));
    RunOrFail(service + L" /RegServer");
    RunOrFail(service + L" /compile " + Quoted(BinFolder() + L"standin-test\\system.mof") + L" " +
              Quoted(BinFolder() + L"standin-test\\StandinTest.mof"));
    RunOrFail(service + L" /idle 300");
    RegisterProvider(kTestProvider);
    RegisterProvider(kBrokenProvider);
}

void CStandinTest::TearDownTestSuite()
{
    EXPECT_TRUE(WaitForNoProcess(L"WmiStandin.exe"));
    EXPECT_TRUE(WaitForNoProcess(L"StandinTestProvider.exe"));
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, ServerKey(kTestProvider).c_str());
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, ServerKey(kBrokenProvider).c_str());
    RestoreSettings();
    CoUninitialize();
}

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

CClientSink::CClientSink(HRESULT answer) : m_answer(answer), m_object(NewEvent()), m_status(NewEvent()) {}

STDMETHODIMP CClientSink::Indicate(LONG count, IWbemClassObject** objects)
{
    m_objects.insert(m_objects.end(), objects, objects + count);
    SetEvent(m_object.Get());
    return m_answer;
}

STDMETHODIMP CClientSink::SetStatus(LONG, HRESULT result, BSTR, IWbemClassObject*)
{
    ++m_statuses;
    m_result = result;
    SetEvent(m_status.Get());
    return WBEM_S_NO_ERROR;
}
