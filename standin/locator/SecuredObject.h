// Clients set the security of what they get from the service as if it were a proxy. Nothing here has any to
// set, and the client has lost nothing.
#pragma once

#include "Common/src/com/ComObject.h"

#include <objidl.h>

namespace standin
{
template <class Base>
class CSecuredObject : public CComObject<Base, IClientSecurity>
{
  public:
    STDMETHODIMP QueryBlanket(IUnknown*, DWORD*, DWORD*, OLECHAR**, DWORD*, DWORD*, void**, DWORD*) override
    {
        return E_NOTIMPL;
    }
    STDMETHODIMP SetBlanket(IUnknown*, DWORD, DWORD, OLECHAR*, DWORD, DWORD, void*, DWORD) override
    {
        return S_OK;
    }
    STDMETHODIMP CopyProxy(IUnknown* proxy, IUnknown** copy) override
    {
        if (!proxy || !copy)
            return E_POINTER;
        proxy->AddRef();
        *copy = proxy;
        return S_OK;
    }
};
} // namespace standin
