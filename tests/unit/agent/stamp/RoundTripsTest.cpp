#include "agent/host/stamp/RoundTrips.h"

#include <cmath>
#include <gtest/gtest.h>

namespace
{
TEST(RoundTrips, NothingIsZero)
{
    const CRoundTrips times;
    EXPECT_EQ(0u, times.Median());
    EXPECT_EQ(0u, times.Longest());
    EXPECT_EQ(0u, times.Count());
}

TEST(RoundTrips, SmallTimesAreExact)
{
    CRoundTrips times;
    for (const uint64_t time : {5, 1, 63, 2, 4})
        times.Add(time);
    EXPECT_EQ(4u, times.Median());
    EXPECT_EQ(63u, times.Longest());
    EXPECT_EQ(5u, times.Count());
}

TEST(RoundTrips, AllOthersAreGoodToAPartIn128)
{
    for (uint64_t time = 64; time < uint64_t{1} << 36; time += time / 7 + 1)
    {
        CRoundTrips times;
        times.Add(time);
        times.Add(time * 4);
        times.Add(time / 4);
        EXPECT_LE(std::abs(static_cast<double>(times.Median()) - static_cast<double>(time)),
                  static_cast<double>(time) / 128 + 1)
            << time;
        EXPECT_EQ(time * 4, times.Longest());
    }
}

TEST(RoundTrips, TimesBeyondEverythingStayInTheLastPlace)
{
    CRoundTrips times;
    times.Add(~uint64_t{0});
    EXPECT_EQ(~uint64_t{0}, times.Longest());
    EXPECT_GT(times.Median(), uint64_t{1} << 44);
}
} // namespace
