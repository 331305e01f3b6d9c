// What COM asks where marshalled bytes arrive: class objects that are their own instances, because they have
// no state.
#include "Common/src/com/ComBoundary.h"
#include "Common/src/com/ComObject.h"
#include "standin/object/ByValue.h"
#include "standin/object/ObjectBytes.h"
#include "standin/object/Objects.h"
#include "standin/object/StandinIds.h"

namespace standin
{
namespace
{
class CUnmarshaler : public CComObject<IClassFactory, IMarshal>
{
  public:
    explicit CUnmarshaler(bool context) noexcept : m_context(context) {}

    STDMETHODIMP CreateInstance(IUnknown* outer, REFIID riid, void** out) override
    {
        *out = nullptr;
        if (outer)
            return CLASS_E_NOAGGREGATION;
        return AtComBoundary(
            [&]
            {
                return m_context && !IsEqualIID(riid, IID_IMarshal) ? MakeContext()->QueryInterface(riid, out)
                                                                    : QueryInterface(riid, out);
            });
    }
    STDMETHODIMP LockServer(BOOL) override { return S_OK; }

    STDMETHODIMP UnmarshalInterface(IStream* stream, REFIID riid, void** out) override
    {
        *out = nullptr;
        return AtComBoundary([&] { return Unmarshal(stream, riid, out); });
    }
    STDMETHODIMP ReleaseMarshalData(IStream* stream) override
    {
        return AtComBoundary(
            [&]
            {
                std::vector<BYTE> bytes;
                return ReadCounted(stream, bytes);
            });
    }
    STDMETHODIMP DisconnectObject(DWORD) override { return S_OK; }
    STDMETHODIMP GetUnmarshalClass(REFIID, void*, DWORD, void*, DWORD, CLSID*) override { return E_NOTIMPL; }
    STDMETHODIMP GetMarshalSizeMax(REFIID, void*, DWORD, void*, DWORD, DWORD*) override { return E_NOTIMPL; }
    STDMETHODIMP MarshalInterface(IStream*, REFIID, void*, DWORD, void*, DWORD) override { return E_NOTIMPL; }

  private:
    HRESULT Unmarshal(IStream* stream, REFIID riid, void** out) const
    {
        constexpr HRESULT bad = static_cast<HRESULT>(WBEM_E_INVALID_STREAM);
        std::vector<BYTE> bytes;
        const HRESULT hr = ReadCounted(stream, bytes);
        if (FAILED(hr) || bytes.empty())
            return bad;
        try
        {
            return m_context ? ContextFrom(bytes)->QueryInterface(riid, out)
                             : ObjectFrom(bytes)->QueryInterface(riid, out);
        }
        catch (const CBadBytes&)
        {
            return bad;
        }
    }

    const bool m_context;
};
} // namespace

HRESULT GetUnmarshalClassObject(REFCLSID clsid, REFIID riid, void** out) noexcept
{
    *out = nullptr;
    const bool context = IsEqualCLSID(clsid, kContextUnmarshaler) || IsEqualCLSID(clsid, CLSID_WbemContext);
    if (!context && !IsEqualCLSID(clsid, kObjectUnmarshaler))
        return CLASS_E_CLASSNOTAVAILABLE;
    return AtComBoundary([&] { return MakeCom<CUnmarshaler>(context)->QueryInterface(riid, out); });
}

CUnmarshalRegistration::CUnmarshalRegistration()
{
    const CLSID* classes[] = {&kObjectUnmarshaler, &kContextUnmarshaler};
    for (size_t i = 0; i < std::size(classes); ++i)
    {
        ComPtr<IUnknown> factory;
        if (SUCCEEDED(GetUnmarshalClassObject(*classes[i], IID_IUnknown, factory.PutVoid())))
            CoRegisterClassObject(*classes[i], factory.Get(), CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE,
                                  &m_cookies[i]);
    }
}

CUnmarshalRegistration::~CUnmarshalRegistration()
{
    for (const DWORD cookie : m_cookies)
        if (cookie)
            CoRevokeClassObject(cookie);
}
} // namespace standin
