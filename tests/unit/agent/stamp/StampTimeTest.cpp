#include "agent/host/stamp/StampTime.h"

#include <gtest/gtest.h>

namespace
{
// 2026-11-21 02:25:27.5 UTC, of which the seconds since 1900 are 4'004'216'727.
constexpr uint64_t kMoment = (9'435'484'800 + 4'004'216'727) * kStampSecond + kStampSecond / 2;

TEST(StampTime, IsSecondsSince1900AndTheirFraction)
{
    EXPECT_EQ((CStampTime{4'004'216'727, 0x8000'0000}), ToStampTime(kMoment));
    EXPECT_EQ((CStampTime{0, 0}), ToStampTime(9'435'484'800 * kStampSecond));
}

TEST(StampTime, SecondsBeginAnewIn2036)
{
    EXPECT_EQ((CStampTime{0, 0}), ToStampTime((9'435'484'800 + (uint64_t{1} << 32)) * kStampSecond));
    const CStampTime before{0xFFFF'FFFF, 0x8000'0000};
    EXPECT_EQ(static_cast<int64_t>(kStampSecond), StampDistance(before, {0, 0x8000'0000}, false));
}

TEST(StampTime, DistanceIsExactToTheTick)
{
    for (const uint64_t ticks : {0ull, 1ull, 7ull, 9'999ull, 4'999'999ull, 5'000'000ull, 123'456'789ull})
    {
        EXPECT_EQ(static_cast<int64_t>(ticks),
                  StampDistance(ToStampTime(kMoment), ToStampTime(kMoment + ticks), false));
        EXPECT_EQ(-static_cast<int64_t>(ticks),
                  StampDistance(ToStampTime(kMoment + ticks), ToStampTime(kMoment), false));
    }
}

TEST(StampTime, PeersMayRoundTheStampThatTheyGiveBack)
{
    struct Case
    {
        CStampTime Echoed;
        bool IsEcho;
    };
    constexpr CStampTime kSent{7, 0};
    for (const Case& c : {Case{{7, 0}, true}, Case{{6, 0xFFFF'FFFF}, true}, Case{{7, 4294}, true},
                          Case{{6, 0xFFFF'EF3A}, true}, Case{{7, 4295}, false}, Case{{6, 0xFFFF'EF39}, false},
                          Case{{8, 0}, false}, Case{{6, 0}, false}, Case{{0, 0}, false}})
        EXPECT_EQ(c.IsEcho, IsEcho(kSent, c.Echoed)) << c.Echoed.Seconds << " " << c.Echoed.Fraction;
    EXPECT_TRUE(IsEcho({0xFFFF'FFFF, 0xFFFF'FFFF}, {0, 0}));
}

TEST(StampTime, FractionOfSomeClocksIsNanoseconds)
{
    EXPECT_TRUE(CountsNanoseconds(0x4001));
    EXPECT_TRUE(CountsNanoseconds(0xC001));
    EXPECT_FALSE(CountsNanoseconds(0xBFFF));
    EXPECT_FALSE(CountsNanoseconds(kOurErrorEstimate));
    EXPECT_EQ(15'000'000, StampDistance({10, 999'999'900}, {12, 499'999'900}, true));
}
} // namespace
