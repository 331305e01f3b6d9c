#include "Common/src/com/ComObject.h"
#include "Common/src/com/ComBoundary.h"

#include <gtest/gtest.h>
#include <stdexcept>

namespace
{
class CTwoFaces final : public CComObject<IClassFactory, IMarshal>
{
  public:
    STDMETHODIMP CreateInstance(IUnknown*, REFIID, void**) override { return E_NOTIMPL; }
    STDMETHODIMP LockServer(BOOL) override { return E_NOTIMPL; }
    STDMETHODIMP GetUnmarshalClass(REFIID, void*, DWORD, void*, DWORD, CLSID*) override { return E_NOTIMPL; }
    STDMETHODIMP GetMarshalSizeMax(REFIID, void*, DWORD, void*, DWORD, DWORD*) override { return E_NOTIMPL; }
    STDMETHODIMP MarshalInterface(IStream*, REFIID, void*, DWORD, void*, DWORD) override { return E_NOTIMPL; }
    STDMETHODIMP UnmarshalInterface(IStream*, REFIID, void**) override { return E_NOTIMPL; }
    STDMETHODIMP ReleaseMarshalData(IStream*) override { return E_NOTIMPL; }
    STDMETHODIMP DisconnectObject(DWORD) override { return E_NOTIMPL; }
};

TEST(ComObject, IdentityIsTheSameThroughEveryInterface)
{
    const auto object = MakeCom<CTwoFaces>();
    ComPtr<IUnknown> first;
    ComPtr<IMarshal> marshal;
    ComPtr<IUnknown> second;
    ASSERT_EQ(S_OK, object->QueryInterface(__uuidof(IUnknown), first.PutVoid()));
    ASSERT_EQ(S_OK, object->QueryInterface(__uuidof(IMarshal), marshal.PutVoid()));
    ASSERT_EQ(S_OK, marshal->QueryInterface(__uuidof(IUnknown), second.PutVoid()));
    EXPECT_EQ(first.Get(), second.Get());
}

TEST(ComObject, RefusesUnknownInterfacesAndNullPointers)
{
    const auto object = MakeCom<CTwoFaces>();
    void* out = object.Get();
    EXPECT_EQ(E_NOINTERFACE, object->QueryInterface(__uuidof(IStream), &out));
    EXPECT_EQ(nullptr, out);
    EXPECT_EQ(E_POINTER, object->QueryInterface(__uuidof(IUnknown), nullptr));
}

TEST(ComObject, AnEmptyPointerHasNoInterfaces)
{
    ComPtr<IMarshal> marshal;
    EXPECT_EQ(E_POINTER, ComPtr<IUnknown>().As(marshal));
    EXPECT_FALSE(marshal);
}

TEST(ComObject, LastReleaseDestroys)
{
    const long before = g_liveComObjects;
    auto object = MakeCom<CTwoFaces>();
    EXPECT_EQ(before + 1, g_liveComObjects);
    object->AddRef();
    EXPECT_EQ(1u, object->Release());
    object.Reset();
    EXPECT_EQ(before, g_liveComObjects);
}

TEST(ComBoundary, TurnsExceptionsIntoCodes)
{
    EXPECT_EQ(S_FALSE, AtComBoundary([]() -> HRESULT { return S_FALSE; }));
    EXPECT_EQ(E_OUTOFMEMORY, AtComBoundary([]() -> HRESULT { throw std::bad_alloc(); }));
    EXPECT_EQ(E_UNEXPECTED, AtComBoundary([]() -> HRESULT { throw std::runtime_error("any"); }));
    EXPECT_EQ(E_UNEXPECTED, AtComBoundary([]() -> HRESULT { throw 7; }));
}
} // namespace
