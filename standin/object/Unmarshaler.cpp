// The class objects that COM asks where marshalled bytes arrive.
#include "Common/src/com/ComBoundary.h"
#include "Common/src/com/ComObject.h"
#include "standin/object/Context.h"
#include "standin/object/MarshalStream.h"
#include "standin/object/ObjectBytes.h"
#include "standin/object/StandinIds.h"

namespace standin
{
namespace
{
HRESULT MakeObject(const std::vector<BYTE>& bytes, REFIID riid, void** out)
{
    return DecodeObject(bytes, kMaxNesting)->QueryInterface(riid, out);
}

HRESULT MakeContextFrom(const std::vector<BYTE>& bytes, REFIID riid, void** out)
{
    return CContext::Decode(bytes)->QueryInterface(riid, out);
}

using Decoder = HRESULT (*)(const std::vector<BYTE>& bytes, REFIID riid, void** out);

// COM makes one for every object that arrives.
class CUnmarshaler : public CComObject<IMarshal>
{
  public:
    explicit CUnmarshaler(Decoder decode) noexcept : m_decode(decode) {}

    STDMETHODIMP UnmarshalInterface(IStream* stream, REFIID riid, void** out) override
    {
        if (!out)
            return E_POINTER;
        *out = nullptr;
        return AtComBoundary(
            [&]() -> HRESULT
            {
                std::vector<BYTE> bytes;
                const HRESULT hr = ReadCounted(stream, bytes);
                if (FAILED(hr))
                    return hr;
                try
                {
                    return m_decode(bytes, riid, out);
                }
                catch (const CBadBytes&)
                {
                    return static_cast<HRESULT>(WBEM_E_INVALID_STREAM);
                }
            });
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
    const Decoder m_decode;
};

class CFactory : public CComObject<IClassFactory>
{
  public:
    explicit CFactory(Decoder decode) noexcept : m_decode(decode) {}

    STDMETHODIMP CreateInstance(IUnknown* outer, REFIID riid, void** out) override
    {
        if (!out)
            return E_POINTER;
        *out = nullptr;
        if (outer)
            return CLASS_E_NOAGGREGATION;
        return AtComBoundary(
            [&]() -> HRESULT
            {
                if (m_decode == MakeContextFrom && !IsEqualIID(riid, IID_IMarshal))
                    return MakeContext()->QueryInterface(riid, out);
                return MakeCom<CUnmarshaler>(m_decode)->QueryInterface(riid, out);
            });
    }
    STDMETHODIMP LockServer(BOOL) override { return S_OK; }

  private:
    const Decoder m_decode;
};
} // namespace

HRESULT GetUnmarshalClassObject(REFCLSID clsid, REFIID riid, void** out) noexcept
{
    if (!out)
        return E_POINTER;
    *out = nullptr;
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (IsEqualCLSID(clsid, kObjectUnmarshaler))
                return MakeCom<CFactory>(MakeObject)->QueryInterface(riid, out);
            if (IsEqualCLSID(clsid, kContextUnmarshaler) || IsEqualCLSID(clsid, CLSID_WbemContext))
                return MakeCom<CFactory>(MakeContextFrom)->QueryInterface(riid, out);
            return CLASS_E_CLASSNOTAVAILABLE;
        });
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
