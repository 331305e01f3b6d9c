// What the code of one request needs besides its own arguments. Made when the request arrives, used on that
// request's thread only, and outliving every class object and exception that points to it.
#pragma once

#include "Common/src/WomSecurity.h"
#include "Common/src/com/Bstr.h"
#include "Common/src/com/ComPtr.h"

#include <optional>
#include <wbemcli.h>

class CZebImpResourceMgr;

class CWomContext
{
  public:
    // Takes references on the context and the name space and copies the texts; throws std::bad_alloc. The
    // resource manager is not owned. `callerContext` may be null.
    CWomContext(IWbemContext* callerContext, LCID defaultLocale, const wchar_t* providerName,
                const wchar_t* operationName, CZebImpResourceMgr* resources, IWbemServices* nameSpace,
                long flags, bool cimKeyMode);
    CWomContext(const CWomContext&) = delete;
    CWomContext& operator=(const CWomContext&) = delete;

    // A value of the caller's context as text: WBEM_E_NOT_FOUND if it is absent, WBEM_E_TYPE_MISMATCH if it
    // has no text form.
    HRESULT GetNamedValue(const wchar_t* name, CBstr& value) const;
    // The override if one is set, else the caller's "LocaleID", else the default locale.
    LCID Locale() const;
    // 0 takes an override back.
    void SetLocale(LCID locale) noexcept { m_localeOverride = locale; }
    // S_OK, or E_FAIL if there is no resource manager or the text could not be widened.
    HRESULT GetResourceString(UINT id, const char* baseName, CBstr& text) const;

    const wchar_t* OperationName() const noexcept { return m_operationName.Text(); }
    const wchar_t* ProviderName() const noexcept { return m_providerName.Text(); }
    // The caller's "SessionHandle", or an empty text.
    const wchar_t* SessionHandle() const noexcept { return m_sessionHandle.Text(); }
    IWbemServices* Namespace() const noexcept { return m_namespace.Get(); }
    IWbemContext* CallerContext() const noexcept { return m_callerContext.Get(); }
    long Flags() const noexcept { return m_flags; }
    bool CimKeyMode() const noexcept { return m_cimKeyMode; }
    CZebImpResourceMgr* Resources() const noexcept { return m_resources; }
    const CWomSecurity& Security() const noexcept { return m_security; }
    // Whether the request's thread ran as its client when the context was made. Asked once, because a class
    // object consults it after every call into the management service.
    bool RunsImpersonated() const noexcept { return m_runsImpersonated; }

    // Traces the values of the caller's context, at debug level 2.
    void DebugOutput() const;

  private:
    LCID ReadCallerLocale() const;

    CWomSecurity m_security;
    ComPtr<IWbemServices> m_namespace;
    ComPtr<IWbemContext> m_callerContext;
    CBstr m_providerName;
    CBstr m_operationName;
    CZebImpResourceMgr* m_resources;
    LCID m_defaultLocale;
    LCID m_localeOverride = 0;
    long m_flags;
    bool m_cimKeyMode;
    bool m_runsImpersonated;
    CBstr m_sessionHandle;
    mutable std::optional<LCID> m_callerLocale; // 0: the caller names none
};
