// Clients set the security of what they get from the service as if it were a proxy. Objects that stand in
// front of one answer IClientSecurity for it.
#pragma once

#include "Common/src/com/ComObject.h"

#include <objidl.h>

namespace standin
{
template <class... Interfaces>
class CSecuredObject : public CComObject<Interfaces..., IClientSecurity>
{
  public:
    // `remote` may be an object of this process, which has no security of its own.
    explicit CSecuredObject(ComPtr<IUnknown> remote) noexcept : m_remote(std::move(remote)) {}

    STDMETHODIMP QueryBlanket(IUnknown*, DWORD* authentication, DWORD* authorisation, OLECHAR** principal,
                              DWORD* authenticationLevel, DWORD* impersonationLevel, void** identity,
                              DWORD* capabilities) override
    {
        ComPtr<IClientSecurity> security;
        const HRESULT found = m_remote.As(security);
        return FAILED(found)
                   ? found
                   : security->QueryBlanket(m_remote.Get(), authentication, authorisation, principal,
                                            authenticationLevel, impersonationLevel, identity, capabilities);
    }
    STDMETHODIMP SetBlanket(IUnknown*, DWORD authentication, DWORD authorisation, OLECHAR* principal,
                            DWORD authenticationLevel, DWORD impersonationLevel, void* identity,
                            DWORD capabilities) override
    {
        ComPtr<IClientSecurity> security;
        if (FAILED(m_remote.As(security)))
            return S_OK;
        const HRESULT hr =
            security->SetBlanket(m_remote.Get(), authentication, authorisation, principal,
                                 authenticationLevel, impersonationLevel, identity, capabilities);
        // Where proxies have no security to set, as under Wine, the client has lost nothing.
        return hr == E_NOTIMPL ? S_OK : hr;
    }
    STDMETHODIMP CopyProxy(IUnknown* proxy, IUnknown** copy) override
    {
        if (!proxy || !copy)
            return E_POINTER;
        proxy->AddRef();
        *copy = proxy;
        return S_OK;
    }

  private:
    const ComPtr<IUnknown> m_remote;
};
} // namespace standin
