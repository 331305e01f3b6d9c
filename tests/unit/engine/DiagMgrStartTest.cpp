#include "tests/support/CaseName.h"
#include "tests/unit/engine/EngineFixture.h"

namespace
{
using Method = CFakeAgent::Method;

class DiagMgrStartTest : public CEngineTest
{
};

TEST_F(DiagMgrStartTest, EveryTestOfEveryAdapterGetsATestAndASetting)
{
    agent->AddAdapter(L"{aaa}", {1, 10});
    agent->AddAdapter(L"{bbb}", {9});
    ASSERT_EQ(S_OK, Start());
    const std::vector<std::wstring> keys{L"1@{AAA}", L"9@{BBB}", L"A@{AAA}"};
    EXPECT_EQ(keys, Tests());
    EXPECT_EQ(keys, Settings());
    EXPECT_TRUE(Results().empty());
    EXPECT_EQ(10u, TestData(L"a@{aaa}").TestID);
    CSettingData setting;
    ASSERT_EQ(S_OK, manager->GetSettingData(CBstr(L"9@{bbb}").Get(), &setting));
    EXPECT_STREQ(L"9@{BBB}", setting.Key.Text());
    EXPECT_EQ(1u, setting.IsPackage);
    EXPECT_TRUE(trace.Has("CDiagMgr::Initialize: Index = <1>"));
    EXPECT_TRUE(trace.Has("CDiagMgr::Initialize: AdapterKey = <{bbb}>"));
}

TEST_F(DiagMgrStartTest, WithoutAnAgentThereIsNoInterface)
{
    manager = std::make_unique<CDiagMgr>(paths);
    EXPECT_EQ(E_NOINTERFACE, manager->Initialize(nullptr));
    const CVormAgentMgr unloaded;
    EXPECT_EQ(E_NOINTERFACE, manager->Initialize(&unloaded));
    EXPECT_EQ(2u, trace.Count("CDiagMgr::Initialize:Vorl QueryInterface failed, hr = <80004003>"));
}

struct AgentFault
{
    const char* name;
    Method method;
    bool throws;
    HRESULT result;
    const char* trace;
};

class StartFaultTest : public CEngineTest, public testing::WithParamInterface<AgentFault>
{
};

TEST_P(StartFaultTest, EndsInACodeATraceAndNothingLeftBehind)
{
    agent->AddAdapter(L"{aaa}", {1});
    const long before = g_liveComObjects;
    if (GetParam().throws)
        agent->Throw(GetParam().method, 1);
    else
        agent->Fail(GetParam().method, 1, static_cast<HRESULT>(0x80040123));
    EXPECT_EQ(GetParam().result, Start());
    EXPECT_TRUE(trace.Has(GetParam().trace));
    manager.reset();
    EXPECT_EQ(before, g_liveComObjects);
    // The agent is as it was: the next start succeeds.
    EXPECT_EQ(S_OK, Start());
}

const AgentFault kFaults[] = {
    {"QueryFails", Method::QueryDiagnostics, false, E_NOINTERFACE,
     "CDiagMgr::Initialize:Vorl QueryInterface failed, hr = <80040123>"},
    {"QueryThrows", Method::QueryDiagnostics, true, E_NOINTERFACE,
     "CDiagMgr::Initialize:Vorl QueryInterface failed, hr = <8000ffff>"},
    {"EnumAdaptersFails", Method::EnumAdapters, false, static_cast<HRESULT>(0x80040123),
     "CDiagMgr::Initialize:EnumAdapters failed, hr = <80040123>"},
    {"EnumAdaptersThrows", Method::EnumAdapters, true, E_UNEXPECTED,
     "CDiagMgr::Initialize:EnumAdapters failed, hr = <8000ffff>"},
    {"OnlyEnumDiagTestsFails", Method::EnumDiagTests, false, wmi::Failed,
     "CDiagMgr::Initialize:EnumDiagTests failed, hr = <80040123>"},
    {"OnlyEnumDiagTestsThrows", Method::EnumDiagTests, true, wmi::Failed,
     "CDiagMgr::Initialize:EnumDiagTests failed, hr = <8000ffff>"},
};
INSTANTIATE_TEST_SUITE_P(Calls, StartFaultTest, testing::ValuesIn(kFaults), NameOf<AgentFault>);

TEST_F(DiagMgrStartTest, AnAdapterWhoseTestsCannotBeListedKeepsItsIndex)
{
    agent->AddAdapter(L"{aaa}", {1});
    agent->AddAdapter(L"{bbb}", {1});
    agent->Fail(Method::EnumDiagTests, 1, E_FAIL);
    ASSERT_EQ(S_OK, Start());
    EXPECT_EQ((std::vector<std::wstring>{L"1@{BBB}"}), Tests());
    // The second adapter's results are stored under index 1.
    ASSERT_EQ(S_OK, Run(L"1@{bbb}"));
    manager.reset();
    ComPtr<IStorage> root;
    constexpr DWORD kMode = STGM_READWRITE | STGM_SHARE_EXCLUSIVE;
    ASSERT_EQ(S_OK, StgOpenStorage(paths.ResultStorePath.c_str(), nullptr, kMode, nullptr, 0, root.Put()));
    ComPtr<IStorage> sub;
    EXPECT_EQ(S_OK, root->OpenStorage(L"1@1", nullptr, kMode, nullptr, 0, sub.Put()));
}

TEST_F(DiagMgrStartTest, NoTestAtAll)
{
    agent->AddAdapter(L"{aaa}", {});
    EXPECT_EQ(wmi::Failed, Start());
    EXPECT_TRUE(trace.Has("CDiagMgr::Initialize:Not a single test found."));
}

TEST_F(DiagMgrStartTest, NoAdapterAtAll)
{
    EXPECT_EQ(wmi::Failed, Start());
    EXPECT_TRUE(trace.Has("CDiagMgr::Initialize:Not a single test found."));
}

TEST_F(DiagMgrStartTest, ATestNumberTwiceEndsThatAdaptersList)
{
    agent->AddAdapter(L"{aaa}", {1, 1, 2});
    agent->AddAdapter(L"{bbb}", {3});
    ASSERT_EQ(S_OK, Start());
    EXPECT_EQ((std::vector<std::wstring>{L"1@{AAA}", L"3@{BBB}"}), Tests());
    EXPECT_TRUE(trace.Has("CDiagMgr::Initialize:AddObj for test failed, hr = <80042006>"));
}

TEST_F(DiagMgrStartTest, AnAdapterListedTwiceKeepsItsFirstIndex)
{
    agent->AddAdapter(L"{aaa}", {1});
    agent->AddAdapter(L"{AAA}", {2});
    ASSERT_EQ(S_OK, Start());
    EXPECT_TRUE(trace.Has("CDiagMgr::Initialize:AddIndexToMap failed, hr = <80042006>"));
    EXPECT_EQ((std::vector<std::wstring>{L"1@{AAA}", L"2@{AAA}"}), Tests());
}

TEST_F(DiagMgrStartTest, OddAdapterKeysAreServed)
{
    const std::wstring longKey(10000, L'K');
    agent->AddAdapter(L"", {1});
    agent->AddAdapter(L"a@b", {1});
    agent->AddAdapter(L"quote\"back\\slash", {1});
    agent->AddAdapter(longKey.c_str(), {1});
    ASSERT_EQ(S_OK, Start());
    EXPECT_EQ(4u, Tests().size());
    for (const std::wstring& key : Tests())
    {
        EXPECT_STREQ(key.c_str(), TestData(key.c_str()).Key.Text());
        EXPECT_EQ(S_OK, Run(key.c_str()));
    }
    ASSERT_EQ(S_OK, Restart());
    EXPECT_EQ(Tests(), Results());
}

TEST_F(DiagMgrStartTest, AnAgentThatThrowsWhenReleasedIsSurvived)
{
    agent->AddAdapter(L"{aaa}", {1});
    ASSERT_EQ(S_OK, Start());
    agent->ThrowWhenReleased();
    manager.reset();
    EXPECT_TRUE(trace.Has("CDiagAgent::~CDiagAgent: the agent failed in Release"));
}

TEST_F(DiagMgrStartTest, NothingIsKnownBeforeInitialize)
{
    manager = std::make_unique<CDiagMgr>(paths);
    EXPECT_TRUE(Tests().empty());
    CTestData data;
    EXPECT_EQ(engine::NotFound, manager->GetTestData(CBstr(L"1@A").Get(), &data));
    EXPECT_EQ(engine::NotFound, manager->LockTest(CBstr(L"1@A").Get()));
    CBstr resultKey(L"1@A");
    EXPECT_EQ(engine::NotFound, manager->RunTest(CBstr(L"1@A").Get(), resultKey, 0));
    EXPECT_EQ(engine::NotFound, manager->StopTest(CBstr(L"1@A").Get()));
    EXPECT_EQ(engine::NotFound, manager->ClearResults(CBstr(L"1@A").Get()));
    EXPECT_EQ(engine::NotFound, manager->LogResults(CBstr(L"1@A").Get()));
    manager.reset();
    EXPECT_FALSE(std::filesystem::exists(paths.ResultStorePath));
}

// The registry's values; a value of wrong type or size counts as absent.
struct Registry
{
    const char* name;
    void (*set)(CRegistryScope& registry);
    HRESULT result;
    const char* trace; // or null
};

class RegistryTest : public CEngineTest, public testing::WithParamInterface<Registry>
{
};

TEST_P(RegistryTest, DecidesOnTheStart)
{
    agent->AddAdapter(L"{aaa}", {1});
    GetParam().set(registry);
    EXPECT_EQ(GetParam().result, Start());
    EXPECT_EQ(1u, Tests().size()); // the objects are built by then
    if (GetParam().trace)
    {
        EXPECT_TRUE(trace.Has(GetParam().trace));
    }
}

const Registry kRegistries[] = {
    {"NothingThere", [](CRegistryScope&) {}, S_OK, "Open Key failed."},
    {"EnableOne", [](CRegistryScope& r) { r.SetNumber(kDiagKey, "Enable", 1); }, S_OK, nullptr},
    {"EnableTwo", [](CRegistryScope& r) { r.SetNumber(kDiagKey, "Enable", 2); }, wmi::Failed,
     "CDiagMgr::Initialize:\"Enable\" should be a BOOLEAN!!"},
    {"EnableOfWrongType", [](CRegistryScope& r) { r.SetString(kDiagKey, "Enable", "2"); }, S_OK, nullptr},
    {"EnableOfWrongSize", [](CRegistryScope& r) { r.SetBinary(kDiagKey, "Enable", "\x02"); }, S_OK, nullptr},
    {"AppendZero", [](CRegistryScope& r) { r.SetNumber(kDiagKey, "FileAppend", 0); }, S_OK, nullptr},
    {"AppendTwo", [](CRegistryScope& r) { r.SetNumber(kDiagKey, "FileAppend", 2); }, wmi::Failed,
     "CDiagMgr::Initialize:\"Append\" should be a BOOLEAN!!"},
    {"AppendLargest", [](CRegistryScope& r) { r.SetNumber(kDiagKey, "FileAppend", 0xFFFFFFFF); }, wmi::Failed,
     "CDiagMgr::Initialize:\"Append\" should be a BOOLEAN!!"},
    {"BothWrongNamesEnable",
     [](CRegistryScope& r)
     {
         r.SetNumber(kDiagKey, "Enable", 7);
         r.SetNumber(kDiagKey, "FileAppend", 7);
     },
     wmi::Failed, "CDiagMgr::Initialize:\"Enable\" should be a BOOLEAN!!"},
    {"AnyMaxFileSize", [](CRegistryScope& r) { r.SetNumber(kDiagKey, "MaxFileSize", 0xFFFFFFFF); }, S_OK,
     nullptr},
    {"LogFileNameOfWrongType", [](CRegistryScope& r) { r.SetNumber(kDiagKey, "LogFileName", 5); }, S_OK,
     "Query Value failed,"},
    {"LogFileNameTooLong",
     [](CRegistryScope& r) { r.SetString(kDiagKey, "LogFileName", std::string(5000, 'x').c_str()); }, S_OK,
     "Query Value failed,"},
};
INSTANTIATE_TEST_SUITE_P(Values, RegistryTest, testing::ValuesIn(kRegistries), NameOf<Registry>);

// Results that earlier runs of the process have left.
TEST_F(DiagMgrStartTest, WithoutAStoreNoTestHasAResult)
{
    agent->AddAdapter(L"{aaa}", {1});
    ASSERT_EQ(S_OK, Start());
    CResultData data;
    EXPECT_EQ(engine::NotFound, manager->GetResultData(CBstr(L"1@{aaa}").Get(), &data));
    EXPECT_FALSE(trace.Has("CDiagMgr::LoadResult:LoadResult failed"));
    ASSERT_EQ(S_OK, Run(L"1@{aaa}"));
    EXPECT_EQ(S_OK, manager->GetResultData(CBstr(L"1@{aaa}").Get(), &data));
}

TEST_F(DiagMgrStartTest, AMovedAdapterStartsWithoutResult)
{
    agent->AddAdapter(L"{aaa}", {1});
    ASSERT_EQ(S_OK, Start());
    ASSERT_EQ(S_OK, Run(L"1@{aaa}"));
    manager.reset();

    agent = MakeCom<CFakeAgent>();
    agent->AddAdapter(L"{bbb}", {1});
    agent->AddAdapter(L"{aaa}", {1});
    ASSERT_EQ(S_OK, Start());
    EXPECT_TRUE(Results().empty());
    EXPECT_TRUE(trace.Has("CDiagMgr::LoadResult:LoadResult failed, hr = <80041001>"));
}

TEST_F(DiagMgrStartTest, AStoreOfAnotherVersionIsDroppedAtTheFirstResult)
{
    agent->AddAdapter(L"{aaa}", {1, 2});
    ASSERT_EQ(S_OK, Start());
    ASSERT_EQ(S_OK, Run(L"1@{aaa}"));
    ASSERT_EQ(S_OK, Run(L"2@{aaa}"));
    manager.reset();
    {
        constexpr DWORD kMode = STGM_READWRITE | STGM_SHARE_EXCLUSIVE;
        ComPtr<IStorage> root;
        ComPtr<IStorage> first;
        ASSERT_EQ(S_OK,
                  StgOpenStorage(paths.ResultStorePath.c_str(), nullptr, kMode, nullptr, 0, root.Put()));
        ASSERT_EQ(S_OK, root->OpenStorage(L"1@0", nullptr, kMode, nullptr, 0, first.Put()));
        ASSERT_EQ(S_OK, first->DestroyElement(L"vg1@0"));
    }
    ASSERT_EQ(S_OK, Start());
    EXPECT_TRUE(Results().empty());
    // The second test finds no file, which is nothing to trace.
    EXPECT_EQ(1u, trace.Count("CDiagMgr::LoadResult:LoadResult failed"));
    EXPECT_TRUE(trace.Has("CDiagMgr::LoadResult:LoadResult failed, hr = <80041001>"));
    EXPECT_FALSE(std::filesystem::exists(paths.ResultStorePath));
}

TEST_F(DiagMgrStartTest, AnAdapterInOtherCaseIsTheSame)
{
    agent->AddAdapter(L"{aaa}", {1});
    ASSERT_EQ(S_OK, Start());
    ASSERT_EQ(S_OK, Run(L"1@{aaa}"));
    manager.reset();
    agent = MakeCom<CFakeAgent>();
    agent->AddAdapter(L"{AAA}", {1});
    ASSERT_EQ(S_OK, Start());
    EXPECT_EQ((std::vector<std::wstring>{L"1@{AAA}"}), Results());
}

TEST_F(DiagMgrStartTest, AFileThatIsNoStorageIsTracedAndReplacedAtTheEnd)
{
    std::ofstream(std::filesystem::path(paths.ResultStorePath)) << "not a storage";
    agent->AddAdapter(L"{aaa}", {1, 2});
    ASSERT_EQ(S_OK, Start());
    EXPECT_EQ(2u, trace.Count("CDiagMgr::LoadResult:LoadResult failed, hr = <1>"));
    ASSERT_EQ(S_OK, Run(L"1@{aaa}"));
    ASSERT_EQ(S_OK, Restart());
    EXPECT_EQ((std::vector<std::wstring>{L"1@{AAA}"}), Results());
}

TEST_F(DiagMgrStartTest, AStoreThatIsOutOfReachAtTheEndIsTraced)
{
    paths.ResultStorePath = (folder.Path() / L"missing" / L"ZebDiag.bin").wstring();
    agent->AddAdapter(L"{aaa}", {1});
    ASSERT_EQ(S_OK, Start());
    ASSERT_EQ(S_OK, Run(L"1@{aaa}"));
    manager.reset();
    EXPECT_TRUE(trace.Has("CDiagMgr::StoreResults:StoreResult failed, hr = <80070003>"));
    EXPECT_TRUE(trace.Has("CDiagMgr::~CDiagMgr:StoreResults failed, hr = <80070003>"));
}

TEST_F(DiagMgrStartTest, NullRecordsAreRefused)
{
    agent->AddAdapter(L"{aaa}", {1});
    ASSERT_EQ(S_OK, Start());
    const CBstr key(L"1@{aaa}");
    EXPECT_EQ(E_POINTER, manager->GetTestData(key.Get(), nullptr));
    EXPECT_EQ(E_POINTER, manager->GetSettingData(key.Get(), nullptr));
    EXPECT_EQ(E_POINTER, manager->GetResultData(key.Get(), nullptr));
}

struct BadKey
{
    const char* name;
    const wchar_t* key;
};

class BadKeyTest : public CEngineTest, public testing::WithParamInterface<BadKey>
{
};

TEST_P(BadKeyTest, IsNotFoundByAnyOperationAndChangesNothing)
{
    agent->AddAdapter(L"{aaa}", {1});
    ASSERT_EQ(S_OK, Start());
    const CBstr key(GetParam().key);
    CTestData test;
    CSettingData setting;
    CResultData result;
    EXPECT_EQ(engine::NotFound, manager->GetTestData(key.Get(), &test));
    EXPECT_TRUE(trace.Has("CDiagMgr::GetTestData:GetObj failed, hr = <80042005>"));
    EXPECT_EQ(engine::NotFound, manager->GetSettingData(key.Get(), &setting));
    EXPECT_TRUE(trace.Has("CDiagMgr::GetSettingData:GetObj failed, hr = <80042005>"));
    EXPECT_EQ(engine::NotFound, manager->GetResultData(key.Get(), &result));
    EXPECT_TRUE(trace.Has("CDiagMgr::GetResultData:GetObj failed, hr = <80042005>"));
    EXPECT_EQ(engine::NotFound, manager->LockTest(key.Get()));
    EXPECT_EQ(engine::NotFound, manager->UnlockTest(key.Get()));
    EXPECT_EQ(2u, trace.Count("CDiagMgr::LockTest:GetObj failed, hr = <80042005>"));
    EXPECT_FALSE(manager->SettingExists(key.Get()));
    EXPECT_FALSE(manager->ResultExists(key.Get()));
    EXPECT_EQ(engine::NotFound, manager->LogResults(key.Get()));
    EXPECT_TRUE(trace.Has("CDiagMgr::LogResults:GetResultData failed <80042005>"));
    EXPECT_EQ(1u, Tests().size());
    EXPECT_TRUE(Results().empty());
}

const std::wstring kLongKey(10000, L'k');
const BadKey kBadKeys[] = {
    {"Null", nullptr},          {"Empty", L""},
    {"TestNumberAlone", L"1"},  {"UnknownTest", L"2@{aaa}"},
    {"UnknownAdapter", L"1@b"}, {"Quotes", L"1@\"{aaa}\""},
    {"Backslash", L"1@\\"},     {"TenThousandCharacters", kLongKey.c_str()},
};
INSTANTIATE_TEST_SUITE_P(Keys, BadKeyTest, testing::ValuesIn(kBadKeys), NameOf<BadKey>);
} // namespace
