// What becomes of runs that are going on when the manager goes, and of requests that come at the same time.
#include "CDM/src/engine/DiagAgent.h"
#include "tests/unit/engine/EngineFixture.h"

#include <thread>

namespace
{
using Method = CFakeAgent::Method;

class ManagerEndTest : public CEngineTest
{
  protected:
    ManagerEndTest()
    {
        agent->AddAdapter(L"{aaa}", {1, 9});
        agent->BlockRuns();
    }

    // A client whose request is still being served; its answer goes to nobody.
    std::thread StartRun(const wchar_t* key, HRESULT& result)
    {
        CDiagMgr* const served = manager.get();
        EXPECT_EQ(S_OK, served->LockTest(CBstr(key).Get()));
        std::thread client(
            [=, &result]
            {
                CBstr resultKey(key);
                result = served->RunTest(CBstr(key).Get(), resultKey, 0);
            });
        WaitForSingleObject(agent->Blocked(), INFINITE);
        return client;
    }
    // When only the test holds the agent: every thread that was in it has come back.
    void WaitUntilTheAgentIsFree()
    {
        while (agent->AddRef() > 2)
        {
            agent->Release();
            SwitchToThread();
        }
        agent->Release();
    }
    // With the system's clock and waits.
    HRESULT StartReal()
    {
        const CVormAgentMgr agents(agent.Get());
        manager = std::make_unique<CDiagMgr>(paths);
        return manager->Initialize(&agents);
    }
};

TEST_F(ManagerEndTest, AnOrdinaryRunIsStoppedThroughTheAgentAndStored)
{
    agent->SetOutcomes(1, {engine::Stopped});
    ASSERT_EQ(S_OK, StartReal());
    HRESULT result = E_PENDING;
    std::thread client = StartRun(L"1@{aaa}", result);
    manager.reset();
    client.join();
    EXPECT_EQ(S_OK, result);
    ASSERT_EQ(S_OK, Start());
    EXPECT_EQ(5u, ResultData(L"1@{aaa}").TestState);
}

TEST_F(ManagerEndTest, ASenderResponderRunIsStoppedByItsEventAndStored)
{
    ASSERT_EQ(S_OK, StartReal());
    HRESULT result = E_PENDING;
    std::thread client = StartRun(L"9@{aaa}", result);
    manager.reset();
    client.join();
    EXPECT_EQ(S_OK, result);
    ASSERT_EQ(S_OK, Start());
    EXPECT_EQ(5u, ResultData(L"9@{aaa}").TestState);
    EXPECT_EQ(static_cast<DWORD>(WAIT_TIMEOUT), WaitForSingleObject(TestData(L"9@{aaa}").Event, 0));
}

TEST_F(ManagerEndTest, BothAtOnce)
{
    ASSERT_EQ(S_OK, StartReal());
    HRESULT ordinary = E_PENDING;
    HRESULT paired = E_PENDING;
    std::thread first = StartRun(L"9@{aaa}", paired);
    ResetEvent(agent->Blocked());
    std::thread second = StartRun(L"1@{aaa}", ordinary);
    manager.reset();
    first.join();
    second.join();
    EXPECT_EQ(S_OK, ordinary);
    EXPECT_EQ(S_OK, paired);
    ASSERT_EQ(S_OK, Start());
    EXPECT_EQ(2u, Results().size());
}

TEST_F(ManagerEndTest, ARunThatTheAgentDoesNotEndIsLeftAlone)
{
    environment.DoNotWait();
    agent->SetStopEndsRuns(false);
    ASSERT_EQ(S_OK, Start());
    const long live = g_liveComObjects;
    HRESULT result = E_PENDING;
    std::thread client = StartRun(L"1@{aaa}", result);
    manager.reset();
    EXPECT_TRUE(trace.Has("CDiagMgr::~CDiagMgr: a run could not be ended"));
    // It goes on with what it has, and ends.
    agent->EndRuns();
    client.join();
    EXPECT_EQ(S_OK, result);
    WaitUntilTheAgentIsFree();
    EXPECT_GE(agent->Count(Method::StopTest), 1);
    EXPECT_EQ(live, g_liveComObjects);
}

TEST_F(ManagerEndTest, AnAgentThatDoesNotComeBackFromAStopIsLeftAlone)
{
    environment.DoNotWait();
    agent->BlockStops();
    ASSERT_EQ(S_OK, Start());
    HRESULT result = E_PENDING;
    std::thread client = StartRun(L"1@{aaa}", result);
    manager.reset();
    EXPECT_TRUE(trace.Has("CDiagMgr::~CDiagMgr: a run could not be ended"));
    EXPECT_LE(agent->Count(Method::StopTest), 1) << "a call on its way is not repeated";
    EXPECT_GT(CDiagAgent::Living(), 0) << "the agent is in use";
    agent->LetStopsGo();
    agent->EndRuns();
    client.join();
    WaitUntilTheAgentIsFree();
    EXPECT_EQ(0, CDiagAgent::Living());
}

// Where the run has ended without its worker.
TEST_F(ManagerEndTest, AWorkerThatIsLeftInTheAgentIsStopped)
{
    ASSERT_EQ(S_OK, Start());
    environment.Script({CFakeRunEnvironment::Wake::Failed});
    agent->Fail(Method::StopTest, 1, E_FAIL);
    ASSERT_EQ(E_FAIL, Run(L"9@{aaa}"));
    WaitForSingleObject(agent->Blocked(), INFINITE);
    ASSERT_EQ(1, agent->Count(Method::StopTest));
    manager.reset();
    EXPECT_EQ(2, agent->Count(Method::StopTest));
    EXPECT_FALSE(trace.Has("CDiagMgr::~CDiagMgr: a run could not be ended"));
    EXPECT_EQ(static_cast<DWORD>(WAIT_TIMEOUT), WaitForSingleObject(agent->Blocked(), 0))
        << "nobody is in the agent";
}

TEST_F(ManagerEndTest, AWorkerThatTheAgentKeepsHoldsTheAgent)
{
    ASSERT_EQ(S_OK, Start());
    environment.Script({CFakeRunEnvironment::Wake::Failed});
    environment.DoNotWait();
    agent->SetStopEndsRuns(false);
    ASSERT_EQ(E_FAIL, Run(L"9@{aaa}"));
    WaitForSingleObject(agent->Blocked(), INFINITE);
    manager.reset();
    EXPECT_TRUE(trace.Has("CDiagMgr::~CDiagMgr: a run could not be ended"));
    EXPECT_GT(CDiagAgent::Living(), 0);
    agent->EndRuns();
    WaitUntilTheAgentIsFree();
    EXPECT_EQ(0, CDiagAgent::Living());
}

// Many clients do everything at once: nothing crashes, no answer is other than the described ones, and what
// is read is consistent.
TEST(ManagerConcurrencyTest, EverythingAtOnce)
{
    CRegistryScope registry;
    CTempFolder folder;
    CHostPaths paths{folder.Path().string() + "\\", (folder.Path() / L"ZebDiag.bin").wstring()};
    registry.SetNumber(kDiagKey, "Enable", 1);
    registry.SetNumber(kDiagKey, "FileAppend", 0);
    registry.SetNumber(kDiagKey, "TimeoutSndRsp", 1);
    const auto agent = MakeCom<CFakeAgent>();
    agent->AddAdapter(L"{aaa}", {1, 2, 3});
    agent->SetOutcomes(2, {S_OK, E_FAIL, engine::Stopped});
    const CVormAgentMgr agents(agent.Get());
    CDiagMgr manager(paths);
    ASSERT_EQ(S_OK, manager.Initialize(&agents));

    constexpr int kRounds = 150;
    std::atomic<int> wrong{0};
    const auto check = [&](bool right)
    {
        if (!right)
            ++wrong;
    };
    const auto key = [](int round) { return CBstr((std::to_wstring(1 + round % 3) + L"@{aaa}").c_str()); };
    std::vector<std::thread> clients;
    for (int c = 0; c < 3; ++c)
        clients.emplace_back([&, c] { // runs
            for (int i = 0; i < kRounds; ++i)
            {
                const CBstr testKey = key(i + c);
                CBstr resultKey = testKey;
                const HRESULT locked = manager.LockTest(testKey.Get());
                check(locked == S_OK || locked == engine::AlreadyLocked);
                if (locked != S_OK)
                    continue;
                const HRESULT run = manager.RunTest(testKey.Get(), resultKey, 1);
                check(run == S_OK || run == E_FAIL);
                check(manager.UnlockTest(testKey.Get()) == S_OK);
            }
        });
    clients.emplace_back([&] { // reads
        for (int i = 0; i < kRounds * 4; ++i)
        {
            CVormArray<BSTR> keys;
            check(manager.EnumResults(keys) == S_OK);
            for (const BSTR result : keys.View())
            {
                CResultData data;
                const HRESULT hr = manager.GetResultData(result, &data);
                check(hr == S_OK || hr == engine::NotFound);
                check(data.MessageCount == data.StringIDs.size() &&
                      data.MessageCount == data.TestMessages.size() && data.TestState <= 5);
            }
        }
    });
    clients.emplace_back([&] { // clears
        for (int i = 0; i < kRounds / 3; ++i)
        {
            const HRESULT hr = manager.ClearResults(key(i).Get());
            check(hr == S_OK || hr == wmi::NotFound || hr == engine::ClearWhileRunning ||
                  hr == engine::NotFound);
        }
    });
    clients.emplace_back([&] { // stops and looks
        for (int i = 0; i < kRounds * 2; ++i)
        {
            const HRESULT hr = manager.StopTest(key(i).Get());
            check(hr == S_OK || hr == engine::Stopped);
            CTestData data;
            check(manager.GetTestData(key(i).Get(), &data) == S_OK && data.Locked <= 1);
            CSettingData setting;
            check(manager.GetSettingData(key(i).Get(), &setting) == S_OK);
        }
    });
    for (std::thread& client : clients)
        client.join();
    EXPECT_EQ(0, wrong);
}
} // namespace
