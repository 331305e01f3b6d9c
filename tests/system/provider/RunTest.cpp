// Running tests and changing settings across processes.
#include "tests/system/provider/SharedMachine.h"

#include "Common/src/com/Text.h"
#include "Common/src/com/Variant.h"

namespace
{
TEST_F(Served, RunEndsWithTheOutcomeOfTheAgentInWords)
{
    const CRunResult passed = Zebdiag(L"run --adapter BETA --test 1");
    EXPECT_EQ(0u, passed.ExitCode) << passed.Output;
    EXPECT_NE(std::string::npos, passed.Output.find("PASSED: Link on BETA.")) << passed.Output;

    const CRunResult failed = Zebdiag(L"run --adapter ALPHA --test 2");
    EXPECT_EQ(1u, failed.ExitCode) << failed.Output;
    EXPECT_NE(std::string::npos, failed.Output.find("FAILED: ")) << failed.Output;

    const nlohmann::json results = ZebdiagJson(L"results");
    EXPECT_EQ("passed", StateOf(results, "1@BETA"));
    EXPECT_EQ("failed", StateOf(results, "2@ALPHA"));
}

TEST_F(Served, ChangeOfASettingIsSeenByEveryClientAndUsedByTheNextRun)
{
    EXPECT_EQ(0u, Zebdiag(L"set --adapter ALPHA --test 9 --coverage 40").ExitCode);
    ComPtr<IWbemClassObject> setting;
    ASSERT_EQ(S_OK, CWmiClient().Get(L"Tolva_DiagSetting.SettingID=\"9@ALPHA\"", setting));
    EXPECT_EQ(L"40", PropertyText(setting.Get(), L"PercentOfTestCoverage"));
    EXPECT_EQ(std::vector<std::string>{"now: 40"}, RunScript(L"set.vbs", L"9@ALPHA"));

    Machine().SetNumber(L"ZebDiag", L"CheckTime", 1);
    Machine().SetNumber(L"ZebDiag", L"MaxPktsRcvd", 1);
    EXPECT_EQ(0u, Zebdiag(L"run --adapter ALPHA --test 9").ExitCode);
    EXPECT_EQ(L"40", AllResults(CWmiClient()).at(L"9@ALPHA").at(L"PercentOfTestCoverage"));
}

TEST_F(Served, RunIsNotLoggedWhereLoggingIsOff)
{
    EXPECT_EQ(0u, Zebdiag(L"run --adapter BETA --test 1").ExitCode);
    EXPECT_FALSE(Machine().HasFile(L"ZebDiag.log"));
}

TEST_F(Served, SecondRunOfARunningTestIsBusy)
{
    RunUntilStopped(Machine());
    const unsigned runs = CallsOf(Machine(), "9@ALPHA", "RunDiagTest");
    CRunningProgram run(ZebdiagCommand(L"run --adapter ALPHA --test 9"));
    ASSERT_TRUE(WaitForCalls(Machine(), "9@ALPHA", "RunDiagTest", runs + 1));
    ASSERT_TRUE(run.WaitForOutput("%"));
    EXPECT_EQ(5u, Zebdiag(L"run --adapter ALPHA --test 9").ExitCode);
    EXPECT_EQ(0u, Zebdiag(L"stop").ExitCode);
    EXPECT_EQ(2u, run.Finish().ExitCode);
}
} // namespace
