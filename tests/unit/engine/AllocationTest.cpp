// The n-th allocation of an operation fails, for every n: the operation ends in the out-of-memory status or,
// where the failure can be lived with, goes on; nothing leaks and the manager serves on.
#include "Common/src/com/ComObject.h"
#include "tests/support/Allocations.h"
#include "tests/unit/engine/EngineFixture.h"

#include <filesystem>
#include <optional>
#include <thread>

namespace
{
class AllocationTest : public CEngineTest
{
  protected:
    AllocationTest() { agent->AddAdapter(L"{aaa}", {1, 2, 9}); }

    // Runs `operation` with the first, second, ... allocation failing, until it gets by without a failure.
    // `before` puts things in place each time; `after` sees what has become of them.
    template <class Before, class Operation>
    void FailEach(Before&& before, Operation&& operation)
    {
        FailEach(before, operation, [](HRESULT) {});
    }
    template <class Before, class Operation, class After>
    void FailEach(Before&& before, Operation&& operation, After&& after)
    {
        int failures = 0;
        for (int n = 1; n < 5000; ++n)
        {
            before();
            const long live = g_liveComObjects;
            HRESULT hr = S_OK;
            {
                const CFailingAllocation failing(n);
                hr = operation();
            }
            // An agent that runs out of memory says so in its own way.
            EXPECT_TRUE(hr == S_OK || hr == wmi::OutOfMemory || hr == E_OUTOFMEMORY)
                << "allocation " << n << ": " << hr;
            EXPECT_EQ(live, g_liveComObjects) << n;
            after(hr);
            if (!CFailingAllocation::Failed())
            {
                EXPECT_EQ(S_OK, hr);
                EXPECT_GT(failures, 0);
                return;
            }
            failures += hr != S_OK;
        }
        ADD_FAILURE() << "the operation never got by";
    }
    const CBstr key{L"1@{aaa}"};
};

TEST_F(AllocationTest, OfAStart)
{
    const CVormAgentMgr agents(agent.Get());
    FailEach([&] { manager = std::make_unique<CDiagMgr>(paths); },
             [&]
             {
                 const HRESULT hr = manager->Initialize(&agents);
                 return hr == E_NOINTERFACE || hr == wmi::Failed ? wmi::OutOfMemory : hr;
             });
    EXPECT_EQ(3u, Tests().size());
    EXPECT_TRUE(trace.Has("CDiagMgr::Initialize:Could not create new DiagTestsMap object"));
    EXPECT_TRUE(trace.Has("CDiagMgr::Initialize:Could not create new DiagResultsMap object"));
    EXPECT_TRUE(trace.Has("CDiagMgr::Initialize:Could not create new DiagSettingsMap object"));
    EXPECT_TRUE(trace.Has("CDiagMgr::Initialize:Could not create new DiagTest object"));
    EXPECT_TRUE(trace.Has("CDiagMgr::Initialize:Could not create new DiagSetting object"));
    EXPECT_TRUE(trace.Has("CDiagMgr::Initialize:Could not create new DiagResult object"));
    EXPECT_TRUE(trace.Has("CDiagMgr::Initialize:AddObj for test failed, hr = <80041006>"));
    EXPECT_TRUE(trace.Has("CDiagMgr::Initialize:AddObj for setting failed, hr = <80041006>"));
}

TEST_F(AllocationTest, OfQueries)
{
    ASSERT_EQ(S_OK, Start());
    agent->SetOutcomes(1, {E_FAIL, S_OK});
    ASSERT_EQ(E_FAIL, Run(L"1@{aaa}"));
    const auto nothing = [] {};
    CTestData test;
    CResultData result;
    FailEach(nothing, [&] { return manager->GetTestData(key.Get(), &test); });
    FailEach(nothing, [&] { return manager->GetResultData(key.Get(), &result); });
    EXPECT_EQ(1u, test.TestID);
    EXPECT_EQ(2u, result.MessageCount);
    CVormArray<BSTR> keys;
    FailEach(nothing, [&] { return manager->EnumTests(keys); });
    EXPECT_EQ(3u, keys.Count());
}

TEST_F(AllocationTest, OfARun)
{
    registry.SetNumber(kDiagKey, "Enable", 1);
    ASSERT_EQ(S_OK, Start());
    ASSERT_EQ(S_OK, Run(L"2@{aaa}")); // what only a first run allocates is there
    int runs = 0;
    FailEach([&] { runs = agent->Count(CFakeAgent::Method::RunDiagTest); },
             [&]
             {
                 CBstr resultKey = key;
                 return manager->RunTest(key.Get(), resultKey, 0);
             },
             [&](HRESULT hr)
             {
                 // Once the agent has run the test, the outcome counts, whatever fails afterwards.
                 if (agent->Count(CFakeAgent::Method::RunDiagTest) == runs)
                     return;
                 const ULONG state = hr == S_OK ? TestStatePassed : TestStateFailed;
                 EXPECT_EQ(state, ResultData(L"1@{aaa}").TestState);
             });
    EXPECT_TRUE(trace.Has("CDiagMgr::RunTest:LogResults failed."));
    EXPECT_TRUE(trace.Has("CDiagMgr::RunTest:AddObj for Result failed, hr = <80041006>"));
    EXPECT_TRUE(trace.Has("CDiagMgr::RunTest:Cannot allocate memory for SettingData"));
    EXPECT_EQ(2u, ResultData(L"1@{aaa}").TestState);
}

TEST_F(AllocationTest, OfASenderResponderRun)
{
    agent->BlockRuns();
    ASSERT_EQ(S_OK, Start());
    FailEach([] {},
             [&]
             {
                 CBstr resultKey(L"9@{aaa}");
                 return manager->RunTest(CBstr(L"9@{aaa}").Get(), resultKey, 0);
             });
    EXPECT_EQ(2u, ResultData(L"9@{aaa}").TestState);
}

// A client clears the result while the test runs, which has not been locked.
TEST_F(AllocationTest, OfARunThatFilesItsResultAnew)
{
    agent->BlockRuns();
    ASSERT_EQ(S_OK, Start());
    environment.OnWait([&] { manager->ClearResults(CBstr(L"9@{aaa}").Get()); });
    int stops = 0;
    FailEach([&] { stops = agent->Count(CFakeAgent::Method::StopTest); },
             [&]
             {
                 CBstr resultKey(L"9@{aaa}");
                 return manager->RunTest(CBstr(L"9@{aaa}").Get(), resultKey, 0);
             },
             [&](HRESULT hr)
             {
                 // The agent has ended the test: whatever fails afterwards, the run has passed.
                 EXPECT_TRUE(hr == S_OK || agent->Count(CFakeAgent::Method::StopTest) == stops) << hr;
             });
    EXPECT_EQ(2u, ResultData(L"9@{aaa}").TestState);
}

TEST_F(AllocationTest, OfAClear)
{
    ASSERT_EQ(S_OK, Start());
    FailEach([&] { EXPECT_EQ(S_OK, Run(L"1@{aaa}")); },
             [&]
             {
                 const HRESULT hr = manager->ClearResults(key.Get());
                 return hr == wmi::NotFound ? wmi::OutOfMemory : hr;
             });
    EXPECT_TRUE(Results().empty());
}

TEST_F(AllocationTest, OfTheEnd)
{
    // What is not stored because memory ran out leaves what was stored before.
    ASSERT_EQ(S_OK, Start());
    ASSERT_EQ(S_OK, Run(L"1@{aaa}"));
    FailEach([&] { ASSERT_EQ(S_OK, Restart()); },
             [&]
             {
                 manager.reset();
                 return CFailingAllocation::Failed() ? wmi::OutOfMemory : S_OK;
             });
    ASSERT_EQ(S_OK, Start());
    EXPECT_EQ(1u, Results().size());
}

TEST_F(AllocationTest, OfTheEndWithSeveralResults)
{
    std::optional<CTraceCapture> own;
    int storedFirst = 0;
    FailEach(
        [&]
        {
            own.reset();
            std::filesystem::remove(paths.ResultStorePath);
            ASSERT_EQ(S_OK, Start());
            ASSERT_EQ(S_OK, Run(L"1@{aaa}"));
            ASSERT_EQ(S_OK, Run(L"2@{aaa}"));
            own.emplace();
        },
        [&]
        {
            manager.reset();
            return CFailingAllocation::Failed() ? wmi::OutOfMemory : S_OK;
        },
        [&](HRESULT)
        {
            if (own->Count("{ --> CResultsStore::StoreResult") < 2 ||
                !own->Has("CDiagMgr::StoreResults:StoreResult failed, hr = <80041006>"))
                return;
            ++storedFirst;
            ASSERT_EQ(S_OK, Start());
            EXPECT_EQ((std::vector<std::wstring>{L"1@{AAA}"}), Results());
        });
    EXPECT_GT(storedFirst, 0);
    EXPECT_TRUE(trace.Has("CDiagMgr::EnumResults:EnumObj failed, hr = <80041006>"));
    EXPECT_TRUE(trace.Has("CDiagMgr::StoreResults:EnumResults failed, hr = <80041006>"));
}

TEST_F(AllocationTest, OfTheEndOfARunThatIsGoingOn)
{
    agent->BlockRuns();
    ASSERT_EQ(S_OK, Start());
    CDiagMgr* const served = manager.get();
    HRESULT result = E_PENDING;
    std::thread client(
        [&]
        {
            CBstr resultKey = key;
            result = served->RunTest(key.Get(), resultKey, 0);
        });
    WaitForSingleObject(agent->Blocked(), INFINITE);
    {
        const CFailingAllocation failing(1);
        manager.reset();
        EXPECT_TRUE(CFailingAllocation::Failed());
    }
    EXPECT_EQ(1, agent->Count(CFakeAgent::Method::StopTest));
    agent->EndRuns();
    client.join();
    EXPECT_EQ(S_OK, result);
    EXPECT_FALSE(trace.Has("CDiagMgr::~CDiagMgr"));
    ASSERT_EQ(S_OK, Start());
    EXPECT_EQ(1u, Results().size());
}
} // namespace
