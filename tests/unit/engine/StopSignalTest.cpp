// Whose run a request to stop ends.
#include "CDM/src/engine/catalogue/StopSignal.h"
#include "tests/unit/engine/EngineFixture.h"

namespace
{
using Seen = CStopSignal::Seen;
using Wake = CFakeRunEnvironment::Wake;

bool Signalled(HANDLE event)
{
    return WaitForSingleObject(event, 0) == WAIT_OBJECT_0;
}

class StopSignalTest : public testing::Test
{
  protected:
    StopSignalTest()
    {
        EXPECT_TRUE(first.Create());
        EXPECT_TRUE(second.Create());
    }
    ~StopSignalTest() override { ResetEvent(first.Event()); }

    CStopSignal first;
    CStopSignal second;
    CStopSignal ordinary;
};

TEST_F(StopSignalTest, RequestIsTakenByTheRunThatItIsFor)
{
    for (const bool firstIsAsked : {true, false})
    {
        SCOPED_TRACE(firstIsAsked);
        CStopSignal& asked = firstIsAsked ? first : second;
        CStopSignal& other = firstIsAsked ? second : first;
        ASSERT_TRUE(first.Lock());
        ASSERT_TRUE(second.Lock());
        EXPECT_EQ(S_OK, asked.Request());
        EXPECT_EQ(Seen::Others, other.Take());
        EXPECT_TRUE(Signalled(first.Event()));
        EXPECT_EQ(Seen::Ours, asked.Take());
        EXPECT_FALSE(Signalled(first.Event()));
        EXPECT_EQ(Seen::Gone, other.Take());
        EXPECT_TRUE(first.Unlock());
        EXPECT_TRUE(second.Unlock());
    }
}

TEST_F(StopSignalTest, EventStaysSignalledUntilTheLastRequestIsTaken)
{
    ASSERT_TRUE(first.Lock());
    ASSERT_TRUE(second.Lock());
    EXPECT_EQ(S_OK, first.Request());
    EXPECT_EQ(S_OK, first.Request()) << "twice is once";
    EXPECT_EQ(S_OK, second.Request());
    EXPECT_EQ(Seen::Ours, second.Take());
    EXPECT_TRUE(Signalled(first.Event()));
    EXPECT_EQ(Seen::Ours, first.Take());
    EXPECT_FALSE(Signalled(first.Event()));
}

TEST_F(StopSignalTest, RequestThatNoRunHasTakenGoesWithItsLock)
{
    ASSERT_TRUE(first.Lock());
    ASSERT_TRUE(second.Lock()); // so that the event is still in use
    EXPECT_EQ(S_OK, first.Request());
    EXPECT_TRUE(first.Unlock());
    EXPECT_FALSE(Signalled(first.Event()));
    ASSERT_TRUE(first.Lock());
    EXPECT_EQ(Seen::Gone, first.Take());
}

TEST_F(StopSignalTest, WhoeverLeavesTakesNoRequestOfOthersAway)
{
    ASSERT_TRUE(first.Lock());
    ASSERT_TRUE(second.Lock());
    ASSERT_TRUE(ordinary.Lock());
    EXPECT_EQ(S_OK, second.Request());
    EXPECT_TRUE(first.Unlock());
    EXPECT_TRUE(ordinary.Unlock());
    EXPECT_TRUE(Signalled(second.Event()));
    EXPECT_EQ(Seen::Ours, second.Take());
}

TEST_F(StopSignalTest, NothingIsAskedOfATestThatIsNotInUse)
{
    EXPECT_EQ(engine::Stopped, first.Request());
    EXPECT_FALSE(Signalled(first.Event()));
    ASSERT_TRUE(ordinary.Lock());
    EXPECT_EQ(E_FAIL, ordinary.Request()) << "there is no event";
}

TEST_F(StopSignalTest, SignalOfAnotherProgramEndsWhicheverRunSeesItFirst)
{
    ASSERT_TRUE(first.Lock());
    ASSERT_TRUE(second.Lock());
    SetEvent(first.Event());
    EXPECT_EQ(Seen::Ours, second.Take());
    EXPECT_EQ(Seen::Gone, first.Take());
    SetEvent(first.Event());
    EXPECT_TRUE(first.Unlock());
    EXPECT_TRUE(Signalled(first.Event())) << "the other run is to see it";
    EXPECT_TRUE(second.Unlock());
    EXPECT_FALSE(Signalled(first.Event())) << "no later run";
}

TEST_F(StopSignalTest, TestThatGoesWhileItIsInUseTakesItsRequestAlong)
{
    {
        CStopSignal gone;
        ASSERT_TRUE(gone.Create());
        ASSERT_TRUE(gone.Lock());
        EXPECT_EQ(S_OK, gone.Request());
    }
    ASSERT_TRUE(first.Lock());
    EXPECT_EQ(Seen::Gone, first.Take());
}

// The same seen through managers, whose runs wait as the test says.
class StoppedRunTest : public CEngineTest
{
  protected:
    static constexpr wchar_t kSender[] = L"9@{AAA}";

    StoppedRunTest()
    {
        agent->AddAdapter(L"{aaa}", {9, 10});
        agent->BlockRuns();
        registry.SetNumber(kDiagKey, "TimeoutSndRsp", 10);
        registry.SetNumber(kDiagKey, "CheckTime", 4);
        EXPECT_EQ(S_OK, Start());
    }
    ~StoppedRunTest() override { agent->EndRuns(); }

    CBstr key{kSender};
};

TEST_F(StoppedRunTest, StopBetweenTheEndOfARunAndItsUnlockingDoesNotEndTheNextOne)
{
    CBstr resultKey(kSender);
    ASSERT_EQ(S_OK, manager->LockTest(key.Get()));
    ASSERT_EQ(S_OK, manager->RunTest(key.Get(), resultKey, 0));
    EXPECT_EQ(S_OK, manager->SignalStop(key.Get()));
    ASSERT_EQ(S_OK, manager->UnlockTest(key.Get()));
    EXPECT_FALSE(Signalled(TestData(kSender).Event));
    EXPECT_EQ(S_OK, Run(kSender));
    EXPECT_EQ(2u, ResultData(kSender).TestState);
}

TEST_F(StoppedRunTest, StopBetweenLockingAndTheFirstWaitEndsThatRun)
{
    CBstr resultKey(kSender);
    ASSERT_EQ(S_OK, manager->LockTest(key.Get()));
    EXPECT_EQ(S_OK, manager->SignalStop(key.Get()));
    environment.Script({Wake::Event});
    ASSERT_EQ(S_OK, manager->RunTest(key.Get(), resultKey, 0));
    ASSERT_EQ(S_OK, manager->UnlockTest(key.Get()));
    EXPECT_EQ(5u, ResultData(kSender).TestState);
    EXPECT_EQ(engine::Stopped, manager->SignalStop(key.Get())) << "it is not running any more";
    EXPECT_EQ(engine::NotFound, manager->SignalStop(CBstr(L"9@other").Get()));
}

TEST_F(StoppedRunTest, RunGoesOnThatIsWokenByAStopForAnothersRun)
{
    environment.DoNotWait();
    const CVormAgentMgr agents(agent.Get());
    CDiagMgr other(paths, CEngineSeams{&environment, nullptr});
    ASSERT_EQ(S_OK, other.Initialize(&agents));
    ASSERT_EQ(S_OK, other.LockTest(key.Get()));
    ASSERT_EQ(S_OK, other.SignalStop(key.Get()));
    environment.Script({Wake::Event, Wake::TimeOut, Wake::Event, Wake::LateEvent});
    EXPECT_EQ(S_OK, Run(kSender));
    EXPECT_EQ(2u, ResultData(kSender).TestState);
    EXPECT_TRUE(Signalled(TestData(kSender).Event)) << "it is left to the other";
    // Its run is the one that ends.
    CBstr resultKey(kSender);
    environment.Script({Wake::Event});
    EXPECT_EQ(S_OK, other.RunTest(key.Get(), resultKey, 0));
    ASSERT_EQ(S_OK, other.UnlockTest(key.Get()));
    CResultData data;
    EXPECT_EQ(S_OK, other.GetResultData(key.Get(), &data));
    EXPECT_EQ(5u, data.TestState);
}

TEST_F(StoppedRunTest, RunGoesOnThatFindsTheSignalTaken)
{
    environment.Script({Wake::LateEvent});
    EXPECT_EQ(S_OK, Run(kSender));
    EXPECT_EQ(2u, ResultData(kSender).TestState);
}

// However often others' stops wake it, a run polls when its interval is over.
TEST_F(StoppedRunTest, TimeThatOthersStopsTakeCountsForTheInterval)
{
    environment.DoNotWait();
    const CBstr responder(L"A@{AAA}");
    ASSERT_EQ(S_OK, manager->LockTest(responder.Get()));
    ASSERT_EQ(S_OK, manager->SignalStop(responder.Get()));
    environment.Script({Wake::Event, Wake::Event, Wake::Event});
    ULONGLONG now = 0;
    environment.OnWait([&] { environment.SetClock(now += 1500); });
    EXPECT_EQ(S_OK, Run(kSender));
    const std::vector<DWORD> waits = environment.TimeOuts();
    EXPECT_EQ((std::vector<DWORD>{4000, 2500, 1000, 4000}),
              std::vector<DWORD>(waits.begin(), waits.begin() + 4));
    EXPECT_EQ(3, agent->Count(CFakeAgent::Method::GetDiagTestStatistics));
    ASSERT_EQ(S_OK, manager->UnlockTest(responder.Get()));
}
} // namespace
