// Two managers of one process on one store file: the management service may make a new provider object while
// the old one still writes its results.
#include "tests/support/FaultStore.h"
#include "tests/unit/engine/EngineFixture.h"

#include <filesystem>
#include <optional>
#include <thread>

namespace
{
class TwoManagersTest : public CEngineTest
{
  protected:
    // Starts a manager on an agent with one adapter while `manager` ends: the new one has begun to look into
    // the file, and holds the store, when the old one's first result is to be stored.
    void StartWhileTheOtherEnds(CFakeAgent& newAgent)
    {
        const CTraceCapture own;
        std::thread ending;
        CFaultStore files;
        files.OnCall(
            [&]
            {
                if (ending.joinable())
                    return;
                ending = std::thread([&] { manager.reset(); });
                while (!own.Has("{ --> CResultsStore::StoreResult"))
                    SwitchToThread();
            });
        const CVormAgentMgr agents(&newAgent);
        CDiagMgr starting(paths, CEngineSeams{&environment, &files});
        EXPECT_EQ(S_OK, starting.Initialize(&agents));
        ASSERT_TRUE(ending.joinable());
        ending.join();
        CVormArray<BSTR> loaded;
        EXPECT_EQ(S_OK, starting.EnumResults(loaded));
        EXPECT_EQ(0u, loaded.Count());
        EXPECT_TRUE(own.Has("CDiagMgr::LoadResult:LoadResult failed, hr = <80041001>"));
    }

    static ComPtr<CFakeAgent> AgentOf(const wchar_t* adapter)
    {
        auto made = MakeCom<CFakeAgent>();
        made->AddAdapter(adapter, {1, 2});
        return made;
    }
};

TEST_F(TwoManagersTest, OneEndsWhileAnotherFindsItsAdapterReplaced)
{
    agent = AgentOf(L"{aaa}");
    ASSERT_EQ(S_OK, Start());
    ASSERT_EQ(S_OK, Run(L"1@{aaa}"));
    ASSERT_EQ(S_OK, Restart());
    ASSERT_EQ(S_OK, Run(L"2@{aaa}"));
    const auto other = MakeCom<CFakeAgent>();
    other->AddAdapter(L"{bbb}", {1});
    StartWhileTheOtherEnds(*other.Get());
    // The new one has removed what it found of another adapter; the rest is stored.
    ASSERT_EQ(S_OK, Start());
    EXPECT_EQ((std::vector<std::wstring>{L"2@{AAA}"}), Results());
}

TEST_F(TwoManagersTest, AResultThatWasStoredMeanwhileIsNotTakenForTheStaleOne)
{
    agent = AgentOf(L"{aaa}");
    ASSERT_EQ(S_OK, Start());
    ASSERT_EQ(S_OK, Run(L"1@{aaa}"));
    manager.reset();
    const std::wstring aside = (folder.Path() / L"aside.bin").wstring();
    ASSERT_TRUE(CopyFileW(paths.ResultStorePath.c_str(), aside.c_str(), FALSE));

    agent = AgentOf(L"{bbb}");
    ASSERT_EQ(S_OK, Start());
    ASSERT_EQ(S_OK, Run(L"1@{bbb}"));
    ASSERT_TRUE(CopyFileW(aside.c_str(), paths.ResultStorePath.c_str(), FALSE));
    StartWhileTheOtherEnds(*agent.Get());
    ASSERT_EQ(S_OK, Start());
    EXPECT_EQ((std::vector<std::wstring>{L"1@{BBB}"}), Results());
}

// What a client has seen must not be replaced by something older.
class OverlapTest : public CEngineTest
{
  protected:
    static constexpr wchar_t kTest[] = L"1@{AAA}";

    OverlapTest()
    {
        agent->AddAdapter(L"{aaa}", {1});
        agent->SetOutcomes(1, {S_OK, E_FAIL, engine::Stopped});
    }
    // A second manager, which loads what the file holds now.
    std::unique_ptr<CDiagMgr> StartAnother()
    {
        auto another = std::make_unique<CDiagMgr>(paths, CEngineSeams{&environment, nullptr});
        const CVormAgentMgr agents(agent.Get());
        EXPECT_EQ(S_OK, another->Initialize(&agents));
        return another;
    }
    void RunIn(CDiagMgr& other)
    {
        CBstr resultKey(kTest);
        EXPECT_EQ(S_OK, other.LockTest(CBstr(kTest).Get()));
        (void)other.RunTest(CBstr(kTest).Get(), resultKey, 0);
        EXPECT_EQ(S_OK, other.UnlockTest(CBstr(kTest).Get()));
    }
    ULONG StoredState()
    {
        EXPECT_EQ(S_OK, Restart());
        return ResultData(kTest).TestState;
    }
};

TEST_F(OverlapTest, OneThatHasRunNothingDoesNotReplaceTheOthersNewerResult)
{
    ASSERT_EQ(S_OK, Start());
    ASSERT_EQ(S_OK, Run(kTest));
    ASSERT_EQ(S_OK, Restart());
    std::unique_ptr<CDiagMgr> idle = StartAnother();
    ASSERT_EQ(E_FAIL, Run(kTest));
    manager.reset();
    idle.reset();
    EXPECT_EQ(TestStateFailed, StoredState());
}

TEST_F(OverlapTest, TheLaterOfTwoRunsStaysWhicheverManagerEndsLast)
{
    for (const bool laterEndsFirst : {true, false})
    {
        SCOPED_TRACE(laterEndsFirst);
        agent->SetOutcomes(1, {S_OK, E_FAIL});
        ASSERT_EQ(S_OK, Start());
        std::unique_ptr<CDiagMgr> earlier = StartAnother();
        RunIn(*earlier);
        ASSERT_EQ(E_FAIL, Run(kTest));
        (laterEndsFirst ? manager : earlier).reset();
        (laterEndsFirst ? earlier : manager).reset();
        EXPECT_EQ(TestStateFailed, StoredState());
    }
}

TEST_F(OverlapTest, AResultThatWasClearedDoesNotComeBack)
{
    for (const bool hasRun : {false, true})
    {
        SCOPED_TRACE(hasRun);
        agent->SetOutcomes(1, {S_OK});
        ASSERT_EQ(S_OK, Start());
        ASSERT_EQ(S_OK, Run(kTest));
        ASSERT_EQ(S_OK, Restart());
        std::unique_ptr<CDiagMgr> other = StartAnother();
        if (hasRun)
            RunIn(*other);
        ASSERT_EQ(S_OK, manager->ClearResults(CBstr(kTest).Get()));
        manager.reset();
        other.reset();
        ASSERT_EQ(S_OK, Start());
        EXPECT_TRUE(Results().empty());
    }
}

TEST_F(OverlapTest, WhatWasLoadedIsStoredAgainWhereTheWholeFileIsLost)
{
    ASSERT_EQ(S_OK, Start());
    ASSERT_EQ(S_OK, Run(kTest));
    ASSERT_EQ(S_OK, Restart());
    ASSERT_TRUE(DeleteFileW(paths.ResultStorePath.c_str()));
    ASSERT_EQ(TestStatePassed, StoredState());
    {
        std::ofstream damaged(std::filesystem::path(paths.ResultStorePath), std::ios::trunc);
        damaged << "no storage";
    }
    EXPECT_EQ(TestStatePassed, StoredState());
}

// A start-up in the same moment must find the old file or the new one, and must not keep it from being
// replaced.
TEST_F(TwoManagersTest, TheFileIsReplacedUnderTheStoreLock)
{
    agent = AgentOf(L"{aaa}");
    CFaultStore files;
    store = &files;
    ASSERT_EQ(S_OK, Start());
    ASSERT_EQ(S_OK, Run(L"1@{aaa}"));
    const CTraceCapture own;
    std::optional<bool> held;
    files.OnCall(
        [&]
        {
            if (files.Calls().empty() || files.Calls().back() != "Commit")
                return;
            held = own.Count("Entered") > own.Count("Unlocking ");
        });
    manager.reset();
    EXPECT_EQ(true, held);
    EXPECT_EQ("WriteFile", files.Calls().back());
    store = nullptr;
}
} // namespace
