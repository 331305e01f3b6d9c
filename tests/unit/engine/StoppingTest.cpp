// When a run is stopped, and what its status makes of it.
#include "CDM/src/engine/runs/Stopping.h"
#include "CDM/src/engine/EngineStatus.h"
#include "CDM/src/engine/runs/RunOutcome.h"
#include "CDM/src/engine/runs/RunProgress.h"

#include <gtest/gtest.h>

namespace
{
TEST(StopDecisionTest, ARunGoesOnUntilTimeIsUpOrPacketsAreEnoughOrSomeoneAsks)
{
    CRunProgress progress({10, 5, 200}, {});
    progress.CountPoll();
    EXPECT_EQ(StopReason::None, DecideStop(progress, false, false));
    EXPECT_EQ(StopReason::EnoughPackets, DecideStop(progress, true, false));
    EXPECT_EQ(StopReason::Requested, DecideStop(progress, false, true));
    progress.CountPoll();
    EXPECT_EQ(StopReason::TimeIsUp, DecideStop(progress, false, false));
}

TEST(StopDecisionTest, ARequestCountsEvenIfTheRunWouldEndAnyway)
{
    CRunProgress progress({10, 10, 200}, {});
    progress.CountPoll();
    EXPECT_EQ(StopReason::Requested, DecideStop(progress, true, true));
}

class OutcomeTest : public testing::Test
{
  protected:
    static constexpr HRESULT kFinding = 0x00040322;
    const CDiagTest ordinary{CBstr(L"1@A").Get(), VormTestDescriptor{1, 0, 0}};
    const CDiagTest sender{CBstr(L"9@A").Get(), VormTestDescriptor{9, 0, 0}};
};

TEST_F(OutcomeTest, OnlyEngineStoppedIsAStop)
{
    EXPECT_TRUE(std::holds_alternative<CStoppedRun>(OutcomeOf(engine::Stopped, ordinary)));
    EXPECT_TRUE(std::holds_alternative<CStoppedRun>(OutcomeOf(engine::Stopped, sender)));
    for (const HRESULT status : {E_FAIL, E_ABORT, engine::NotLocked, engine::UnusableTiming})
    {
        const CRunOutcome outcome = OutcomeOf(status, ordinary);
        ASSERT_TRUE(std::holds_alternative<CFailedRun>(outcome)) << status;
        EXPECT_EQ(status, std::get<CFailedRun>(outcome).Code);
    }
}

TEST_F(OutcomeTest, OnlyAnOrdinaryTestPassesWithAFinding)
{
    EXPECT_EQ(kFinding, std::get<CPassedRun>(OutcomeOf(kFinding, ordinary)).Finding);
    EXPECT_EQ(std::nullopt, std::get<CPassedRun>(OutcomeOf(kFinding, sender)).Finding);
    for (const HRESULT status : {S_OK, S_FALSE, static_cast<HRESULT>(0x00048322)})
        EXPECT_EQ(std::nullopt, std::get<CPassedRun>(OutcomeOf(status, ordinary)).Finding) << status;
}
} // namespace
