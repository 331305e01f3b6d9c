// What the manager stores, when, and what becomes of it when the file refuses.
#include "CDM/src/engine/results/store/StoreSession.h"
#include "tests/support/FaultStore.h"
#include "tests/unit/engine/EngineFixture.h"

namespace
{
class ManagerStoreTest : public CEngineTest
{
  protected:
    ManagerStoreTest()
    {
        agent->AddAdapter(L"{aaa}", {1, 2});
        agent->SetOutcomes(2, {E_FAIL});
        store = &fault;
    }
    ~ManagerStoreTest() override { manager.reset(); }

    // The results that a provider would find that starts now, while this one still runs.
    std::vector<std::wstring> Stored()
    {
        const CVormAgentMgr agents(agent.Get());
        CFaultStore files;
        CDiagMgr other(paths, CEngineSeams{&environment, &files});
        EXPECT_EQ(S_OK, other.Initialize(&agents));
        CVormArray<BSTR> found;
        EXPECT_EQ(S_OK, other.EnumResults(found));
        files.FailNamed("Open", STG_E_SHAREVIOLATION); // so that its end changes nothing
        std::vector<std::wstring> keys;
        for (const BSTR key : found.View())
            keys.emplace_back(key);
        return keys;
    }

    CFaultStore fault;
};

using Found = std::vector<std::wstring>;

TEST_F(ManagerStoreTest, ResultsAreStoredWhenTheManagerGoes)
{
    ASSERT_EQ(S_OK, Start());
    ASSERT_EQ(S_OK, Run(L"1@{aaa}"));
    EXPECT_EQ(Found(), Stored());
    manager.reset();
    EXPECT_EQ((Found{L"1@{AAA}"}), Stored());
}

TEST_F(ManagerStoreTest, EveryStepOfAManagersLifeHasItsScopeInTheTrace)
{
    agent->AddAdapter(L"{bbb}", {9});
    ASSERT_EQ(S_OK, Start());
    ASSERT_EQ(S_OK, Run(L"9@{bbb}"));
    ASSERT_EQ(S_OK, Restart());
    EXPECT_EQ((Found{L"9@{BBB}"}), Results());
    EXPECT_EQ(engine::NotFound, manager->StopTest(CBstr(L"3@{bbb}").Get()));
    EXPECT_EQ(S_OK, manager->ClearResults(CBstr(L"9@{bbb}").Get()));
    manager.reset();
    for (const char* scope :
         {"CDiagMgr::RunTest", "CDiagTest::StartTest", "CDiagTest::StopTest", "CDiagMgr::StoreResults",
          "CResultsStore::StoreResult", "CResultsStore::LoadResult", "CDiagMgr::LoadResult",
          "CDiagMgr::EnumResults", "CDiagMgr::StopTest", "CDiagMgr::ClearResults"})
        EXPECT_TRUE(trace.Has(std::string("{ --> ") + scope)) << scope;
}

TEST_F(ManagerStoreTest, EachRunIsStoredAtOnceIfSoConfigured)
{
    registry.SetNumber(kDiagKey, "StoreAfterRun", 1);
    ASSERT_EQ(S_OK, Start());
    ASSERT_EQ(S_OK, Run(L"1@{aaa}"));
    EXPECT_EQ((Found{L"1@{AAA}"}), Stored());
    ASSERT_EQ(E_FAIL, Run(L"2@{aaa}"));
    EXPECT_EQ((Found{L"1@{AAA}", L"2@{AAA}"}), Stored());
}

TEST_F(ManagerStoreTest, ARunIsNoWorseForAResultThatCannotBeStoredAtOnce)
{
    registry.SetNumber(kDiagKey, "StoreAfterRun", 1);
    ASSERT_EQ(S_OK, Start());
    fault.FailNamed("WriteFile", STG_E_MEDIUMFULL);
    EXPECT_EQ(S_OK, Run(L"1@{aaa}"));
    ASSERT_TRUE(fault.Failed());
    EXPECT_TRUE(trace.Has("CResultsStore::StoreResult: StgCreateDocfile failed, hr = <80030070>"));
    EXPECT_TRUE(trace.Has("CDiagMgr::StoreResults:StoreResult failed, hr = <80030070>"));
    EXPECT_EQ(2u, ResultData(L"1@{aaa}").TestState);
    EXPECT_EQ(Found(), Stored());
    fault.FailCall(0, S_OK);
    manager.reset();
    EXPECT_EQ((Found{L"1@{AAA}"}), Stored());
}

TEST_F(ManagerStoreTest, AFileThatCannotBeWrittenIsTraced)
{
    ASSERT_EQ(S_OK, Start());
    ASSERT_EQ(S_OK, Run(L"1@{aaa}"));
    fault.FailNamed("WriteFile", E_ACCESSDENIED);
    manager.reset();
    EXPECT_TRUE(trace.Has("CResultsStore::StoreResult: StgCreateDocfile failed, hr = <80070005>"));
    EXPECT_TRUE(trace.Has("CDiagMgr::StoreResults:StoreResult failed, hr = <80070005>"));
    EXPECT_TRUE(trace.Has("CDiagMgr::~CDiagMgr:StoreResults failed, hr = <80070005>"));
}

// The second result meets the damage: the first is stored again, in the new file.
TEST_F(ManagerStoreTest, DamageThatShowsWhileResultsAreStoredCostsNone)
{
    ASSERT_EQ(S_OK, Start());
    ASSERT_EQ(S_OK, Run(L"1@{aaa}"));
    ASSERT_EQ(S_OK, Restart());
    ASSERT_EQ(S_OK, Run(L"1@{aaa}"));
    ASSERT_EQ(E_FAIL, Run(L"2@{aaa}"));
    fault.FailNamed("CreateStorage", STG_E_READFAULT, 2);
    manager.reset();
    EXPECT_TRUE(fault.Failed());
    EXPECT_TRUE(
        trace.Has("CResultsStore: the result file is damaged and gives way to a new one, hr = <8003001e>"));
    EXPECT_TRUE(std::filesystem::exists(paths.ResultStorePath + L".damaged"));
    fault.FailCall(0, S_OK);
    EXPECT_EQ((Found{L"1@{AAA}", L"2@{AAA}"}), Stored());
}

TEST_F(ManagerStoreTest, AFullDiskIsNoDamage)
{
    ASSERT_EQ(S_OK, Start());
    ASSERT_EQ(S_OK, Run(L"1@{aaa}"));
    ASSERT_EQ(S_OK, Restart());
    ASSERT_EQ(S_OK, Run(L"1@{aaa}"));
    ASSERT_EQ(E_FAIL, Run(L"2@{aaa}"));
    fault.FailNamed("CreateStorage", STG_E_MEDIUMFULL, 2);
    manager.reset();
    EXPECT_FALSE(std::filesystem::exists(paths.ResultStorePath + L".damaged"));
    fault.FailCall(0, S_OK);
    EXPECT_EQ((Found{L"1@{AAA}"}), Stored());
}

// Those that were loaded and not run since are in no other place.
TEST_F(ManagerStoreTest, AFileThatIsGoneAfterARunGetsAllResultsAgain)
{
    registry.SetNumber(kDiagKey, "StoreAfterRun", 1);
    ASSERT_EQ(S_OK, Start());
    ASSERT_EQ(S_OK, Run(L"1@{aaa}"));
    ASSERT_EQ(S_OK, Restart());
    std::filesystem::remove(paths.ResultStorePath);
    ASSERT_EQ(E_FAIL, Run(L"2@{aaa}"));
    EXPECT_EQ((Found{L"1@{AAA}", L"2@{AAA}"}), Stored());
}

TEST_F(ManagerStoreTest, AMissingFolderIsNoFailureAtTheStart)
{
    paths.ResultStorePath = (folder.Path() / L"missing" / L"ZebDiag.bin").wstring();
    ASSERT_EQ(S_OK, Start());
    EXPECT_FALSE(trace.Has("CDiagMgr::LoadResult:LoadResult failed"));
    ASSERT_EQ(S_OK, Run(L"1@{aaa}"));
    manager.reset();
    EXPECT_TRUE(trace.Has("CDiagMgr::StoreResults:StoreResult failed, hr = <80070003>"));
}
} // namespace
