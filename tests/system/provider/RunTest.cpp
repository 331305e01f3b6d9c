// Running, stopping and clearing tests across processes, and what stays of it over a restart.
#include "tests/system/provider/ProviderFixture.h"

#include "Common/src/com/Text.h"
#include "Common/src/com/Variant.h"

#include <gtest/gtest.h>

namespace
{
constexpr wchar_t kResultClass[] = L"Tolva_DiagResult";

std::string StateOf(const nlohmann::json& results, const std::string& key)
{
    for (const auto& result : results.at("results"))
        if (result.at("test").at("key") == key)
            return result.at("state");
    return "none";
}

TEST(Run, EndsWithTheOutcomeOfTheAgentInWords)
{
    const CProviderMachine machine;
    machine.SetScript(kScriptOfTwoAdapters);

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

TEST(Run, ResultsOutliveTheProvider)
{
    const CProviderMachine machine;
    machine.SetScript(kScriptOfTwoAdapters);
    Zebdiag(L"run --adapter BETA --test 1");
    Zebdiag(L"run --adapter ALPHA --test 2");
    const nlohmann::json before = ZebdiagJson(L"results");
    ASSERT_EQ(2u, before.at("results").size());
    ASSERT_TRUE(machine.WaitUntilAllEnded());
    ASSERT_TRUE(machine.HasFile(L"ZebDiag.bin"));

    EXPECT_EQ(before, ZebdiagJson(L"results"));
}

TEST(Run, ClearedResultsStayGone)
{
    const CProviderMachine machine;
    machine.SetScript(kScriptOfTwoAdapters);
    Zebdiag(L"run --adapter BETA --test 1");
    EXPECT_EQ(0u, Zebdiag(L"clear --all").ExitCode);
    EXPECT_TRUE(CWmiClient().Instances(kResultClass).empty());
    ASSERT_TRUE(machine.WaitUntilAllEnded());
    EXPECT_TRUE(CWmiClient().Instances(kResultClass).empty());
}

// Many short polls, so that a stop comes long before the end.
void ShortPolls(const CProviderMachine& machine)
{
    machine.SetNumber(L"ZebDiag", L"CheckTime", 1);
    machine.SetNumber(L"ZebDiag", L"TimeoutSndRsp", 100);
    machine.SetNumber(L"ZebDiag", L"MaxPktsRcvd", 1000000);
}

TEST(Stop, FromAnotherConsoleEndsTheRunAsStoppedInBoth)
{
    const CProviderMachine machine;
    machine.SetScript(kScriptOfTwoAdapters);
    ShortPolls(machine);

    CRunningProgram run(ZebdiagCommand(L"run --adapter ALPHA --test 9"));
    ASSERT_TRUE(run.WaitForOutput("%"));
    const CRunResult stop = Zebdiag(L"stop");
    EXPECT_EQ(0u, stop.ExitCode) << stop.Output;
    const CRunResult stopped = run.Finish();
    EXPECT_EQ(2u, stopped.ExitCode) << stopped.Output;
    EXPECT_NE(std::string::npos, stopped.Output.find("STOPPED: ")) << stopped.Output;
    EXPECT_EQ("stopped", StateOf(ZebdiagJson(L"results"), "9@ALPHA"));
}

TEST(Stop, SecondRunOfARunningTestIsBusy)
{
    const CProviderMachine machine;
    machine.SetScript(kScriptOfTwoAdapters);
    ShortPolls(machine);

    CRunningProgram run(ZebdiagCommand(L"run --adapter ALPHA --test 9"));
    ASSERT_TRUE(run.WaitForOutput("%"));
    EXPECT_EQ(5u, Zebdiag(L"run --adapter ALPHA --test 9").ExitCode);
    EXPECT_EQ(0u, Zebdiag(L"stop").ExitCode);
    EXPECT_EQ(2u, run.Finish().ExitCode);
}

TEST(Kill, ProviderKilledDuringARunKeepsWhatWasStoredBefore)
{
    const CProviderMachine machine;
    machine.SetScript(kScriptOfTwoAdapters);
    ShortPolls(machine);
    Zebdiag(L"run --adapter BETA --test 1");
    ASSERT_TRUE(machine.WaitUntilAllEnded());

    CRunningProgram run(ZebdiagCommand(L"run --adapter ALPHA --test 9"));
    ASSERT_TRUE(run.WaitForOutput("%"));
    for (const DWORD provider : ProcessesOf(L"Drevok.EXE"))
        KillProcess(provider);
    const CRunResult killed = run.Finish();
    EXPECT_EQ(3u, killed.ExitCode) << killed.Output;
    KillServers({L"WmiStandin.exe"});

    const nlohmann::json results = ZebdiagJson(L"results");
    EXPECT_EQ("passed", StateOf(results, "1@BETA"));
    EXPECT_EQ("none", StateOf(results, "9@ALPHA"));
}

TEST(Settings, ChangeIsSeenByEveryClientAndUsedByTheNextRun)
{
    const CProviderMachine machine;
    machine.SetScript(kScriptOfTwoAdapters);
    EXPECT_EQ(0u, Zebdiag(L"set --adapter ALPHA --test 9 --coverage 40").ExitCode);
    ComPtr<IWbemClassObject> setting;
    ASSERT_EQ(S_OK, CWmiClient().Get(L"Tolva_DiagSetting.SettingID=\"9@ALPHA\"", setting));
    EXPECT_EQ(L"40", PropertyText(setting.Get(), L"PercentOfTestCoverage"));
}

TEST(Script, RunsATest)
{
    const CProviderMachine machine;
    machine.SetScript(kScriptOfTwoAdapters);
    EXPECT_EQ(std::vector<std::string>{"TestState 2"}, RunScript(L"run.vbs", L"1@BETA BETA"));
    EXPECT_EQ(std::vector<std::string>{"TestState 3"}, RunScript(L"run.vbs", L"2@ALPHA ALPHA"));
}
} // namespace
