#include "tests/system/support/WmiClient.h"

#include "Common/src/com/SafeArray.h"
#include "Common/src/com/Variant.h"

#include <algorithm>
#include <cstdio>
#include <stdexcept>

namespace
{
// Longer than anything that a test asks for takes.
constexpr long kLongest = 120000;

void Check(HRESULT hr, const char* call)
{
    if (SUCCEEDED(hr))
        return;
    char text[100];
    std::snprintf(text, sizeof text, "%s failed with 0x%08lx", call, static_cast<unsigned long>(hr));
    throw std::runtime_error(text);
}

template <class T>
std::wstring Joined(const VARIANT& value, VARTYPE element, std::wstring (*text)(const T&))
{
    std::wstring all;
    const CSafeArrayView<T> view(value.parray, element);
    for (const T& item : view.Items())
        all += (all.empty() ? L"" : L",") + text(item);
    return all;
}
} // namespace

CWmiClient::CWmiClient()
{
    ComPtr<IWbemLocator> locator;
    Check(CoCreateInstance(CLSID_WbemLocator, nullptr, CLSCTX_INPROC_SERVER, IID_IWbemLocator,
                           locator.PutVoid()),
          "creating the locator");
    Check(locator->ConnectServer(CBstr(L"root\\cimv2").Get(), nullptr, nullptr, nullptr, 0, nullptr, nullptr,
                                 m_services.Put()),
          "ConnectServer");
}

std::vector<ComPtr<IWbemClassObject>> CWmiClient::Drain(IEnumWbemClassObject* found, HRESULT* status) const
{
    std::vector<ComPtr<IWbemClassObject>> objects;
    for (;;)
    {
        ComPtr<IWbemClassObject> object;
        ULONG count = 0;
        const HRESULT hr = found->Next(kLongest, 1, object.Put(), &count);
        if (hr == WBEM_S_NO_ERROR && count == 1)
        {
            objects.push_back(std::move(object));
            continue;
        }
        if (hr == WBEM_S_TIMEDOUT)
            throw std::runtime_error("an enumeration did not end");
        if (status)
            *status = FAILED(hr) ? hr : S_OK;
        else
            Check(hr, "Next");
        return objects;
    }
}

std::vector<ComPtr<IWbemClassObject>> CWmiClient::Instances(const wchar_t* className, HRESULT* status) const
{
    ComPtr<IEnumWbemClassObject> found;
    const HRESULT hr = m_services->CreateInstanceEnum(
        CBstr(className).Get(), WBEM_FLAG_FORWARD_ONLY | WBEM_FLAG_RETURN_IMMEDIATELY, nullptr, found.Put());
    if (SUCCEEDED(hr))
        return Drain(found.Get(), status);
    if (!status)
        Check(hr, "CreateInstanceEnum");
    else
        *status = hr;
    return {};
}

std::vector<ComPtr<IWbemClassObject>> CWmiClient::Query(const std::wstring& wql, HRESULT* status) const
{
    ComPtr<IEnumWbemClassObject> found;
    const HRESULT hr =
        m_services->ExecQuery(CBstr(L"WQL").Get(), CBstr(std::wstring_view(wql)).Get(),
                              WBEM_FLAG_FORWARD_ONLY | WBEM_FLAG_RETURN_IMMEDIATELY, nullptr, found.Put());
    if (SUCCEEDED(hr))
        return Drain(found.Get(), status);
    if (!status)
        Check(hr, "ExecQuery");
    else
        *status = hr;
    return {};
}

HRESULT CWmiClient::Get(const std::wstring& path, ComPtr<IWbemClassObject>& object) const
{
    return m_services->GetObject(CBstr(std::wstring_view(path)).Get(), 0, nullptr, object.Put(), nullptr);
}

HRESULT CWmiClient::Exec(const std::wstring& path, const wchar_t* method,
                         const std::vector<std::pair<std::wstring, std::optional<std::wstring>>>& in,
                         ComPtr<IWbemClassObject>& out) const
{
    const std::wstring className = path.substr(0, path.find(L'.'));
    ComPtr<IWbemClassObject> definition;
    Check(Get(className, definition), "getting the class of a method");
    ComPtr<IWbemClassObject> signature;
    ComPtr<IWbemClassObject> parameters;
    Check(definition->GetMethod(method, 0, signature.Put(), nullptr), "GetMethod");
    if (signature)
        Check(signature->SpawnInstance(0, parameters.Put()), "SpawnInstance");
    for (const auto& [name, text] : in)
    {
        CVariant value = text ? CVariant::FromText(text->c_str()) : CVariant::Null();
        Check(parameters->Put(name.c_str(), 0, &value, 0), "putting a parameter");
    }
    return m_services->ExecMethod(CBstr(std::wstring_view(path)).Get(), CBstr(method).Get(), 0, nullptr,
                                  parameters.Get(), out.Put(), nullptr);
}

std::optional<std::wstring> PropertyText(IWbemClassObject* object, const wchar_t* name)
{
    CVariant value;
    Check(object->Get(name, 0, &value, nullptr, nullptr), "Get");
    switch (value.vt)
    {
    case VT_NULL:
        return std::nullopt;
    case VT_BSTR:
        return value.bstrVal;
    case VT_I4:
        return std::to_wstring(value.lVal);
    case VT_UI1:
        return std::to_wstring(value.bVal);
    case VT_BOOL:
        return value.boolVal ? L"TRUE" : L"FALSE";
    case VT_ARRAY | VT_BSTR:
        return Joined<BSTR>(value, VT_BSTR, [](const BSTR& text) { return std::wstring(text ? text : L""); });
    case VT_ARRAY | VT_I4:
        return Joined<LONG>(value, VT_I4, [](const LONG& number) { return std::to_wstring(number); });
    default:
        throw std::runtime_error("a property of a type that no served class has");
    }
}

CPropertyTexts AllPropertyTexts(IWbemClassObject* object)
{
    CSafeArray names;
    Check(object->GetNames(nullptr, WBEM_FLAG_ALWAYS | WBEM_FLAG_NONSYSTEM_ONLY, nullptr, names.Put()),
          "GetNames");
    CPropertyTexts texts;
    const CSafeArrayView<BSTR> view(names.Get(), VT_BSTR);
    for (const BSTR name : view.Items())
        texts.emplace(name, PropertyText(object, name));
    return texts;
}

std::vector<std::wstring> PropertyTexts(const std::vector<ComPtr<IWbemClassObject>>& objects,
                                        const wchar_t* name)
{
    std::vector<std::wstring> texts;
    for (const auto& object : objects)
        if (auto text = PropertyText(object.Get(), name))
            texts.push_back(std::move(*text));
    std::sort(texts.begin(), texts.end());
    return texts;
}

std::wstring EscapedKey(const std::wstring& value)
{
    std::wstring escaped;
    for (const wchar_t c : value)
    {
        if (c == L'"' || c == L'\\')
            escaped += L'\\';
        escaped += c;
    }
    return escaped;
}
