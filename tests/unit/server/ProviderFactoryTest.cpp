#include "CDM/src/server/ProviderFactory.h"

#include <gtest/gtest.h>

namespace
{
class CCountingLock final : public IServerLock
{
  public:
    LONG Count = 0;
    LONG Lock() noexcept override { return ++Count; }
    LONG Unlock() noexcept override { return --Count; }
};

class CThing final : public CComObject<IPersist>
{
  public:
    STDMETHODIMP GetClassID(CLSID*) override { return E_NOTIMPL; }
};

HRESULT WINAPI CreateThing(void* outer, REFIID riid, void** out)
{
    EXPECT_EQ(outer, nullptr);
    return MakeCom<CThing>()->QueryInterface(riid, out);
}

HRESULT WINAPI RunOutOfMemory(void*, REFIID, void**)
{
    throw std::bad_alloc();
}

class ProviderFactoryTest : public testing::Test
{
  protected:
    CCountingLock m_lock;
    ComPtr<CProviderFactory> m_factory = MakeCom<CProviderFactory>(m_lock, &CreateThing);
};

TEST_F(ProviderFactoryTest, MakesObjectsThatTheCallerOwns)
{
    const long before = g_liveComObjects;
    ComPtr<IPersist> thing;
    EXPECT_EQ(m_factory->CreateInstance(nullptr, IID_IPersist, thing.PutVoid()), S_OK);
    EXPECT_EQ(g_liveComObjects, before + 1);
    thing.Reset();
    EXPECT_EQ(g_liveComObjects, before);
}

TEST_F(ProviderFactoryTest, RefusesAggregation)
{
    void* out = this;
    EXPECT_EQ(m_factory->CreateInstance(m_factory.Get(), IID_IUnknown, &out), CLASS_E_NOAGGREGATION);
    EXPECT_EQ(out, nullptr);
}

TEST_F(ProviderFactoryTest, NeedsAPlaceForTheResult)
{
    EXPECT_EQ(m_factory->CreateInstance(nullptr, IID_IUnknown, nullptr), E_POINTER);
    EXPECT_EQ(m_factory->CreateInstance(m_factory.Get(), IID_IUnknown, nullptr), E_POINTER);
}

TEST_F(ProviderFactoryTest, ReportsFailedAllocation)
{
    const auto factory = MakeCom<CProviderFactory>(m_lock, &RunOutOfMemory);
    void* out = this;
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IUnknown, &out), E_OUTOFMEMORY);
    EXPECT_EQ(out, nullptr);
}

TEST_F(ProviderFactoryTest, LeavesNothingBehindForAnUnknownInterface)
{
    const long before = g_liveComObjects;
    void* out = this;
    EXPECT_EQ(m_factory->CreateInstance(nullptr, IID_IStream, &out), E_NOINTERFACE);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(g_liveComObjects, before);
}

TEST_F(ProviderFactoryTest, LockServerCountsOnTheServer)
{
    EXPECT_EQ(m_factory->LockServer(TRUE), S_OK);
    EXPECT_EQ(m_factory->LockServer(TRUE), S_OK);
    EXPECT_EQ(m_lock.Count, 2);
    EXPECT_EQ(m_factory->LockServer(FALSE), S_OK);
    EXPECT_EQ(m_lock.Count, 1);
}
} // namespace
