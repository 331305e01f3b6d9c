// How the service gives its namespace to a provider, so that Wine keeps the proxies of the provider's process
// in order.
//
// Whoever lets go of a proxy tells the owner's process, through one more proxy (IRemUnknown) that Wine makes
// when it is first needed and shares among all proxies of that owner. When one thread gives up the last use
// of it while another one takes it up, Wine goes on with freed memory, and the process dies. A provider
// releases the sinks of its calls on many threads at once, so this does happen. A proxy that has asked the
// owner something keeps the shared one for as long as it lives: the namespace, which a provider holds all its
// life, is made to ask as soon as it arrives.
#pragma once

#include "standin/proxy/UnsupportedServices.h"

#include <guiddef.h>
#include <objidl.h>

namespace standin
{
// The class that unpacks the reference in the other process; a DLL registers it as an in-process server and
// answers for it with GetHeldClassObject.
inline constexpr CLSID kHeldUnmarshaler = {
    0x1b6e07c6, 0x52d9, 0x4f0b, {0x8a, 0x41, 0x3c, 0x77, 0xd0, 0x5e, 0x92, 0x16}};
HRESULT GetHeldClassObject(REFIID riid, void** out) noexcept;

// Stands for `object` where it is passed to another process, and is of no use in this one.
class CHeldReference : public CUnsupportedServices<CComObject<IWbemServices, IMarshal>>
{
  public:
    explicit CHeldReference(ComPtr<IWbemServices> object) noexcept : m_object(std::move(object)) {}

    STDMETHODIMP GetUnmarshalClass(REFIID riid, void* object, DWORD context, void* reserved, DWORD flags,
                                   CLSID* clsid) override;
    STDMETHODIMP GetMarshalSizeMax(REFIID riid, void* object, DWORD context, void* reserved, DWORD flags,
                                   DWORD* size) override;
    STDMETHODIMP MarshalInterface(IStream* stream, REFIID riid, void* object, DWORD context, void* reserved,
                                  DWORD flags) override;
    STDMETHODIMP UnmarshalInterface(IStream*, REFIID, void**) override { return E_NOTIMPL; }
    STDMETHODIMP ReleaseMarshalData(IStream*) override { return E_NOTIMPL; }
    STDMETHODIMP DisconnectObject(DWORD) override { return S_OK; }

  private:
    const ComPtr<IWbemServices> m_object;
};
} // namespace standin
