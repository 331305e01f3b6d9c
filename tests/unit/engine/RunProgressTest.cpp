// Percent complete, and the timing that it can be computed from.
#include "CDM/src/engine/runs/RunProgress.h"

#include "tests/support/CaseName.h"

#include <gtest/gtest.h>

namespace
{
struct Timing
{
    const char* name;
    CRunTiming timing;
    BYTE coverage;
    bool usable;
};

class TimingTest : public testing::TestWithParam<Timing>
{
};

TEST_P(TimingTest, IsRefusedOnlyWhereItCannotBeComputedWith)
{
    CRunParameters parameters;
    parameters.Coverage = GetParam().coverage;
    EXPECT_EQ(GetParam().usable, CRunProgress::IsUsable(GetParam().timing, parameters));
}

const Timing kTimings[] = {
    {"Defaults", {}, 100, true},
    {"NoTimeOut", {0, 2, 200}, 100, false},
    {"NoCheckTime", {100, 0, 200}, 100, false},
    {"NoCoverage", {100, 2, 200}, 0, false},
    {"TotalBelowOneSecond", {1, 2, 200}, 99, false},
    {"TotalOfOneSecond", {1, 2, 200}, 100, true},
    {"NoPackets", {100, 2, 0}, 100, true},
    {"PacketsHuge", {100, 2, 0xFFFFFFFF}, 100, true},
    {"LongestPercent", {21474836, 1, 200}, 100, true},
    {"PercentOverflows", {21474837, 1, 200}, 100, false},
    {"CoverageOverflows", {0xFFFFFFFF, 2, 200}, 100, false},
    {"LongestTimeout", {2147483647, 1, 200}, 1, true},
    {"TimeoutOverflows", {2147483648, 1, 200}, 1, false},
    {"LongestCheckTime", {100, 2147483, 200}, 100, true},
    {"CheckTimeOverflows", {100, 2147484, 200}, 100, false},
    {"LastPollOverflows", {21474836, 2147483, 200}, 100, false},
};
INSTANTIATE_TEST_SUITE_P(Timings, TimingTest, testing::ValuesIn(kTimings), NameOf<Timing>);

struct Polls
{
    const char* name;
    CRunTiming timing;
    BYTE coverage;
    std::vector<LONG> percents; // after each poll; time is up at the last
};

class PollsTest : public testing::TestWithParam<Polls>
{
};

TEST_P(PollsTest, CountWholeIntervalsOfThePlannedLength)
{
    CRunParameters parameters;
    parameters.Coverage = GetParam().coverage;
    CRunProgress progress(GetParam().timing, parameters);
    EXPECT_EQ(GetParam().timing.CheckTime * 1000, progress.PollMilliseconds());
    std::vector<LONG> percents;
    while (!progress.IsTimeUp())
    {
        progress.CountPoll();
        percents.push_back(progress.PercentComplete());
    }
    EXPECT_EQ(GetParam().percents, percents);
}

const Polls kPolls[] = {
    {"PassesOneHundredAtTheLast", {10, 4, 200}, 100, {40, 80, 120}},
    {"EndsAtOneHundred", {10, 5, 200}, 100, {50, 100}},
    {"HalfCoverage", {10, 4, 200}, 50, {80, 160}},
    {"DoubleCoverage", {10, 10, 200}, 200, {50, 100}},
    {"OneLongInterval", {10, 100, 200}, 100, {1000}},
    {"FractionsAreCut", {3, 1, 200}, 100, {33, 66, 100}},
};
INSTANTIATE_TEST_SUITE_P(Timings, PollsTest, testing::ValuesIn(kPolls), NameOf<Polls>);

TEST(StoppedPercentCompleteTest, IsWholeSecondsOfThePlannedOnesAndFitsTheProperty)
{
    EXPECT_EQ(0, StoppedPercentComplete(999, 100));
    EXPECT_EQ(42, StoppedPercentComplete(42999, 100));
    EXPECT_EQ(120, StoppedPercentComplete(12000, 10));
    EXPECT_EQ(250, StoppedPercentComplete(25999, 10));
    EXPECT_EQ(255, StoppedPercentComplete(26000, 10));
    EXPECT_EQ(255, StoppedPercentComplete(4000000000ull, 1));
    EXPECT_EQ(0, StoppedPercentComplete(5000, 0));
}
} // namespace
