#include "tools/zebdiag/Connection.h"

#include "Common/src/com/Bstr.h"
#include "Common/src/com/Variant.h"
#include "tools/zebdiag/ErrorDetail.h"
#include "tools/zebdiag/LocaleName.h"

#include <memory>
#include <objbase.h>

namespace zebdiag
{
namespace
{
// Who calls are made as; without a user, whoever runs the program. The texts are kept for as long as an
// interface may use them, and the password is wiped at the end.
class CIdentity
{
  public:
    CIdentity(const std::wstring& user, const std::wstring& password) : m_password(password)
    {
        const size_t slash = user.find(L'\\');
        if (slash != std::wstring::npos)
            m_domain = user.substr(0, slash);
        m_user = slash == std::wstring::npos ? user : user.substr(slash + 1);
    }
    CIdentity(const CIdentity&) = delete;
    CIdentity& operator=(const CIdentity&) = delete;
    ~CIdentity() { SecureZeroMemory(m_password.data(), m_password.size() * sizeof(wchar_t)); }

    HRESULT Secure(IUnknown* object)
    {
        if (m_user.empty())
            return SetBlankets(object, nullptr);
        COAUTHIDENTITY identity = {};
        identity.User = Chars(m_user);
        identity.UserLength = static_cast<ULONG>(m_user.size());
        identity.Domain = Chars(m_domain);
        identity.DomainLength = static_cast<ULONG>(m_domain.size());
        identity.Password = Chars(m_password);
        identity.PasswordLength = static_cast<ULONG>(m_password.size());
        identity.Flags = SEC_WINNT_AUTH_IDENTITY_UNICODE;
        return SetBlankets(object, &identity);
    }

  private:
    // The interface's own and that of IUnknown, through which Release and QueryInterface go to the service.
    static HRESULT SetBlankets(IUnknown* object, COAUTHIDENTITY* identity)
    {
        ComPtr<IUnknown> unknown;
        HRESULT hr = object->QueryInterface(IID_IUnknown, unknown.PutVoid());
        for (IUnknown* proxy : {object, unknown.Get()})
            if (SUCCEEDED(hr))
                hr = CoSetProxyBlanket(proxy, RPC_C_AUTHN_DEFAULT, RPC_C_AUTHZ_DEFAULT,
                                       COLE_DEFAULT_PRINCIPAL, RPC_C_AUTHN_LEVEL_PKT_PRIVACY,
                                       RPC_C_IMP_LEVEL_IMPERSONATE, identity, EOAC_NONE);
        // What is no proxy acts as this process anyway.
        return hr == E_NOINTERFACE && !identity ? S_OK : hr;
    }

    static USHORT* Chars(std::wstring& text) { return reinterpret_cast<USHORT*>(text.data()); }

    std::wstring m_user;
    std::wstring m_domain;
    std::wstring m_password;
};

std::wstring NamespacePath(const CTarget& target)
{
    return target.IsLocal() ? target.Namespace : L"\\\\" + target.Computer + L"\\" + target.Namespace;
}

// Tells the provider the caller's language: not every service passes on that of the connection. Null if there
// is no context to be had; the provider then speaks its own language.
ComPtr<IWbemContext> CallContext(const CTarget& target)
{
    ComPtr<IWbemContext> context;
    CVariant locale = CVariant::FromText(CallerLocale(target.Locale).c_str());
    if (FAILED(CoCreateInstance(CLSID_WbemContext, nullptr, CLSCTX_INPROC_SERVER, IID_IWbemContext,
                                context.PutVoid())) ||
        FAILED(context->SetValue(L"LocaleID", 0, &locale)))
        return nullptr;
    return context;
}

CBstr Optional(const std::wstring& text)
{
    return text.empty() ? CBstr() : CBstr(text);
}
} // namespace

void InitializeClientSecurity() noexcept
{
    // Fails where the process's host has set it already; what is set then holds.
    CoInitializeSecurity(nullptr, -1, nullptr, nullptr, RPC_C_AUTHN_LEVEL_PKT_PRIVACY,
                         RPC_C_IMP_LEVEL_IMPERSONATE, nullptr, EOAC_NONE, nullptr);
}

CWmiSession ConnectThrough(IWbemLocator* locator, const CTarget& target, const std::wstring& password)
{
    ClearErrorDetail();
    ComPtr<IWbemServices> services;
    const bool asSomebody = !target.User.empty();
    const HRESULT status =
        locator->ConnectServer(CBstr(NamespacePath(target)).Get(), Optional(target.User).Get(),
                               asSomebody ? CBstr(password).Get() : nullptr, Optional(target.Locale).Get(), 0,
                               nullptr, nullptr, services.Put());
    if (FAILED(status))
        throw FailureOf(status, Step::Connect, target, {}, TakeErrorDetail());
    const auto identity = std::make_shared<CIdentity>(target.User, password);
    if (const HRESULT secured = identity->Secure(services.Get()); FAILED(secured))
        throw FailureOf(secured, Step::Connect, target);
    return CWmiSession(
        std::move(services), target, [identity](IUnknown* object) { return identity->Secure(object); },
        CallContext(target));
}

CWmiSession Connect(const CTarget& target, const std::wstring& password)
{
    ComPtr<IWbemLocator> locator;
    const HRESULT status = CoCreateInstance(CLSID_WbemLocator, nullptr, CLSCTX_INPROC_SERVER,
                                            IID_IWbemLocator, locator.PutVoid());
    if (FAILED(status))
        throw FailureOf(status, Step::Locate, target);
    return ConnectThrough(locator.Get(), target, password);
}
} // namespace zebdiag
