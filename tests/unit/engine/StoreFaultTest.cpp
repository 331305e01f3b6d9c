// What becomes of stored results when storing fails, or ends, at any of its calls.
#include "Common/src/com/ComObject.h"
#include "Common/src/com/Owned.h"
#include "tests/support/FaultStore.h"
#include "tests/unit/engine/StoreFixture.h"

#include <algorithm>
#include <functional>

namespace
{
class StoreFaultTest : public CStoreTest
{
  protected:
    StoreFaultTest()
    {
        EXPECT_EQ(S_OK, Store(*Old()));
        EXPECT_EQ(S_OK, Store(*SomeResult(L"1@K1"), L"1@0"));
        initial = FileBytes();
    }

    static std::unique_ptr<CDiagResult> Old() { return SomeResult(L"A@K1", TestStateFailed); }
    static std::unique_ptr<CDiagResult> New()
    {
        auto result = EmptyResult();
        result->SetTestState(TestStatePassed);
        return result;
    }

    // The calls that a store makes when nothing fails.
    size_t CallsOfStore()
    {
        fault.FailCall(0, S_OK);
        EXPECT_EQ(S_OK, Store(*New()));
        return fault.Calls().size();
    }
    void ExpectIntact(const wchar_t* id, const wchar_t* key, const CDiagResult& expected)
    {
        fault.FailCall(0, S_OK);
        auto loaded = EmptyResult(key);
        ASSERT_EQ(S_OK, Load(*loaded, id));
        ExpectSame(expected.Data(), loaded->Data());
    }

    IStoreFiles& Files() override { return fault; }

    CFaultStore fault;
    std::string initial;
};

// How many streams the first `count` calls concern.
std::ptrdiff_t Streams(const std::vector<std::string>& calls, size_t count, const char* call)
{
    return std::count(calls.begin(), calls.begin() + count, call);
}

TEST_F(StoreFaultTest, ARefusedCallCostsNoStoredResult)
{
    const size_t calls = CallsOfStore();
    ASSERT_GT(calls, 45u);
    for (size_t n = 1; n <= calls; ++n)
    {
        Rewrite(initial);
        const long liveBefore = g_liveComObjects;
        fault.FailCall(static_cast<int>(n), STG_E_MEDIUMFULL);
        const HRESULT hr = Store(*New());
        ASSERT_TRUE(fault.Failed()) << n;
        const std::vector<std::string> made = fault.Calls();
        EXPECT_EQ(liveBefore, g_liveComObjects) << n;
        EXPECT_FALSE(std::filesystem::exists(path + L".new")) << n;
        ExpectIntact(L"1@0", L"1@K1", *SomeResult(L"1@K1"));
        if (made[n - 1] == "CreateStream")
        {
            // The value is left out. Without its adapter or its version a result is of no use.
            EXPECT_EQ(S_OK, hr) << n;
            const auto stream = Streams(made, n, "CreateStream");
            EXPECT_EQ(stream == 1 || stream == 3 ? wmi::Failed : S_OK, Load(*EmptyResult())) << n;
        }
        else
        {
            EXPECT_EQ(STG_E_MEDIUMFULL, hr) << n << " " << made[n - 1];
            ExpectIntact(L"A@0", L"A@K1", *Old());
        }
    }
}

TEST_F(StoreFaultTest, ADiskThatIsFullFromAnyCallOnCostsNoStoredResult)
{
    const size_t calls = CallsOfStore();
    for (size_t n = 1; n <= calls; ++n)
    {
        Rewrite(initial);
        const long liveBefore = g_liveComObjects;
        fault.FailCall(static_cast<int>(n), STG_E_MEDIUMFULL, true);
        EXPECT_EQ(STG_E_MEDIUMFULL, Store(*New())) << n;
        EXPECT_EQ(liveBefore, g_liveComObjects) << n;
        EXPECT_EQ(initial, FileBytes()) << n;
    }
}

TEST_F(StoreFaultTest, AProcessThatDiesBetweenAnyTwoCallsLeavesTheFileAsItWas)
{
    size_t looks = 0;
    fault.FailCall(0, S_OK);
    fault.OnCall(
        [&]
        {
            ++looks;
            EXPECT_EQ(initial, FileBytes()) << looks;
        });
    EXPECT_EQ(S_OK, Store(*New()));
    EXPECT_EQ(looks, fault.Calls().size());
    EXPECT_EQ("WriteFile", fault.Calls().back());
    fault.OnCall(nullptr);
    ExpectIntact(L"A@0", L"A@K1", *New());
    ExpectIntact(L"1@0", L"1@K1", *SomeResult(L"1@K1"));
}

TEST_F(StoreFaultTest, WhatADeadProcessLeftDoesNotGetInTheWay)
{
    std::ofstream(std::filesystem::path(path + L".new"), std::ios::binary) << "half a file";
    EXPECT_EQ(S_OK, Store(*New()));
    ExpectIntact(L"A@0", L"A@K1", *New());
    EXPECT_FALSE(std::filesystem::exists(path + L".new"));

    std::filesystem::remove(path);
    std::ofstream(std::filesystem::path(path + L".new"), std::ios::binary) << "half a file";
    EXPECT_EQ(S_OK, Store(*New()));
    ExpectIntact(L"A@0", L"A@K1", *New());
}

TEST_F(StoreFaultTest, AStreamThatCannotBeCreatedIsTracedAndSkipped)
{
    fault.FailNamed("CreateStream", STG_E_ACCESSDENIED, 9); // "ptc"
    EXPECT_EQ(S_OK, Store(*SomeResult()));
    EXPECT_TRUE(trace.Has("CResultsStore::StoreResult:CreateStream failed <80030005>"));
    fault.FailCall(0, S_OK);
    auto loaded = EmptyResult();
    ASSERT_EQ(S_OK, Load(*loaded));
    EXPECT_EQ(100u, loaded->Data().PercentOfTestCoverage);
    EXPECT_EQ(65535u, loaded->Data().TestWarningLevel);
}

TEST_F(StoreFaultTest, MessagesBehindOneThatCannotBeStoredAreThere)
{
    fault.FailNamed("CreateStream", STG_E_ACCESSDENIED, 21 + 3); // "tidb" of message 1
    EXPECT_EQ(S_OK, Store(*SomeResult()));
    EXPECT_TRUE(trace.Has("CResultsStore::StoreResult:CreateStream failed <80030005>"));
    fault.FailCall(0, S_OK);
    auto loaded = EmptyResult();
    ASSERT_EQ(S_OK, Load(*loaded));
    const CResultData data = loaded->Data();
    EXPECT_EQ(3u, data.MessageCount);
    EXPECT_EQ((std::vector<ULONG>{0, 0, 13}), data.StringIDs);
    EXPECT_EQ((std::vector<ULONG>{0x80040123, 0, 0xFFFFFFFF}), data.TestMessages);
}

TEST_F(StoreFaultTest, AFileThatIsOutOfReachIsTracedAndNotReplaced)
{
    for (const char* call : {"ReadFile", "Open"})
    {
        const CTraceCapture own;
        fault.FailNamed(call, STG_E_SHAREVIOLATION);
        EXPECT_EQ(STG_E_SHAREVIOLATION, Store(*New()));
        EXPECT_TRUE(own.Has("CResultsStore::StoreResult: StgCreateDocfile failed, hr = <80030020>"));
        EXPECT_EQ(initial, FileBytes());
    }
}

TEST_F(StoreFaultTest, AFileThatSomebodyHoldsIsTracedAndNotReplaced)
{
    {
        const CFileHandle held(
            CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
        ASSERT_TRUE(held);
        EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_SHARING_VIOLATION), Store(*New()));
        EXPECT_TRUE(trace.Has("CResultsStore::StoreResult: StgCreateDocfile failed, hr = <80070020>"));
    }
    EXPECT_EQ(initial, FileBytes());
}

TEST_F(StoreFaultTest, AFileThatSomebodyIsAboutToReplaceCanBeRead)
{
    constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    const CFileHandle replacing(
        CreateFileW(path.c_str(), DELETE, kShareAll, nullptr, OPEN_EXISTING, 0, nullptr));
    ASSERT_TRUE(replacing);
    EXPECT_EQ(S_OK, Load(*EmptyResult()));
}

TEST_F(StoreFaultTest, AStoreThatCannotBeMadeIsTraced)
{
    std::filesystem::remove(path);
    fault.FailNamed("Create", STG_E_INSUFFICIENTMEMORY);
    EXPECT_EQ(STG_E_INSUFFICIENTMEMORY, Store(*New()));
    EXPECT_TRUE(trace.Has("CResultsStore::StoreResult: StgCreateDocfile failed, hr = <80030008>"));
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(StoreFaultTest, ARefusedCallOfALoadGivesNoHalfResult)
{
    fault.FailCall(0, S_OK);
    auto loaded = EmptyResult();
    ASSERT_EQ(S_OK, Load(*loaded));
    const size_t calls = fault.Calls().size();
    for (size_t n = 1; n <= calls; ++n)
    {
        const long liveBefore = g_liveComObjects;
        loaded = EmptyResult();
        fault.FailCall(static_cast<int>(n), STG_E_READFAULT);
        EXPECT_TRUE(FAILED(Load(*loaded))) << n;
        EXPECT_TRUE(fault.Failed()) << n;
        EXPECT_EQ(liveBefore, g_liveComObjects) << n;
        ExpectSame(EmptyResult()->Data(), loaded->Data());
    }
    EXPECT_EQ(initial, FileBytes());
}

TEST_F(StoreFaultTest, StreamsAreWrittenAndReadInTheirOrder)
{
    const std::vector<std::wstring> values = {L"rse", L"rsm",  L"qm",  L"hoe",  L"twl",    L"ptc",
                                              L"k",   L"dccn", L"eid", L"etop", L"ip",     L"osdrid",
                                              L"tct", L"tst",  L"ts",  L"pc",   L"tstate", L"nrid"};
    const auto names = [&](std::vector<std::wstring> first, const std::vector<std::wstring>& last)
    {
        first.insert(first.end(), values.begin(), values.end());
        for (std::wstring& name : first)
            name += L"A@0";
        first.insert(first.end(), last.begin(), last.end());
        return first;
    };
    const std::vector<std::wstring> messages = {L"tidbA@00", L"tmbA@00",  L"tidbA@01",
                                                L"tmbA@01",  L"tidbA@02", L"tmbA@02"};
    fault.FailCall(0, S_OK);
    ASSERT_EQ(S_OK, Store(*SomeResult()));
    std::vector<std::wstring> written = messages;
    written.push_back(L"tmcA@0");
    EXPECT_EQ(names({L"vg", L"nt", L"ag"}, written), fault.Streams());

    fault.FailCall(0, S_OK);
    ASSERT_EQ(S_OK, Load(*EmptyResult()));
    std::vector<std::wstring> read = messages;
    read.insert(read.begin(), L"tmcA@0");
    EXPECT_EQ(names({L"ag", L"vg"}, read), fault.Streams());
}

// The trace names the lock that is taken.
TEST_F(StoreFaultTest, StoringAndLoadingTakeTheSameLock)
{
    const auto lockOf = [&](const char* operation, const std::function<HRESULT()>& perform)
    {
        const CTraceCapture own;
        EXPECT_EQ(S_OK, perform());
        const std::string text = own.Text();
        const size_t begin = text.find(std::string("{ --> CResultsStore::") + operation);
        const size_t lock = text.find("Locking ", begin);
        EXPECT_NE(text.npos, lock) << operation;
        return lock == text.npos ? operation : text.substr(lock, text.find_first_of("\r\n", lock) - lock);
    };
    fault.FailCall(0, S_OK);
    const std::string storing = lockOf("StoreResult", [&] { return Store(*SomeResult()); });
    EXPECT_EQ(storing, lockOf("LoadResult", [&] { return Load(*EmptyResult()); }));
}

TEST_F(StoreFaultTest, OneSessionOpensTheFileOnce)
{
    fault.FailCall(0, S_OK);
    {
        CStoreSession session(fault, path, CStoreSession::Purpose::Read);
        for (const wchar_t* id : {L"A@0", L"B@0", L"C@0"})
            CResultsStore(session).LoadResult(CBstr(id), CBstr(L"K1"), *EmptyResult());
    }
    const auto& calls = fault.Calls();
    EXPECT_EQ(1, std::count(calls.begin(), calls.end(), "IsStorageFile"));
    EXPECT_EQ(1, std::count(calls.begin(), calls.end(), "Open"));
}
} // namespace
