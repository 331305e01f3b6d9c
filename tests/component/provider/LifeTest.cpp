// The life of a diagnostic: run, watch, stop, read, change, clear.
#include "tests/component/provider/ComponentTest.h"

#include <thread>

namespace
{
constexpr LONG kPassed = 2;
constexpr LONG kFailed = 3;
constexpr LONG kInProgress = 4;
constexpr LONG kStopped = 5;

class LifeTest : public ComponentTest
{
  protected:
    Instance Result(const wchar_t* name)
    {
        const CAnswer answer = Get(ResultPath(name));
        EXPECT_EQ(answer.Status, S_OK);
        return answer.Objects.empty() ? nullptr : answer.Objects[0];
    }
    CAnswer Discontinue(const wchar_t* name)
    {
        return Invoke(TestPath(name), L"DiscontinueTest",
                      {{L"SystemElement", AdapterPath(wcschr(name, L'@') + 1)}});
    }
    CAnswer Clear(const wchar_t* name)
    {
        return Invoke(TestPath(name), L"ClearResults",
                      {{L"SystemElement", AdapterPath(wcschr(name, L'@') + 1)}});
    }
    // Runs a test on a thread of its own and returns when the agent is busy with it.
    std::thread RunBlocked(const wchar_t* name, CAnswer& answer)
    {
        m_host.Agent->BlockRuns();
        std::thread run([this, name, &answer] { answer = RunTest(name); });
        EXPECT_EQ(WaitForSingleObject(m_host.Agent->Blocked(), 60000), WAIT_OBJECT_0);
        return run;
    }
};

TEST_F(LifeTest, PassedRun)
{
    Start();
    const CAnswer run = RunTest(L"1@A");
    EXPECT_EQ(run.Returned, S_OK);
    EXPECT_EQ(run.Status, S_OK);
    ASSERT_EQ(run.Objects.size(), 1u);
    EXPECT_EQ(Number(run.Objects[0], L"ReturnValue"), 0);
    const Instance result = Result(L"1@A");
    ASSERT_TRUE(result);
    EXPECT_EQ(Number(result, L"TestState"), kPassed);
    EXPECT_EQ(Number(result, L"PercentComplete"), 100);
    EXPECT_FALSE(Text(result, L"TestStartTime").empty());
    EXPECT_FALSE(Text(result, L"TestCompletionTime").empty());
    EXPECT_TRUE(Texts(result, L"TestResults").empty());
}

TEST_F(LifeTest, FailedRunTellsWhy)
{
    m_host.Agent->SetOutcomes(2, {E_OUTOFMEMORY});
    Start();
    EXPECT_EQ(RunTest(L"2@A").Status, S_OK) << "the result tells of the failure";
    const Instance result = Result(L"2@A");
    ASSERT_TRUE(result);
    EXPECT_EQ(Number(result, L"TestState"), kFailed);
    EXPECT_EQ(Number(result, L"PercentComplete"), 0);
    EXPECT_EQ(Texts(result, L"TestResults").size(), 2u);
}

TEST_F(LifeTest, RunningTestIsInUseAndItsResultInProgress)
{
    Start();
    CAnswer answer;
    std::thread run = RunBlocked(L"1@A", answer);
    EXPECT_EQ(Number(Get(TestPath(L"1@A")).Objects.at(0), L"IsInUse"), VARIANT_TRUE);
    EXPECT_EQ(Number(Result(L"1@A"), L"TestState"), kInProgress);
    EXPECT_EQ(Read(Result(L"1@A"), L"TestCompletionTime").vt, VT_NULL);
    m_host.Agent->EndRuns();
    run.join();
    EXPECT_EQ(Number(Get(TestPath(L"1@A")).Objects.at(0), L"IsInUse"), VARIANT_FALSE);
    EXPECT_EQ(Number(Result(L"1@A"), L"TestState"), kPassed);
}

TEST_F(LifeTest, SecondRunOfARunningTestStartsNothing)
{
    Start();
    CAnswer answer;
    std::thread run = RunBlocked(L"1@A", answer);
    const CTraceCapture trace;
    const CAnswer second = RunTest(L"1@A");
    ASSERT_EQ(second.Objects.size(), 1u);
    EXPECT_EQ(Text(second.Objects[0], L"Result"), L"");
    EXPECT_EQ(trace.Count("CTolva_DiagTest::ExecMethodAsync:RunTest failed hr = <80042000>"), 1u);
    m_host.Agent->EndRuns();
    run.join();
    EXPECT_EQ(m_host.Agent->Count(CFakeAgent::Method::RunDiagTest), 1);
}

TEST_F(LifeTest, StoppedSender)
{
    Start();
    CAnswer answer;
    std::thread run = RunBlocked(L"9@B", answer);
    const CAnswer stop = Discontinue(L"9@B");
    EXPECT_EQ(stop.Status, S_OK);
    ASSERT_EQ(stop.Objects.size(), 1u);
    EXPECT_EQ(Number(stop.Objects[0], L"TestingStopped"), VARIANT_TRUE);
    run.join();
    EXPECT_EQ(answer.Status, S_OK);
    EXPECT_EQ(Number(Result(L"9@B"), L"TestState"), kStopped);
    EXPECT_EQ(m_host.Agent->Count(CFakeAgent::Method::StopTest), 1);
}

TEST_F(LifeTest, StoppedOrdinaryTestEndsAsTheAgentSays)
{
    m_host.Agent->SetOutcomes(1, {E_ABORT});
    Start();
    CAnswer answer;
    std::thread run = RunBlocked(L"1@A", answer);
    EXPECT_EQ(Number(Discontinue(L"1@A").Objects.at(0), L"TestingStopped"), VARIANT_TRUE);
    run.join();
    EXPECT_EQ(Number(Result(L"1@A"), L"TestState"), kFailed);
}

TEST_F(LifeTest, TestThatDoesNotRunIsNotStopped)
{
    Start();
    for (const wchar_t* name : {L"1@A", L"9@B"})
    {
        const CAnswer stop = Discontinue(name);
        ASSERT_EQ(stop.Objects.size(), 1u);
        EXPECT_EQ(Read(stop.Objects[0], L"TestingStopped").vt, VT_NULL);
    }
    EXPECT_EQ(m_host.Agent->Count(CFakeAgent::Method::StopTest), 0);
}

TEST_F(LifeTest, ClearedResultIsGone)
{
    Start();
    RunTest(L"1@A");
    RunTest(L"2@A");
    EXPECT_EQ(Clear(L"1@A").Status, S_OK);
    const CAnswer gone = Get(ResultPath(L"1@A"));
    EXPECT_EQ(gone.Status, wmi::NotFound);
    EXPECT_EQ(Column(Enumerate(L"Tolva_DiagResult"), L"DiagnosticName"), (std::vector<std::wstring>{L"2@A"}));
    const CTraceCapture trace;
    Clear(L"1@A");
    EXPECT_EQ(trace.Count("CTolva_DiagTest::ExecMethodAsync:ClearResults failed, hr = <80041002>"), 1u);
}

TEST_F(LifeTest, ResultOfARunningTestIsNotCleared)
{
    Start();
    CAnswer answer;
    std::thread run = RunBlocked(L"1@A", answer);
    const CTraceCapture trace;
    Clear(L"1@A");
    EXPECT_EQ(trace.Count("CTolva_DiagTest::ClearResults: ClearResults failed, hr = <80042003>"), 1u);
    EXPECT_TRUE(Result(L"1@A"));
    m_host.Agent->EndRuns();
    run.join();
}

TEST_F(LifeTest, ResultsOutliveTheProcess)
{
    Start();
    RunTest(L"1@A");
    const Instance before = Result(L"1@A");
    Restart();
    const Instance after = Result(L"1@A");
    ASSERT_TRUE(before && after);
    EXPECT_EQ(before->CompareTo(0, after.Get()), WBEM_S_NO_ERROR);
    EXPECT_EQ(Clear(L"1@A").Status, S_OK);
    Restart();
    EXPECT_EQ(Get(ResultPath(L"1@A")).Status, wmi::NotFound);
}

TEST_F(LifeTest, WrittenSettingIsReadBack)
{
    Start();
    const Instance setting =
        standin::MakeInstance(ServedSchema().GetDefinition(kServedNamespace, L"Tolva_DiagSetting"));
    const auto put = [&](const wchar_t* name, CVariant value)
    { EXPECT_EQ(setting->Put(name, 0, &value, 0), S_OK); };
    put(L"SettingID", CVariant::FromText(L"9@b")); // keys have no letter case
    put(L"HaltOnError", CVariant::FromBool(false));
    put(L"ReportSoftErrors", CVariant::FromBool(false));
    put(L"ReportStatusMessages", CVariant::FromBool(true));
    put(L"QuickMode", CVariant::FromBool(false));
    put(L"TestWarningLevel", CVariant::FromLong(1));
    put(L"PercentOfTestCoverage", CVariant::FromByte(50));
    const CAnswer written = Put(setting);
    EXPECT_EQ(written.Returned, S_OK);
    EXPECT_EQ(written.Status, S_OK);
    const Instance read = Get(SettingPath(L"9@B")).Objects.at(0);
    EXPECT_EQ(Number(read, L"QuickMode"), VARIANT_FALSE);
    EXPECT_EQ(Number(read, L"ReportStatusMessages"), VARIANT_TRUE);
    EXPECT_EQ(Number(read, L"PercentOfTestCoverage"), 50);
    put(L"SettingID", CVariant::FromText(L"7@B"));
    EXPECT_EQ(Put(setting).Status, static_cast<HRESULT>(0x80042005));
}
} // namespace
