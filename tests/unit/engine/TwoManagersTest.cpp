// Two managers of one process on one store file: the management service may make a new provider object while
// the old one still writes its results.
#include "tests/support/FaultStore.h"
#include "tests/unit/engine/EngineFixture.h"

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
