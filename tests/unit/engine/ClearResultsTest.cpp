#include "CDM/src/engine/results/store/StoreSession.h"
#include "tests/support/CaseName.h"
#include "tests/support/FaultStore.h"
#include "tests/unit/engine/EngineFixture.h"

#include <thread>

namespace
{
class ClearResultsTest : public CEngineTest
{
  protected:
    ClearResultsTest() { agent->AddAdapter(L"{aaa}", {1, 10}); }

    HRESULT Clear(const wchar_t* key) { return manager->ClearResults(CBstr(key).Get()); }
    bool IsStored(const wchar_t* id)
    {
        ComPtr<IStorage> root;
        ComPtr<IStorage> sub;
        constexpr DWORD kMode = STGM_READWRITE | STGM_SHARE_EXCLUSIVE;
        return SUCCEEDED(
                   StgOpenStorage(paths.ResultStorePath.c_str(), nullptr, kMode, nullptr, 0, root.Put())) &&
               SUCCEEDED(root->OpenStorage(id, nullptr, kMode, nullptr, 0, sub.Put()));
    }
};

TEST_F(ClearResultsTest, ClearsMemoryAndStore)
{
    ASSERT_EQ(S_OK, Start());
    ASSERT_EQ(S_OK, Run(L"A@{aaa}"));
    ASSERT_EQ(S_OK, Run(L"1@{aaa}"));
    ASSERT_EQ(S_OK, Restart());
    ASSERT_TRUE(IsStored(L"A@0"));
    EXPECT_EQ(S_OK, Clear(L"a@{aaa}"));
    EXPECT_EQ((std::vector<std::wstring>{L"1@{AAA}"}), Results());
    CResultData data;
    EXPECT_EQ(engine::NotFound, manager->GetResultData(CBstr(L"A@{aaa}").Get(), &data));
    EXPECT_FALSE(IsStored(L"A@0"));
    EXPECT_TRUE(IsStored(L"1@0"));
    EXPECT_FALSE(std::filesystem::exists(paths.ResultStorePath + L".new"));
    ASSERT_EQ(S_OK, Restart());
    EXPECT_EQ((std::vector<std::wstring>{L"1@{AAA}"}), Results());
    // It is there again after the next run.
    EXPECT_EQ(S_OK, Run(L"A@{aaa}"));
    EXPECT_EQ(S_OK, manager->GetResultData(CBstr(L"A@{aaa}").Get(), &data));
}

TEST_F(ClearResultsTest, ClearingTwiceFindsNothing)
{
    ASSERT_EQ(S_OK, Start());
    ASSERT_EQ(S_OK, Run(L"1@{aaa}"));
    EXPECT_EQ(S_OK, Clear(L"1@{aaa}"));
    EXPECT_EQ(wmi::NotFound, Clear(L"1@{aaa}"));
    EXPECT_TRUE(trace.Has("CDiagMgr::ClearResults:Object not found"));
}

TEST_F(ClearResultsTest, WithoutAStoreFileAnEmptyOneIsLeft)
{
    ASSERT_EQ(S_OK, Start());
    ASSERT_EQ(S_OK, Run(L"1@{aaa}"));
    EXPECT_EQ(S_OK, Clear(L"1@{aaa}"));
    EXPECT_EQ(S_OK, PlatformStoreFiles().IsStorageFile(paths.ResultStorePath.c_str()));
    EXPECT_FALSE(IsStored(L"1@0"));
}

TEST_F(ClearResultsTest, TheResultOfARunningTestStays)
{
    ASSERT_EQ(S_OK, Start());
    ASSERT_EQ(S_OK, Run(L"1@{aaa}"));
    ASSERT_EQ(S_OK, Restart());
    ASSERT_EQ(S_OK, manager->LockTest(CBstr(L"1@{aaa}").Get()));
    EXPECT_EQ(engine::ClearWhileRunning, Clear(L"1@{aaa}"));
    EXPECT_EQ(1u, Results().size());
    EXPECT_TRUE(IsStored(L"1@0"));
    ASSERT_EQ(S_OK, manager->UnlockTest(CBstr(L"1@{aaa}").Get()));
    EXPECT_EQ(S_OK, Clear(L"1@{aaa}"));
}

struct BadClear
{
    const char* name;
    const wchar_t* key;
    HRESULT result;
    const char* trace;
};

class BadClearTest : public CEngineTest, public testing::WithParamInterface<BadClear>
{
};

TEST_P(BadClearTest, IsTracedAndChangesNothing)
{
    agent->AddAdapter(L"{aaa}", {1, 10});
    ASSERT_EQ(S_OK, Start());
    ASSERT_EQ(S_OK, Run(L"1@{aaa}"));
    EXPECT_EQ(GetParam().result, manager->ClearResults(CBstr(GetParam().key).Get()));
    EXPECT_TRUE(trace.Has(GetParam().trace));
    EXPECT_EQ(1u, Results().size());
    EXPECT_FALSE(std::filesystem::exists(paths.ResultStorePath));
}

const std::wstring kLongKey = L"1@" + std::wstring(10000, L'k');
const BadClear kBadClears[] = {
    {"Null", nullptr, wmi::OutOfMemory, "CDiagMgr::ClearResults:ParseForTestName failed"},
    {"NoSeparator", L"Cable", wmi::OutOfMemory, "CDiagMgr::ClearResults:ParseForTestName failed"},
    {"UnknownTest", L"2@{aaa}", engine::NotFound, "CDiagMgr::ClearResults:GetObj failed, hr = <80042005>"},
    {"UnknownAdapter", L"1@b", engine::NotFound, "CDiagMgr::ClearResults:GetObj failed, hr = <80042005>"},
    {"Long", kLongKey.c_str(), engine::NotFound, "CDiagMgr::ClearResults:GetObj failed, hr = <80042005>"},
    {"NoResult", L"A@{aaa}", wmi::NotFound, "CDiagMgr::ClearResults:Object not found"},
};
INSTANTIATE_TEST_SUITE_P(Keys, BadClearTest, testing::ValuesIn(kBadClears), NameOf<BadClear>);

// The store refuses one call of the removal: the result is gone from memory, the others stay stored.
TEST_F(ClearResultsTest, ARefusedStoreCallIsTracedAndReturned)
{
    CFaultStore fault;
    store = &fault;
    ASSERT_EQ(S_OK, Start());
    ASSERT_EQ(S_OK, Run(L"1@{aaa}"));
    ASSERT_EQ(S_OK, Run(L"A@{aaa}"));
    ASSERT_EQ(S_OK, Restart());
    fault.FailCall(0, S_OK);
    ASSERT_EQ(S_OK, Clear(L"A@{aaa}"));
    const size_t calls = fault.Calls().size();
    for (size_t n = 1; n <= calls; ++n)
    {
        const CTraceCapture own;
        ASSERT_EQ(S_OK, Run(L"A@{aaa}"));
        fault.FailCall(0, S_OK);
        ASSERT_EQ(S_OK, Restart());
        const long live = g_liveComObjects;
        fault.FailCall(static_cast<int>(n), E_ACCESSDENIED);
        const HRESULT hr = Clear(L"A@{aaa}");
        ASSERT_TRUE(fault.Failed()) << n;
        EXPECT_EQ(E_ACCESSDENIED, hr) << n;
        EXPECT_TRUE(own.Has("CDiagMgr::ClearResults:RemoveObj failed, hr = <80070005>")) << n;
        EXPECT_EQ(live, g_liveComObjects);
        EXPECT_EQ((std::vector<std::wstring>{L"1@{AAA}"}), Results());
        EXPECT_TRUE(IsStored(L"1@0")) << n;
        fault.FailCall(0, S_OK);
    }
    manager.reset(); // before the store that it was given
    store = nullptr;
}

TEST_F(ClearResultsTest, TwoClientsClearAtOnce)
{
    agent->AddAdapter(L"{bbb}", {1, 2, 3, 4, 5, 6, 7, 8});
    ASSERT_EQ(S_OK, Start());
    for (const std::wstring& key : Tests())
        ASSERT_EQ(S_OK, Run(key.c_str()));
    ASSERT_EQ(S_OK, Restart());
    std::vector<std::thread> clients;
    std::atomic<int> cleared{0};
    for (int i = 0; i < 2; ++i)
        clients.emplace_back(
            [&, i]
            {
                for (int n = 1 + i; n <= 8; n += 2)
                    if (Clear((std::to_wstring(n) + L"@{bbb}").c_str()) == S_OK)
                        ++cleared;
            });
    for (std::thread& client : clients)
        client.join();
    EXPECT_EQ(8, cleared);
    ASSERT_EQ(S_OK, Restart());
    EXPECT_EQ((std::vector<std::wstring>{L"1@{AAA}", L"A@{AAA}"}), Results());
}
} // namespace
