#include "tests/support/CaseName.h"
#include "tests/unit/engine/EngineFixture.h"

#include "CDM/src/engine/DiagAgent.h"
#include "CDM/src/engine/runs/TestRun.h"

namespace
{
using Method = CFakeAgent::Method;
using Wake = CFakeRunEnvironment::Wake;
constexpr HRESULT kAgentFailure = static_cast<HRESULT>(0x80040123);
constexpr wchar_t kSender[] = L"9@{AAA}";

class SenderResponderRunTest : public CEngineTest
{
  protected:
    SenderResponderRunTest()
    {
        agent->AddAdapter(L"{aaa}", {9, 10, 1});
        agent->BlockRuns();
        SetTiming(10, 4, 200);
    }
    ~SenderResponderRunTest() override { agent->EndRuns(); }

    void SetTiming(DWORD timeout, DWORD checkTime, DWORD maxPackets)
    {
        registry.SetNumber(kDiagKey, "TimeoutSndRsp", timeout);
        registry.SetNumber(kDiagKey, "CheckTime", checkTime);
        registry.SetNumber(kDiagKey, "MaxPktsRcvd", maxPackets);
    }
    // Remembers how far the result is whenever the run waits.
    void WatchPercent()
    {
        environment.OnWait([&] { percents.push_back(ResultData(kSender).PercentComplete); });
    }

    std::vector<int> percents;
};

TEST_F(SenderResponderRunTest, PollsUntilItsTimeIsUpThenStopsAndPasses)
{
    ASSERT_EQ(S_OK, Start());
    WatchPercent();
    EXPECT_EQ(S_OK, Run(kSender));
    // Polls at 4, 8 and 12 seconds; the last value, 120, is there when the run stops.
    EXPECT_EQ((std::vector<DWORD>{4000, 4000, 4000}), environment.TimeOuts());
    EXPECT_EQ((std::vector<int>{0, 40, 80}), percents);
    EXPECT_EQ(3, agent->Count(Method::GetDiagTestStatistics));
    EXPECT_EQ(1, agent->Count(Method::StopTest));
    const CResultData data = ResultData(kSender);
    EXPECT_EQ(2u, data.TestState);
    EXPECT_EQ(100, data.PercentComplete);
    EXPECT_EQ(1u, data.SenderResponder);
    EXPECT_EQ(0u, data.IsPackage);
}

TEST_F(SenderResponderRunTest, TheLastPollCanPassOneHundred)
{
    ASSERT_EQ(S_OK, Start());
    WatchPercent();
    agent->Fail(Method::StopTest, 1, kAgentFailure); // so that the run waits once more before it stops
    EXPECT_EQ(S_OK, Run(kSender));
    EXPECT_EQ((std::vector<int>{0, 40, 80, 120}), percents);
}

TEST_F(SenderResponderRunTest, PercentThatTheByteDoesNotHoldIsTraced)
{
    SetTiming(10, 100, 200);
    ASSERT_EQ(S_OK, Start());
    EXPECT_EQ(S_OK, Run(kSender));
    EXPECT_TRUE(trace.Has("CDiagTest::StartTest:SetPercentComplete failed."));
    EXPECT_EQ(100, ResultData(kSender).PercentComplete);
}

TEST_F(SenderResponderRunTest, EnoughPacketsEndAQuickRunAfterOneInterval)
{
    agent->SetStatistics({{200}, 0, 0, 0});
    ASSERT_EQ(S_OK, Start());
    EXPECT_EQ(S_OK, Run(kSender));
    EXPECT_EQ(1u, environment.TimeOuts().size());
    EXPECT_EQ(2u, ResultData(kSender).TestState);
}

TEST_F(SenderResponderRunTest, OnePacketTooFewDoesNot)
{
    agent->SetStatistics({{199}, 0, 0, 0});
    ASSERT_EQ(S_OK, Start());
    EXPECT_EQ(S_OK, Run(kSender));
    EXPECT_EQ(3u, environment.TimeOuts().size());
}

TEST_F(SenderResponderRunTest, ElevenMessagesInTheirOrder)
{
    agent->SetStatistics({{100, 101, 102, 103, 104, 105, 106, 4000000000u}, 65535, 250, 251});
    ASSERT_EQ(S_OK, Start());
    EXPECT_EQ(S_OK, Run(kSender));
    const CResultData data = ResultData(kSender);
    EXPECT_EQ(11u, data.MessageCount);
    EXPECT_EQ((std::vector<ULONG>{12, 13, 10, 3, 4, 5, 7, 9, 6, 8, 11}), data.StringIDs);
    EXPECT_EQ((std::vector<ULONG>{250, 251, 4000000000u, 100, 101, 102, 104, 106, 103, 105, 65535}),
              data.TestMessages);
}

TEST_F(SenderResponderRunTest, OldMessagesStayUntilTheFirstPoll)
{
    ASSERT_EQ(S_OK, Start());
    ASSERT_EQ(S_OK, Run(kSender));
    std::vector<ULONG> counts;
    environment.OnWait([&] { counts.push_back(ResultData(kSender).MessageCount); });
    agent->Fail(Method::GetDiagTestStatistics, 1, kAgentFailure);
    ASSERT_EQ(S_OK, Run(kSender));
    EXPECT_EQ((std::vector<ULONG>{11, 0, 11}), counts);
    EXPECT_TRUE(trace.Has("CDiagTest::StartTest:GetDiagTestStatistics failed hr = <80040123>"));
}

TEST_F(SenderResponderRunTest, StatisticsThatThrowAreAFailedPoll)
{
    ASSERT_EQ(S_OK, Start());
    agent->Throw(Method::GetDiagTestStatistics, 3);
    EXPECT_EQ(S_OK, Run(kSender));
    EXPECT_EQ(0u, ResultData(kSender).MessageCount);
}

TEST_F(SenderResponderRunTest, TheEventEndsTheRunAtOnceAsStopped)
{
    registry.SetNumber(kDiagKey, "Enable", 1);
    SetTiming(20, 4, 200);
    ASSERT_EQ(S_OK, Start());
    environment.Script({Wake::TimeOut, Wake::Event});
    EXPECT_EQ(S_OK, Run(kSender));
    const CResultData data = ResultData(kSender);
    EXPECT_EQ(5u, data.TestState);
    EXPECT_EQ(20, data.PercentComplete);                       // 4 of 20 seconds
    EXPECT_EQ(2, agent->Count(Method::GetDiagTestStatistics)); // the event polls too
    EXPECT_EQ(11u, data.MessageCount);
    EXPECT_NE(std::string::npos, LogText().find("TestState=5\r\n"));
}

TEST_F(SenderResponderRunTest, TheRunResetsTheEventThatItSees)
{
    ASSERT_EQ(S_OK, Start());
    const HANDLE event = TestData(kSender).Event;
    SetEvent(event);
    environment.Script({Wake::Event});
    agent->Fail(Method::StopTest, 1, kAgentFailure); // so that the run waits once more
    std::vector<DWORD> seen;
    environment.OnWait([&] { seen.push_back(WaitForSingleObject(event, 0)); });
    EXPECT_EQ(S_OK, Run(kSender));
    EXPECT_EQ((std::vector<DWORD>{WAIT_OBJECT_0, WAIT_TIMEOUT}), seen);
}

TEST_F(SenderResponderRunTest, AnyOtherWakeUpWaitsAgainWithoutPolling)
{
    ASSERT_EQ(S_OK, Start());
    environment.Script({Wake::Abandoned, Wake::Abandoned});
    EXPECT_EQ(S_OK, Run(kSender));
    EXPECT_EQ(5u, environment.TimeOuts().size());
    EXPECT_EQ(3, agent->Count(Method::GetDiagTestStatistics));
}

TEST_F(SenderResponderRunTest, AWorkerThatEndsByItselfGivesTheOutcome)
{
    agent->SetOutcomes(9, {kAgentFailure, S_OK});
    ASSERT_EQ(S_OK, Start());
    environment.OnWait([&] { agent->EndRuns(); });
    environment.Script({Wake::WorkerEnded});
    EXPECT_EQ(kAgentFailure, Run(kSender));
    EXPECT_TRUE(
        trace.Has("CDiagTest::StartTest:RunDiagTest failed, threadParameters.hrTestStatus = <80040123>."));
    CResultData data = ResultData(kSender);
    EXPECT_EQ(3u, data.TestState);
    EXPECT_EQ((std::vector<ULONG>{0, 3809}), data.StringIDs);
    EXPECT_EQ(0, agent->Count(Method::StopTest));

    environment.Script({Wake::WorkerEnded});
    EXPECT_EQ(S_OK, Run(kSender));
    EXPECT_TRUE(trace.Has("CDiagTest::StartTest:RunDiagTest failed, threadParameters.hrTestStatus = <0>."));
    EXPECT_EQ(2u, ResultData(kSender).TestState);
}

TEST_F(SenderResponderRunTest, AnAgentThatThrowsOnTheWorkerFailsTheRun)
{
    ASSERT_EQ(S_OK, Start());
    agent->Throw(Method::RunDiagTest, 1);
    environment.Script({Wake::WorkerEnded});
    EXPECT_EQ(E_UNEXPECTED, Run(kSender));
    EXPECT_EQ(3u, ResultData(kSender).TestState);
}

TEST_F(SenderResponderRunTest, HandlesThatEarlyReturnsLeaveAreClosedBeforeTheNextRun)
{
    ASSERT_EQ(S_OK, Start());
    environment.OnWait([&] { agent->EndRuns(); });
    const auto runAndCount = [&]
    {
        environment.Script({Wake::WorkerEnded});
        EXPECT_EQ(S_OK, Run(kSender));
        DWORD handles = 0;
        GetProcessHandleCount(GetCurrentProcess(), &handles);
        return handles;
    };
    const DWORD first = runAndCount();
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(first, runAndCount());
}

TEST_F(SenderResponderRunTest, AFailedWaitFailsTheRun)
{
    ASSERT_EQ(S_OK, Start());
    environment.Script({Wake::Failed});
    EXPECT_EQ(E_FAIL, Run(kSender));
    EXPECT_TRUE(trace.Has("CDiagTest::StartTest:RunDiagTest failed, WAIT_FAILED"));
    EXPECT_EQ(3u, ResultData(kSender).TestState);
    agent->EndRuns();
}

TEST_F(SenderResponderRunTest, AFailedWaitAsksTheAgentToStopTheWorkerThatStaysBehind)
{
    ASSERT_EQ(S_OK, Start());
    environment.Script({Wake::Failed});
    EXPECT_EQ(E_FAIL, Run(kSender));
    EXPECT_EQ(1, agent->Count(Method::StopTest));
}

TEST_F(SenderResponderRunTest, NoRunBeginsWhileAWorkerIsLeftInTheAgent)
{
    ASSERT_EQ(S_OK, Start());
    agent->SetStopEndsRuns(false);
    environment.DoNotWait();
    environment.Script({Wake::Failed});
    ASSERT_EQ(E_FAIL, Run(kSender));
    WaitForSingleObject(agent->Blocked(), INFINITE);
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_BUSY), Run(kSender));
    EXPECT_TRUE(trace.Has("CDiagTest::StartTest:The agent is still busy with the run before"));
    EXPECT_EQ(1, agent->Count(Method::RunDiagTest));
    EXPECT_EQ(5, agent->Count(Method::StopTest)) << "it is asked four times more";
    EXPECT_EQ(3u, ResultData(kSender).TestState);
    // Once it has come back, the test runs again.
    environment.DoNotWait(false);
    agent->SetStopEndsRuns(true);
    EXPECT_EQ(S_OK, Run(kSender));
    EXPECT_EQ(2, agent->Count(Method::RunDiagTest));
}

TEST_F(SenderResponderRunTest, AThreadThatCannotBeStartedFailsTheRun)
{
    ASSERT_EQ(S_OK, Start());
    environment.FailThreads();
    const long live = g_liveComObjects;
    EXPECT_EQ(E_FAIL, Run(kSender));
    EXPECT_TRUE(trace.Has("CDiagTest::StartTest:CreateThread failed."));
    EXPECT_EQ(0, agent->Count(Method::RunDiagTest));
    EXPECT_EQ(3u, ResultData(kSender).TestState);
    EXPECT_EQ(live, g_liveComObjects);
}

class StopRetryTest : public SenderResponderRunTest, public testing::WithParamInterface<int>
{
};

TEST_P(StopRetryTest, AStopThatFailsIsTriedFourTimes)
{
    const int failures = GetParam();
    ASSERT_EQ(S_OK, Start());
    agent->Fail(Method::StopTest, 1, kAgentFailure, failures);
    EXPECT_EQ(S_OK, Run(kSender));
    EXPECT_EQ(failures + 1, agent->Count(Method::StopTest));
    std::vector<DWORD> waits{4000, 4000, 4000};
    waits.insert(waits.end(), failures, 5000);
    EXPECT_EQ(waits, environment.TimeOuts());
    EXPECT_EQ(2u, ResultData(kSender).TestState);
}

INSTANTIATE_TEST_SUITE_P(Failures, StopRetryTest, testing::Range(1, 4));

TEST_F(SenderResponderRunTest, AWorkerThatCannotBeStoppedIsEndedByForce)
{
    ASSERT_EQ(S_OK, Start());
    environment.OnWait([&] { WaitForSingleObject(agent->Blocked(), INFINITE); });
    agent->Fail(Method::StopTest, 1, kAgentFailure, 4);
    EXPECT_EQ(kAgentFailure, Run(kSender));
    EXPECT_EQ(4, agent->Count(Method::StopTest));
    EXPECT_TRUE(trace.Has("CDiagMgr::RunTest:StopTest failed hr = <80040123>"));
    const CResultData data = ResultData(kSender);
    EXPECT_EQ(3u, data.TestState);
    EXPECT_EQ(0, data.PercentComplete);
    EXPECT_EQ((std::vector<ULONG>{0, 3809}), data.StringIDs);
    EXPECT_EQ((std::vector<ULONG>{0x80040123, 0}), data.TestMessages);
    // What the thread worked with is not lost, and the test runs again.
    manager.reset();
    EXPECT_EQ(1u, agent->AddRef() - 1);
    agent->Release();
    ASSERT_EQ(S_OK, Start());
    EXPECT_EQ(S_OK, Run(kSender));
}

TEST_F(SenderResponderRunTest, AFailedWaitForTheWorkersEndIsTraced)
{
    ASSERT_EQ(S_OK, Start());
    environment.FailWorkerWaits();
    EXPECT_EQ(S_OK, Run(kSender));
    EXPECT_TRUE(trace.Has("CDiagMgr::RunTest:WaitForSingleObject failed"));
    EXPECT_EQ(2u, ResultData(kSender).TestState);
}

// Settings govern the run only where the client gave one.
struct Setting
{
    const char* name;
    ULONG mode;
    BOOL report;
    BYTE coverage;
    BOOL quick;
    size_t polls;
    int statistics;
};

class SettingTest : public CEngineTest, public testing::WithParamInterface<Setting>
{
};

TEST_P(SettingTest, GovernsTheRun)
{
    agent->AddAdapter(L"{aaa}", {9});
    agent->BlockRuns();
    agent->SetStatistics({{500}, 0, 0, 0});
    registry.SetNumber(kDiagKey, "TimeoutSndRsp", 20);
    registry.SetNumber(kDiagKey, "CheckTime", 5);
    const CBstr key(L"9@{AAA}");
    CDiagTest test(key.Get(), {9, 0, 0});
    CDiagResult result(key.Get(), 0, true);
    CSettingData setting;
    setting.ReportStatusMessages = GetParam().report;
    setting.PercentOfTestCoverage = GetParam().coverage;
    setting.QuickMode = GetParam().quick;
    result.SetSettingValues(setting);
    std::shared_ptr<CDiagAgent> boundary;
    ASSERT_EQ(S_OK, CDiagAgent::Query(agent.Get(), boundary));
    EXPECT_EQ(S_OK, CTestRun(test, result, GetParam().mode, environment).Start(boundary, key.Get()));
    EXPECT_EQ(GetParam().polls, environment.TimeOuts().size());
    EXPECT_EQ(GetParam().statistics, agent->Count(Method::GetDiagTestStatistics));
}

const Setting kSettings[] = {
    {"Quick", 1, TRUE, 100, TRUE, 1, 1},        {"NotQuick", 1, TRUE, 100, FALSE, 4, 4},
    {"HalfCoverage", 1, TRUE, 50, FALSE, 2, 2}, {"LargestCoverage", 1, TRUE, 255, FALSE, 11, 11},
    {"NoReport", 1, FALSE, 100, TRUE, 4, 0},    {"OtherMode", 0, FALSE, 50, FALSE, 1, 1},
    {"UnknownMode", 2, FALSE, 50, FALSE, 1, 1},
};
INSTANTIATE_TEST_SUITE_P(Modes, SettingTest, testing::ValuesIn(kSettings), NameOf<Setting>);

TEST_F(SenderResponderRunTest, UnusableTimingIsRefusedBeforeAnythingStarts)
{
    SetTiming(100, 0, 200);
    ASSERT_EQ(S_OK, Start());
    EXPECT_EQ(engine::UnusableTiming, Run(kSender));
    EXPECT_TRUE(
        trace.Has("CDiagTest::StartTest:Run timing cannot be used, TimeoutSndRsp = <100>, CheckTime = "
                  "<0>, coverage = <100>"));
    EXPECT_EQ(0, agent->Count(Method::RunDiagTest));
    const CResultData data = ResultData(kSender);
    EXPECT_EQ(3u, data.TestState);
    EXPECT_EQ((std::vector<ULONG>{0, 3809}), data.StringIDs);
    EXPECT_EQ((std::vector<ULONG>{0x80042007, 0}), data.TestMessages);
    // The values are read at every start.
    SetTiming(10, 4, 200);
    EXPECT_EQ(S_OK, Run(kSender));
}

// Another start of the same test reads timing of its own while this one is on its way.
TEST_F(SenderResponderRunTest, ARunKeepsTheTimingThatWasFoundUsable)
{
    const CBstr key(kSender);
    CDiagTest test(key.Get(), {9, 0, 0});
    CDiagResult result(key.Get(), 0, true);
    std::shared_ptr<CDiagAgent> boundary;
    ASSERT_EQ(S_OK, CDiagAgent::Query(agent.Get(), boundary));
    environment.OnThread(
        [&]
        {
            SetTiming(10, 2147484, 200);
            EXPECT_EQ(engine::UnusableTiming,
                      CTestRun(test, result, 0, environment).Start(boundary, key.Get()));
        });
    EXPECT_EQ(S_OK, CTestRun(test, result, 0, environment).Start(boundary, key.Get()));
    EXPECT_EQ((std::vector<DWORD>{4000, 4000, 4000}), environment.TimeOuts());
}

TEST_F(SenderResponderRunTest, TimingOfWrongTypeIsTheDefault)
{
    registry.SetString(kDiagKey, "TimeoutSndRsp", "10");
    registry.SetBinary(kDiagKey, "CheckTime", "\x01\x02");
    registry.SetString(kDiagKey, "MaxPktsRcvd", "0");
    ASSERT_EQ(S_OK, Start());
    EXPECT_EQ(S_OK, Run(kSender));
    EXPECT_EQ(std::vector<DWORD>(50, 2000), environment.TimeOuts());
}

TEST_F(SenderResponderRunTest, BadArgumentsOfATestAreRefused)
{
    CDiagTest test(CBstr(kSender).Get(), {9, 0, 0});
    CDiagResult result(CBstr(kSender).Get(), 0, true);
    std::shared_ptr<CDiagAgent> boundary;
    ASSERT_EQ(S_OK, CDiagAgent::Query(agent.Get(), boundary));
    EXPECT_EQ(E_INVALIDARG, CTestRun(test, result, 0, environment).Start(nullptr, CBstr(kSender).Get()));
    EXPECT_EQ(E_INVALIDARG, CTestRun(test, result, 0, environment).Start(boundary, CBstr(L"").Get()));
    EXPECT_EQ(E_INVALIDARG, CTestRun(test, result, 0, environment).Start(boundary, nullptr));
    EXPECT_EQ(wmi::OutOfMemory, CTestRun(test, result, 0, environment).Start(boundary, CBstr(L"9").Get()));
    EXPECT_TRUE(trace.Has("CDiagTest::StartTest:ParseForAdapterKey failed"));
    EXPECT_EQ(E_INVALIDARG, test.StopTest(nullptr, CBstr(kSender).Get()));
    EXPECT_EQ(E_INVALIDARG, test.StopTest(boundary.get(), nullptr));
    EXPECT_EQ(wmi::OutOfMemory, test.StopTest(boundary.get(), CBstr(L"9").Get()));
    EXPECT_EQ(0, agent->Count(Method::RunDiagTest));
    EXPECT_EQ(0, agent->Count(Method::StopTest));
}
} // namespace
