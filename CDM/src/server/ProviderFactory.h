// The class object of the provider: what COM asks for a new provider object. And its identities, which the
// registration scripts, the type library and the management schema name as well.
#pragma once

#include "CDM/src/ProviderBase.h"
#include "Common/src/com/AtlModule.h"
#include "Common/src/com/ComObject.h"

// {6C1F0A52-3B7E-4E1B-9A55-0D6B7A3C8E20}
constexpr CLSID kClsidProviderImp = {
    0x6C1F0A52, 0x3B7E, 0x4E1B, {0x9A, 0x55, 0x0D, 0x6B, 0x7A, 0x3C, 0x8E, 0x20}};
// {6C1F0A52-3B7E-4E1B-9A55-0D6B7A3C8E22}, version 1.0
constexpr GUID kLibidDrevok = {0x6C1F0A52, 0x3B7E, 0x4E1B, {0x9A, 0x55, 0x0D, 0x6B, 0x7A, 0x3C, 0x8E, 0x22}};

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
