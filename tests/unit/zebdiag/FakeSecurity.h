// Lets a fake pass for a proxy of the service's, and remembers the blankets that it was given.
#pragma once

#include "Common/src/com/ComObject.h"

#include <objidl.h>
#include <string>
#include <vector>

namespace zebdiag
{
// Stands for the proxies' IUnknown, which has a blanket of its own.
class CFakeSecurity final : public CComObject<IClientSecurity>
{
  public:
    struct CBlanket
    {
        IUnknown* Proxy;
        std::wstring User; // "-" for that of the process
        DWORD Level;
        DWORD Impersonation;
    };
    std::vector<CBlanket> Blankets;

    // What a proxy answers to QueryInterface itself; false where its interfaces are asked for.
    static bool Answers(const ComPtr<CFakeSecurity>& security, REFIID riid, void** out)
    {
        if (!security || (riid != IID_IUnknown && riid != IID_IClientSecurity))
            return false;
        return SUCCEEDED(security->QueryInterface(riid, out));
    }

    STDMETHODIMP QueryBlanket(IUnknown*, DWORD*, DWORD*, OLECHAR**, DWORD*, DWORD*, void**, DWORD*) override
    {
        return E_NOTIMPL;
    }
    STDMETHODIMP SetBlanket(IUnknown* proxy, DWORD, DWORD, OLECHAR*, DWORD level, DWORD impersonation,
                            void* identity, DWORD) override
    {
        const auto* as = static_cast<const COAUTHIDENTITY*>(identity);
        Blankets.push_back(
            {proxy, as ? std::wstring(reinterpret_cast<const wchar_t*>(as->User), as->UserLength) : L"-",
             level, impersonation});
        return S_OK;
    }
    STDMETHODIMP CopyProxy(IUnknown*, IUnknown**) override { return E_NOTIMPL; }
};
} // namespace zebdiag
