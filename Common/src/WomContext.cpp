#include "Common/src/WomContext.h"

#include "CDM/src/ZebDebug.h"
#include "CDM/src/ZebHelpers.h"
#include "CDM/src/ZebImpResourceMgr.h"
#include "CDM/src/ZebTrace.h"
#include "CDM/src/ZebValue.h"
#include "Common/src/com/Text.h"
#include "Common/src/com/Variant.h"
#include "Common/src/com/WmiStatus.h"

namespace
{
// An enumeration of a context's values, ended on every path.
class CValueEnumeration
{
  public:
    explicit CValueEnumeration(IWbemContext& context) noexcept
        : m_context(context), m_begun(SUCCEEDED(context.BeginEnumeration(0)))
    {
    }
    CValueEnumeration(const CValueEnumeration&) = delete;
    CValueEnumeration& operator=(const CValueEnumeration&) = delete;
    ~CValueEnumeration()
    {
        if (m_begun)
            m_context.EndEnumeration();
    }

    bool Next(CBstr& name, CVariant& value) noexcept
    {
        return m_begun && m_context.Next(0, name.Put(), value.Put()) == WBEM_S_NO_ERROR;
    }

  private:
    IWbemContext& m_context;
    bool m_begun;
};
} // namespace

CWomContext::CWomContext(IWbemContext* callerContext, LCID defaultLocale, const wchar_t* providerName,
                         const wchar_t* operationName, CZebImpResourceMgr* resources,
                         IWbemServices* nameSpace, long flags, bool cimKeyMode)
    : m_namespace(nameSpace), m_callerContext(callerContext), m_providerName(providerName),
      m_operationName(operationName), m_resources(resources), m_defaultLocale(defaultLocale), m_flags(flags),
      m_cimKeyMode(cimKeyMode), m_runsImpersonated(m_security.Impersonating())
{
    CZebTrace trace("CWomContext::CWomContext");
    ZebDebug().Write("Context %p", static_cast<void*>(callerContext));
    if (FAILED(GetNamedValue(L"SessionHandle", m_sessionHandle)))
        m_sessionHandle = CBstr(L"");
}

HRESULT CWomContext::GetNamedValue(const wchar_t* name, CBstr& value) const
{
    if (!m_callerContext)
        return wmi::NotFound;
    CVariant found;
    const HRESULT hr = m_callerContext->GetValue(name, 0, found.Put());
    if (FAILED(hr))
        return hr;
    if (found.vt != VT_BSTR && FAILED(VariantChangeType(&found, &found, 0, VT_BSTR)))
        return wmi::TypeMismatch;
    value = CBstr::Attach(found.bstrVal);
    found.vt = VT_EMPTY;
    return S_OK;
}

LCID CWomContext::Locale() const
{
    if (m_localeOverride)
        return m_localeOverride;
    // The caller's values do not change while its request runs, and every localised text asks for the locale.
    if (!m_callerLocale)
        m_callerLocale = ReadCallerLocale();
    if (!*m_callerLocale)
        return m_defaultLocale;
    ZebDebug().Write("Locale: %x", static_cast<unsigned>(*m_callerLocale));
    return *m_callerLocale;
}

LCID CWomContext::ReadCallerLocale() const
{
    constexpr std::wstring_view kPrefix = L"MS_";
    CBstr id;
    if (FAILED(GetNamedValue(L"LocaleID", id)))
        return 0;
    const std::wstring text = UpperCaseAnsi(id.View());
    return text.starts_with(kPrefix) ? ParseHex(text.c_str() + kPrefix.size()) : 0;
}

HRESULT CWomContext::GetResourceString(UINT id, const char* baseName, CBstr& text) const
{
    text = m_resources ? m_resources->GetStringBstr(Locale(), id, baseName) : CBstr();
    return text ? S_OK : E_FAIL;
}

void CWomContext::DebugOutput() const
{
    CZebTrace trace("CWomContext::DebugOutput");
    if (ZebDebug().Level() != 2)
        return;
    if (!m_callerContext)
    {
        ZebDebug().Write("<null> context");
        return;
    }
    CValueEnumeration values(*m_callerContext.Get());
    m_security.Impersonate();
    CBstr name;
    CVariant value;
    while (values.Next(name, value))
        ZebDebug().Write("%s = %s", NarrowText(name.View()).c_str(),
                         ZebValueToString(value, CIM_STRING).c_str());
}
