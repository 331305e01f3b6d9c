// The class object of the provider: what COM asks for a new provider object.
#pragma once

#include "CDM/src/ServerLock.h"
#include "CDM/src/server/AtlModule.h"
#include "Common/src/com/ComObject.h"

class CProviderFactory final : public CComObject<IClassFactory>
{
  public:
    // `server` outlives the class object. `create` makes one object, without an outer one; it may throw.
    CProviderFactory(IServerLock& server, atl::Creator* create) noexcept : m_server(server), m_create(create)
    {
    }

    // CLASS_E_NOAGGREGATION for an outer object, E_POINTER without a place for the result, E_OUTOFMEMORY.
    STDMETHODIMP CreateInstance(IUnknown* outer, REFIID riid, void** out) override;
    STDMETHODIMP LockServer(BOOL lock) override;

  private:
    IServerLock& m_server;
    atl::Creator* const m_create;
};
