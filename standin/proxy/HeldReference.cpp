#include "standin/proxy/HeldReference.h"

#include "Common/src/com/ComBoundary.h"

#include <wbemprov.h>

namespace standin
{
STDMETHODIMP CHeldReference::GetUnmarshalClass(REFIID, void*, DWORD, void*, DWORD, CLSID* clsid)
{
    *clsid = kHeldUnmarshaler;
    return S_OK;
}

STDMETHODIMP CHeldReference::GetMarshalSizeMax(REFIID riid, void*, DWORD context, void* reserved, DWORD flags,
                                               DWORD* size)
{
    return CoGetMarshalSizeMax(size, riid, m_object.Get(), context, reserved, flags);
}

STDMETHODIMP CHeldReference::MarshalInterface(IStream* stream, REFIID riid, void*, DWORD context,
                                              void* reserved, DWORD flags)
{
    return CoMarshalInterface(stream, riid, m_object.Get(), context, reserved, flags);
}

namespace
{
// Unpacks references, and is the class object of what does.
class CHeldUnmarshaler : public CComObject<IClassFactory, IMarshal>
{
  public:
    STDMETHODIMP CreateInstance(IUnknown* outer, REFIID riid, void** out) override
    {
        return outer ? CLASS_E_NOAGGREGATION : QueryInterface(riid, out);
    }
    STDMETHODIMP LockServer(BOOL) override { return S_OK; }

    STDMETHODIMP UnmarshalInterface(IStream* stream, REFIID riid, void** out) override
    {
        const HRESULT hr = CoUnmarshalInterface(stream, riid, out);
        // The owner does not know the interface, but this proxy has asked it something.
        ComPtr<IWbemProviderInit> none;
        if (SUCCEEDED(hr))
            static_cast<IUnknown*>(*out)->QueryInterface(__uuidof(IWbemProviderInit), none.PutVoid());
        return hr;
    }
    STDMETHODIMP ReleaseMarshalData(IStream* stream) override { return CoReleaseMarshalData(stream); }
    STDMETHODIMP DisconnectObject(DWORD) override { return S_OK; }
    STDMETHODIMP GetUnmarshalClass(REFIID, void*, DWORD, void*, DWORD, CLSID*) override { return E_NOTIMPL; }
    STDMETHODIMP GetMarshalSizeMax(REFIID, void*, DWORD, void*, DWORD, DWORD*) override { return E_NOTIMPL; }
    STDMETHODIMP MarshalInterface(IStream*, REFIID, void*, DWORD, void*, DWORD) override { return E_NOTIMPL; }
};
} // namespace

HRESULT GetHeldClassObject(REFIID riid, void** out) noexcept
{
    return AtComBoundary([&] { return MakeCom<CHeldUnmarshaler>()->QueryInterface(riid, out); });
}
} // namespace standin
