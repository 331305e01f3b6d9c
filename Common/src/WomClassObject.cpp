#include "Common/src/WomClassObject.h"

#include "CDM/src/ZebDebug.h"
#include "CDM/src/ZebTrace.h"
#include "Common/src/WomClassCache.h"
#include "Common/src/WomProviderException.h"
#include "Common/src/com/Text.h"

namespace
{
constexpr char kSourceFile[] = "Common/src/WomClassObject";

// Strings of the "_NWR" libraries for an object whose class name cannot be read.
enum : UINT
{
    kNoObject = 1000,
    kClassNotReadable = 1001,
    kClassIsNull = 1002,
    kClassIsNoText = 1003,
};
} // namespace

CWomClassObject::CWomClassObject(CWomContext* context) noexcept
    : m_security(context->Security().Enabled()), m_context(context)
{
}

ULONG CWomClassObject::Release() noexcept
{
    const ULONG left = --m_references;
    if (left == 0)
        delete this;
    return left;
}

HRESULT CWomClassObject::CreateClass(const wchar_t* className)
{
    constexpr long kCallLine = 57;
    CZebTrace trace("CWomClassObject::CreateClass");
    const LCID locale = m_context->Locale();
    const ComPtr<IWbemServices> services(m_context->Namespace());
    // The wrapper's own lock is there for its lines in the trace; the cache has a lock of its own.
    CZebLock lock(m_section);
    WomClassCache::CPlace place(className, locale, services.Get());
    if (!place.Definition())
    {
        ComPtr<IWbemClassObject> definition;
        const CBstr name(className);
        HRESULT hr = E_FAIL;
        if (services)
            hr = services->GetObject(name.Get(), WBEM_FLAG_USE_AMENDED_QUALIFIERS, m_context->CallerContext(),
                                     definition.Put(), nullptr);
        Reimpersonate();
        if (SUCCEEDED(hr) && !definition)
            hr = E_FAIL;
        if (FAILED(hr))
            return Raise(0x80040903, className, hr, kCallLine, NarrowText(name.View()).c_str());
        place.Definition() = std::move(definition);
    }
    m_object = place.Definition();
    return S_OK;
}

HRESULT CWomClassObject::SpawnInstanceFromClass(CWomClassObject& target)
{
    constexpr Lines kLines{67, 73};
    CZebTrace trace("CWomClassObject::SpawnInstanceFromClass");
    if (const HRESULT hr = CheckObject(nullptr, kLines.noObject); hr != S_OK)
        return hr;
    ComPtr<IWbemClassObject> instance;
    const HRESULT hr = m_object->SpawnInstance(0, instance.Put());
    Reimpersonate();
    if (FAILED(hr))
        return RaiseMember(0x80040904, nullptr, hr, kLines.call);
    target.m_object = std::move(instance);
    return S_OK;
}

HRESULT CWomClassObject::CreateInstance(const wchar_t* className)
{
    CWomClassObject definition(m_context);
    definition.SetThrowing(m_throwing);
    const HRESULT hr = definition.CreateClass(className);
    return hr == S_OK ? definition.SpawnInstanceFromClass(*this) : hr;
}

HRESULT CWomClassObject::GetMethodOutput(const wchar_t* method, CWomClassObject& target)
{
    constexpr Lines kLines{2020, 2048};
    if (const HRESULT hr = CheckObject(method, kLines.noObject); hr != S_OK)
        return hr;
    ComPtr<IWbemClassObject> output;
    const HRESULT hr = m_object->GetMethod(method, 0, nullptr, output.Put());
    Reimpersonate();
    if (hr != S_OK)
        return RaiseMember(0x80040904, method, hr, kLines.call);
    target.m_object = std::move(output);
    return S_OK;
}

HRESULT CWomClassObject::Indicate(const ComPtr<IWbemObjectSink>& sink)
{
    constexpr Lines kLines{103, 109};
    CZebTrace trace("CWomClassObject::Indicate");
    if (const HRESULT hr = CheckObject(nullptr, kLines.noObject); hr != S_OK)
        return hr;
    IWbemClassObject* object = m_object.Get();
    const HRESULT hr = sink ? sink->Indicate(1, &object) : E_POINTER;
    Reimpersonate();
    DebugOutput();
    return SUCCEEDED(hr) ? S_OK : RaiseMember(0x80040907, nullptr, hr, kLines.call);
}

HRESULT CWomClassObject::Raise(DWORD statusCode, const wchar_t* parameterInfo, HRESULT requestResult,
                               long line, const char* messageText) const
{
    const auto code = static_cast<unsigned>(statusCode);
    const auto result = static_cast<unsigned>(requestResult);
    if (m_throwing)
    {
        ZebDebug().Write("Exception thrown:");
        ZebDebug().Write("Info: 0x%x %s %d 0x%x", code, kSourceFile, static_cast<int>(line), result);
        throw CWomProviderException(m_context, static_cast<HRESULT>(statusCode), parameterInfo, requestResult,
                                    kSourceFile, line, messageText, {});
    }
    ZebDebug().Write("Exception not thrown:");
    ZebDebug().Write("Info: 0x%x %s %s %d 0x%x", code,
                     NarrowText(parameterInfo ? parameterInfo : L"").c_str(), kSourceFile,
                     static_cast<int>(line), result);
    return requestResult;
}

// The description names what failed for programs (the parameter information) and begins the text for people.
HRESULT CWomClassObject::RaiseMember(DWORD statusCode, const wchar_t* member, HRESULT requestResult,
                                     long line) const
{
    const std::wstring description = Describe(member);
    return Raise(statusCode, description.c_str(), requestResult, line, NarrowText(description).c_str());
}

HRESULT CWomClassObject::CheckObject(const wchar_t* member, long line) const
{
    return m_object ? S_OK : RaiseMember(0x80040902, member, E_FAIL, line);
}

std::wstring CWomClassObject::Describe(const wchar_t* member) const
{
    UINT insteadOfClass = kNoObject;
    CVariant name;
    if (m_object)
    {
        const HRESULT hr = m_object->Get(L"__CLASS", 0, name.Put(), nullptr, nullptr);
        Reimpersonate();
        insteadOfClass = FAILED(hr) ? kClassNotReadable : name.vt == VT_NULL ? kClassIsNull : kClassIsNoText;
    }

    std::wstring text;
    if (name.vt == VT_BSTR)
        text = name.bstrVal ? name.bstrVal : L"";
    else if (CBstr stated; m_context->GetResourceString(insteadOfClass, "_NWR", stated) == S_OK)
        text = stated.View();
    if (member)
        (text += L'.') += member;
    return text;
}

void CWomClassObject::Reimpersonate() const noexcept
{
    if (m_context->RunsImpersonated())
        m_security.Impersonate();
}
