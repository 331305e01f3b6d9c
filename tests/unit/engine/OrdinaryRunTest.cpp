#include "tests/support/CaseName.h"
#include "tests/unit/engine/EngineFixture.h"

#include <thread>

namespace
{
using Method = CFakeAgent::Method;
constexpr HRESULT kAgentFailure = static_cast<HRESULT>(0x80040123);

class OrdinaryRunTest : public CEngineTest
{
  protected:
    OrdinaryRunTest() { agent->AddAdapter(L"{aaa}", {1, 2, 10}); }
};

TEST_F(OrdinaryRunTest, APassedRunFillsItsResult)
{
    ASSERT_EQ(S_OK, Start());
    ASSERT_EQ(S_OK, Run(L"1@{aaa}"));
    const CResultData data = ResultData(L"1@{aaa}");
    EXPECT_STREQ(L"1@{AAA}", data.ResultID.Text());
    EXPECT_STREQ(L"{AAA}", data.ExecutionID.Text());
    EXPECT_EQ(2u, data.TestState);
    EXPECT_EQ(100, data.PercentComplete);
    EXPECT_EQ(0u, data.MessageCount);
    EXPECT_EQ(3501u, data.DiagnosticNameStringID);
    EXPECT_EQ(0u, data.SenderResponder);
    EXPECT_EQ(0u, data.IsPackage);
    ASSERT_TRUE(data.TestStartTime && data.TestCompletionTime && data.TimeStamp);
    EXPECT_EQ(2024, data.TestStartTime->wYear);
    const std::vector<CFakeAgent::CCall> calls = agent->Calls();
    EXPECT_EQ(Method::RunDiagTest, calls.back().What);
    EXPECT_EQ(L"{AAA}", calls.back().AdapterKey);
    EXPECT_EQ(1u, calls.back().TestID);
}

TEST_F(OrdinaryRunTest, AFailedRunReturnsItsReasonAndShowsItInTwoMessages)
{
    registry.SetNumber(kDiagKey, "Enable", 1);
    agent->SetOutcomes(2, {kAgentFailure});
    ASSERT_EQ(S_OK, Start());
    EXPECT_EQ(kAgentFailure, Run(L"2@{aaa}"));
    const CResultData data = ResultData(L"2@{aaa}");
    EXPECT_EQ(3u, data.TestState);
    EXPECT_EQ(0, data.PercentComplete);
    EXPECT_EQ(2u, data.MessageCount);
    EXPECT_EQ((std::vector<ULONG>{0, 3802}), data.StringIDs);
    EXPECT_EQ((std::vector<ULONG>{0x80040123, 0}), data.TestMessages);
    EXPECT_TRUE(data.TestCompletionTime && data.TimeStamp);
    EXPECT_TRUE(trace.Has("CDiagTest::StartTest:RunTest failed, hr = <80040123>"));
    EXPECT_TRUE(trace.Has("CDiagMgr::RunTest:pDiagTestObj->StartTest failed, hrTestStatus = <80040123>"));
    EXPECT_EQ("", LogText()); // failed runs are not logged
}

TEST_F(OrdinaryRunTest, ASuccessCodeOfTheAgentIsTheFindingOfAPassedRun)
{
    agent->SetOutcomes(1, {static_cast<HRESULT>(0x00040322), S_OK});
    ASSERT_EQ(S_OK, Start());
    EXPECT_EQ(S_OK, Run(L"1@{aaa}"));
    const CResultData data = ResultData(L"1@{aaa}");
    EXPECT_EQ(2u, data.TestState);
    EXPECT_EQ(100, data.PercentComplete);
    EXPECT_EQ(1u, data.MessageCount);
    EXPECT_EQ((std::vector<ULONG>{0x8322}), data.StringIDs);
    EXPECT_EQ((std::vector<ULONG>{0x00040322}), data.TestMessages);
    EXPECT_EQ(S_OK, Run(L"1@{aaa}"));
    EXPECT_EQ(0u, ResultData(L"1@{aaa}").MessageCount);
}

TEST_F(OrdinaryRunTest, OtherSuccessCodesSayNothing)
{
    agent->SetOutcomes(1, {S_FALSE, static_cast<HRESULT>(0x00048322), static_cast<HRESULT>(0x00030322)});
    ASSERT_EQ(S_OK, Start());
    for (int i = 0; i < 3; ++i)
    {
        EXPECT_EQ(S_OK, Run(L"1@{aaa}"));
        EXPECT_EQ(2u, ResultData(L"1@{aaa}").TestState);
        EXPECT_EQ(0u, ResultData(L"1@{aaa}").MessageCount);
    }
}

TEST_F(OrdinaryRunTest, AnAgentThatThrowsFailsTheRun)
{
    ASSERT_EQ(S_OK, Start());
    agent->Throw(Method::RunDiagTest, 1);
    EXPECT_EQ(E_UNEXPECTED, Run(L"1@{aaa}"));
    EXPECT_EQ(3u, ResultData(L"1@{aaa}").TestState);
    EXPECT_EQ(S_OK, Run(L"1@{aaa}"));
    EXPECT_EQ(2u, ResultData(L"1@{aaa}").TestState);
}

TEST_F(OrdinaryRunTest, TheNextRunClearsTheMessages)
{
    agent->SetOutcomes(1, {kAgentFailure, S_OK});
    ASSERT_EQ(S_OK, Start());
    EXPECT_EQ(kAgentFailure, Run(L"1@{aaa}"));
    EXPECT_EQ(S_OK, Run(L"1@{aaa}"));
    const CResultData data = ResultData(L"1@{aaa}");
    EXPECT_EQ(2u, data.TestState);
    EXPECT_EQ(0u, data.MessageCount);
    EXPECT_TRUE(data.StringIDs.empty());
}

TEST_F(OrdinaryRunTest, ARunInProgressShowsSo)
{
    ASSERT_EQ(S_OK, Start());
    agent->BlockRuns();
    std::thread client([&] { EXPECT_EQ(S_OK, Run(L"1@{aaa}")); });
    WaitForSingleObject(agent->Blocked(), INFINITE);
    EXPECT_EQ(1u, TestData(L"1@{aaa}").Locked);
    const CResultData data = ResultData(L"1@{aaa}");
    EXPECT_EQ(4u, data.TestState);
    EXPECT_EQ(0, data.PercentComplete);
    EXPECT_TRUE(data.TestStartTime);
    EXPECT_FALSE(data.TestCompletionTime);
    agent->EndRuns();
    client.join();
    EXPECT_EQ(0u, TestData(L"1@{aaa}").Locked);
    EXPECT_EQ(2u, ResultData(L"1@{aaa}").TestState);
}

TEST_F(OrdinaryRunTest, ASecondRunHasNoCompletionTimeUntilItEnds)
{
    ASSERT_EQ(S_OK, Start());
    ASSERT_EQ(S_OK, Run(L"1@{aaa}"));
    agent->BlockRuns();
    std::thread client([&] { EXPECT_EQ(S_OK, Run(L"1@{aaa}")); });
    WaitForSingleObject(agent->Blocked(), INFINITE);
    EXPECT_FALSE(ResultData(L"1@{aaa}").TestCompletionTime);
    agent->EndRuns();
    client.join();
    EXPECT_TRUE(ResultData(L"1@{aaa}").TestCompletionTime);
}

// An agent can say by its outcome that the test was stopped.
TEST_F(OrdinaryRunTest, AStoppedRunShowsHowFarItCame)
{
    agent->SetOutcomes(1, {engine::Stopped});
    ASSERT_EQ(S_OK, Start());
    agent->BlockRuns();
    std::thread client([&] { EXPECT_EQ(S_OK, Run(L"1@{aaa}")); });
    WaitForSingleObject(agent->Blocked(), INFINITE);
    environment.SetClock(42999);
    EXPECT_EQ(S_OK, manager->StopTest(CBstr(L"1@{aaa}").Get()));
    client.join();
    const CResultData data = ResultData(L"1@{aaa}");
    EXPECT_EQ(5u, data.TestState);
    EXPECT_EQ(42, data.PercentComplete); // 42 whole seconds of the default 100
    EXPECT_TRUE(data.TestCompletionTime);
}

struct Percent
{
    const char* name;
    DWORD timeout;
    ULONGLONG elapsed;
    BYTE percent;
};

class StoppedPercentTest : public CEngineTest, public testing::WithParamInterface<Percent>
{
};

TEST_P(StoppedPercentTest, IsWholeSecondsOfTheTimeOut)
{
    agent->AddAdapter(L"{aaa}", {1});
    agent->SetOutcomes(1, {engine::Stopped});
    registry.SetNumber(kDiagKey, "TimeoutSndRsp", GetParam().timeout);
    ASSERT_EQ(S_OK, Start());
    agent->BlockRuns();
    std::thread client([&] { EXPECT_EQ(S_OK, Run(L"1@{aaa}")); });
    WaitForSingleObject(agent->Blocked(), INFINITE);
    environment.SetClock(GetParam().elapsed);
    agent->EndRuns();
    client.join();
    EXPECT_EQ(GetParam().percent, ResultData(L"1@{aaa}").PercentComplete);
}

const Percent kPercents[] = {
    {"AtOnce", 100, 0, 0},          {"SecondsAreCutFirst", 3, 1999, 33},
    {"PastTheEnd", 10, 12000, 120}, {"MoreThanTheByteHolds", 1, 60000, 255},
    {"NoTimeOut", 0, 5000, 0},      {"Weeks", 1, 4000000000ull, 255},
};
INSTANTIATE_TEST_SUITE_P(Elapsed, StoppedPercentTest, testing::ValuesIn(kPercents), NameOf<Percent>);

TEST_F(OrdinaryRunTest, TimingThatNoOrdinaryRunUsesDoesNotRefuseIt)
{
    registry.SetNumber(kDiagKey, "TimeoutSndRsp", 0);
    registry.SetNumber(kDiagKey, "CheckTime", 0);
    ASSERT_EQ(S_OK, Start());
    EXPECT_EQ(S_OK, Run(L"1@{aaa}"));
}

TEST_F(OrdinaryRunTest, KeysAreFoldedAndTheResultKeyComesBackSo)
{
    ASSERT_EQ(S_OK, Start());
    CBstr resultKey(L"2@{aaa}");
    EXPECT_EQ(S_OK, manager->RunTest(CBstr(L"1@{aAa}").Get(), resultKey, 0));
    EXPECT_STREQ(L"2@{AAA}", resultKey.Text());
    EXPECT_EQ((std::vector<std::wstring>{L"2@{AAA}"}), Results());
}

TEST_F(OrdinaryRunTest, EmptyAndUnknownKeysAreRefused)
{
    ASSERT_EQ(S_OK, Start());
    CBstr empty;
    CBstr known(L"1@{aaa}");
    EXPECT_EQ(E_INVALIDARG, manager->RunTest(nullptr, known, 0));
    EXPECT_EQ(E_INVALIDARG, manager->RunTest(CBstr(L"").Get(), known, 0));
    EXPECT_EQ(E_INVALIDARG, manager->RunTest(known.Get(), empty, 0));
    EXPECT_EQ(engine::NotFound, manager->RunTest(CBstr(L"3@{aaa}").Get(), known, 0));
    EXPECT_TRUE(trace.Has("CDiagMgr::RunTest:GetObj for DiagTest failed, hr = <80042005>"));
    EXPECT_EQ(0, agent->Count(Method::RunDiagTest));
    EXPECT_TRUE(Results().empty());
}

TEST_F(OrdinaryRunTest, LockingALockedTestAndUnlockingAnUnlockedOne)
{
    ASSERT_EQ(S_OK, Start());
    const CBstr key(L"1@{aaa}");
    EXPECT_EQ(engine::NotLocked, manager->UnlockTest(key.Get()));
    EXPECT_EQ(S_OK, manager->LockTest(key.Get()));
    EXPECT_EQ(engine::AlreadyLocked, manager->LockTest(CBstr(L"1@{AAA}").Get()));
    EXPECT_EQ(S_OK, manager->LockTest(CBstr(L"2@{aaa}").Get())); // each test has its own lock
    EXPECT_EQ(S_OK, manager->UnlockTest(key.Get()));
    EXPECT_EQ(engine::NotLocked, manager->UnlockTest(key.Get()));
}

TEST_F(OrdinaryRunTest, OneOfManyConcurrentLockersWins)
{
    ASSERT_EQ(S_OK, Start());
    for (int round = 0; round < 50; ++round)
    {
        std::atomic<int> won{0};
        std::atomic<int> refused{0};
        std::vector<std::thread> clients;
        for (int i = 0; i < 4; ++i)
            clients.emplace_back(
                [&]
                {
                    const HRESULT hr = manager->LockTest(CBstr(L"1@{aaa}").Get());
                    ++(hr == S_OK ? won : refused);
                });
        for (std::thread& client : clients)
            client.join();
        EXPECT_EQ(1, won);
        EXPECT_EQ(3, refused);
        EXPECT_EQ(S_OK, manager->UnlockTest(CBstr(L"1@{aaa}").Get()));
    }
}

TEST_F(OrdinaryRunTest, StoppingATestThatIsNotLockedDoesNotCallTheAgent)
{
    ASSERT_EQ(S_OK, Start());
    EXPECT_EQ(engine::Stopped, manager->StopTest(CBstr(L"1@{aaa}").Get()));
    EXPECT_EQ(0, agent->Count(Method::StopTest));
}

TEST_F(OrdinaryRunTest, StoppingALockedTestAsksTheAgent)
{
    ASSERT_EQ(S_OK, Start());
    const CBstr key(L"1@{aaa}");
    ASSERT_EQ(S_OK, manager->LockTest(key.Get()));
    EXPECT_EQ(S_OK, manager->StopTest(key.Get()));
    // The agent hears the key in the form in which it heard of the run.
    EXPECT_EQ(L"{AAA}", agent->Calls().back().AdapterKey);
    EXPECT_EQ(1u, agent->Calls().back().TestID);
    agent->Fail(Method::StopTest, 1, kAgentFailure);
    EXPECT_EQ(kAgentFailure, manager->StopTest(key.Get()));
    EXPECT_TRUE(trace.Has("CDiagTest::StopTest failed, hr = <80040123>"));
    agent->Throw(Method::StopTest, 1);
    EXPECT_EQ(E_UNEXPECTED, manager->StopTest(key.Get()));
}

TEST_F(OrdinaryRunTest, StoppingNothingOrTheUnknown)
{
    ASSERT_EQ(S_OK, Start());
    EXPECT_EQ(E_INVALIDARG, manager->StopTest(nullptr));
    EXPECT_EQ(E_INVALIDARG, manager->StopTest(CBstr(L"").Get()));
    EXPECT_EQ(engine::NotFound, manager->StopTest(CBstr(L"3@{aaa}").Get()));
    EXPECT_TRUE(trace.Has("CDiagMgr::StopTest:GetObj failed, hr = <80042005>"));
}

TEST_F(OrdinaryRunTest, ResultsOfEveryStateSurviveARestart)
{
    agent->AddAdapter(L"{bbb}", {1, 2});
    agent->SetOutcomes(2, {kAgentFailure, engine::Stopped});
    ASSERT_EQ(S_OK, Start());
    EXPECT_EQ(S_OK, Run(L"1@{aaa}"));
    EXPECT_EQ(kAgentFailure, Run(L"2@{aaa}"));
    EXPECT_EQ(S_OK, Run(L"2@{bbb}"));
    std::vector<CResultData> before;
    for (const std::wstring& key : Results())
        before.push_back(ResultData(key.c_str()));
    ASSERT_EQ(S_OK, Restart());
    const std::vector<std::wstring> keys = Results();
    ASSERT_EQ(before.size(), keys.size());
    for (size_t i = 0; i < keys.size(); ++i)
    {
        const CResultData after = ResultData(keys[i].c_str());
        EXPECT_EQ(before[i].TestState, after.TestState);
        EXPECT_EQ(before[i].StringIDs, after.StringIDs);
        EXPECT_EQ(before[i].TestMessages, after.TestMessages);
        EXPECT_EQ(before[i].PercentComplete, after.PercentComplete);
        EXPECT_EQ(before[i].TestCompletionTime->wSecond, after.TestCompletionTime->wSecond);
    }
}

// A result can be filed under a key that is no test's. It cannot be stored, and ends the storing there.
struct OddResult
{
    const char* name;
    const wchar_t* key;
    const char* trace;
};

class OddResultTest : public CEngineTest, public testing::WithParamInterface<OddResult>
{
};

TEST_P(OddResultTest, IsNotStoredButThoseBeforeItAre)
{
    agent->AddAdapter(L"{aaa}", {1, 0xFF});
    ASSERT_EQ(S_OK, Start());
    ASSERT_EQ(S_OK, Run(L"1@{aaa}"));
    ASSERT_EQ(S_OK, Run(L"FF@{aaa}"));
    CBstr odd(GetParam().key);
    ASSERT_EQ(S_OK, manager->RunTest(CBstr(L"1@{aaa}").Get(), odd, 0));
    manager.reset();
    EXPECT_TRUE(trace.Has(GetParam().trace));
    EXPECT_TRUE(trace.Has("CDiagMgr::~CDiagMgr:StoreResults failed, hr = <80041006>"));
    ASSERT_EQ(S_OK, Start());
    EXPECT_EQ((std::vector<std::wstring>{L"1@{AAA}"}), Results());
}

const OddResult kOddResults[] = {
    {"WithoutSeparator", L"cable", "CDiagMgr::StoreResults:ParseForTestName failed"},
    {"OfAnUnknownAdapter", L"1@{bbb}", "CDiagMgr::StoreResults:GetIndexFromMap failed"},
};
INSTANTIATE_TEST_SUITE_P(Keys, OddResultTest, testing::ValuesIn(kOddResults), NameOf<OddResult>);
} // namespace
