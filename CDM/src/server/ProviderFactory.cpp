#include "CDM/src/server/ProviderFactory.h"

#include "Common/src/com/ComBoundary.h"

STDMETHODIMP CProviderFactory::CreateInstance(IUnknown* outer, REFIID riid, void** out)
{
    if (!out)
        return E_POINTER;
    *out = nullptr;
    if (outer)
        return CLASS_E_NOAGGREGATION;
    return AtComBoundary([&] { return m_create(nullptr, riid, out); });
}

STDMETHODIMP CProviderFactory::LockServer(BOOL lock)
{
    lock ? m_server.Lock() : m_server.Unlock();
    return S_OK;
}
