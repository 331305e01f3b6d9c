#include "Common/src/wine/StubHold.h"

#include "Common/src/com/ComPtr.h"

#include <atomic>
#include <new>
#include <objbase.h>
#include <servprov.h>

namespace
{
// Claims one interface, so that a stub can be made for it. No client gets a reference through which to call
// it.
class CNobody final : public IUnknown
{
  public:
    explicit CNobody(REFIID riid) noexcept : m_iid(riid) {}

    STDMETHODIMP QueryInterface(REFIID riid, void** out) override
    {
        const bool known = IsEqualIID(riid, m_iid) || IsEqualIID(riid, __uuidof(IUnknown));
        *out = known ? this : nullptr;
        if (known)
            AddRef();
        return known ? S_OK : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++m_references; }
    STDMETHODIMP_(ULONG) Release() override
    {
        const ULONG left = --m_references;
        if (left == 0)
            delete this;
        return left;
    }

  private:
    const IID m_iid;
    std::atomic<ULONG> m_references{1};
};

HRESULT HoldStub(REFIID riid) noexcept
{
    ComPtr<IUnknown> nobody;
    nobody.Attach(new (std::nothrow) CNobody(riid));
    if (!nobody)
        return E_OUTOFMEMORY;
    ComPtr<IStream> stream;
    const HRESULT hr = CreateStreamOnHGlobal(nullptr, TRUE, stream.Put());
    return FAILED(hr) ? hr
                      : CoMarshalInterface(stream.Get(), riid, nobody.Get(), MSHCTX_LOCAL, nullptr,
                                           MSHLFLAGS_TABLESTRONG);
}
} // namespace

HRESULT HoldStubs(std::initializer_list<IID> interfaces) noexcept
{
    for (const IID& riid : interfaces)
        if (const HRESULT hr = HoldStub(riid); FAILED(hr))
            return hr;
    return S_OK;
}

HRESULT HoldActivationStubs() noexcept
{
    return HoldStubs({__uuidof(IServiceProvider), __uuidof(IClassFactory)});
}
