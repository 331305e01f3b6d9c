#include "agent/host/stamp/SenderVerdict.h"

#include "agent/AgentCodes.h"
#include "tests/support/CaseName.h"

namespace
{
struct VerdictCase
{
    const char* name;
    uint64_t sent;
    uint64_t lostThere;
    uint64_t lostBack;
    bool oneSum;
    CLossRule rule;
    HRESULT expected;
};
class SenderVerdict : public testing::TestWithParam<VerdictCase>
{
};

TEST_P(SenderVerdict, FollowsFromTheCounts)
{
    const VerdictCase& each = GetParam();
    CSenderCounts counts;
    counts.Sent = each.sent;
    counts.LostThere = each.lostThere;
    counts.LostBack = each.lostBack;
    counts.Answered = each.sent - each.lostThere - each.lostBack;
    counts.OneSum = each.oneSum;
    EXPECT_EQ(each.expected, JudgeLoss(counts, each.rule));
}

constexpr CLossRule kOne = {1, 200};
INSTANTIATE_TEST_SUITE_P(
    Counts, SenderVerdict,
    testing::Values(VerdictCase{"Nothing", 0, 0, 0, false, kOne, S_OK},
                    VerdictCase{"NoneLost", 1000, 0, 0, false, kOne, S_OK},
                    VerdictCase{"AsManyAsAllowed", 1000, 5, 5, false, kOne, S_OK},
                    VerdictCase{"OneMore", 1000, 11, 0, false, kOne, vorl::loss::There},
                    VerdictCase{"FewPacketsMayStillPass", 3, 2, 0, false, kOne, S_OK},
                    VerdictCase{"FewPacketsCannotPass", 100, 3, 0, false, kOne, vorl::loss::There},
                    VerdictCase{"NoLossAllowed", 1000, 0, 1, false, {0, 200}, vorl::loss::Back},
                    VerdictCase{"AllLossAllowed", 1000, 1000, 0, false, {100, 1}, S_OK},
                    VerdictCase{"BothWays", 1000, 20, 20, false, kOne, vorl::loss::BothWays},
                    VerdictCase{"OneWayFarMore", 1000, 3, 20, false, kOne, vorl::loss::Back},
                    VerdictCase{"Sum", 1000, 20, 0, true, kOne, vorl::loss::SomeWay},
                    VerdictCase{"JustNotHeavy", 1000, 99, 0, false, kOne, vorl::loss::There},
                    VerdictCase{"HeavyThere", 1000, 100, 0, false, kOne, vorl::loss::HeavyThere},
                    VerdictCase{"HeavyBack", 1000, 0, 500, false, kOne, vorl::loss::HeavyBack},
                    VerdictCase{"HeavyBothWays", 1000, 100, 100, false, kOne, vorl::loss::HeavyBothWays},
                    VerdictCase{"HeavySum", 1000, 100, 0, true, kOne, vorl::loss::HeavySomeWay}),
    NameOf<VerdictCase>);
} // namespace
