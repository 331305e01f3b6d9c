// How long a provider is held on to.
#include "tests/unit/standin_service/FakeProvider.h"

#include <gtest/gtest.h>

namespace
{
using namespace standin;

class ProviderPool : public testing::Test
{
  protected:
    ProviderReference Acquire()
    {
        ProviderReference provider;
        EXPECT_EQ(m_pool.Acquire(L"root\\cimv2", {}, provider), S_OK);
        return provider;
    }

    const ComPtr<CFakeProvider> m_fake = MakeCom<CFakeProvider>();
    int m_loads = 0;
    CProviderPool m_pool{LoaderOf(m_fake, m_loads)};
};

TEST_F(ProviderPool, LoadsOneForAllRequests)
{
    EXPECT_EQ(Acquire(), Acquire());
    EXPECT_EQ(m_loads, 1);
}

TEST_F(ProviderPool, KeepsWhatIsInUseHoweverShortTheTime)
{
    ProviderReference provider = Acquire();
    EXPECT_FALSE(m_pool.DropIdle(0));
    EXPECT_EQ(Acquire(), provider);
    EXPECT_EQ(m_loads, 1);
    provider.reset();
    EXPECT_TRUE(m_pool.DropIdle(0));
    Acquire();
    EXPECT_EQ(m_loads, 2);
}

TEST_F(ProviderPool, KeepsWhatWasUsedLately)
{
    Acquire();
    EXPECT_FALSE(m_pool.DropIdle(INFINITE));
    Acquire();
    EXPECT_EQ(m_loads, 1);
}
} // namespace
