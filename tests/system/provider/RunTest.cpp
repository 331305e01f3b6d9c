// Running, stopping and clearing tests across processes, and what stays of it over a restart.
#include "tests/system/provider/ProviderFixture.h"

#include "Common/src/com/Text.h"
#include "Common/src/com/Variant.h"

#include <gtest/gtest.h>

namespace
{
constexpr wchar_t kResultClass[] = L"Tolva_DiagResult";

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

TEST(Settings, ChangeIsSeenByEveryClientAndUsedByTheNextRun)
{
    const CProviderMachine machine;
    machine.SetScript(kScriptOfTwoAdapters);
    EXPECT_EQ(0u, Zebdiag(L"set --adapter ALPHA --test 9 --coverage 40").ExitCode);
    ComPtr<IWbemClassObject> setting;
    ASSERT_EQ(S_OK, CWmiClient().Get(L"Tolva_DiagSetting.SettingID=\"9@ALPHA\"", setting));
    EXPECT_EQ(L"40", PropertyText(setting.Get(), L"PercentOfTestCoverage"));
    EXPECT_EQ(std::vector<std::string>{"now: 40"}, RunScript(L"set.vbs", L"9@ALPHA"));

    machine.SetNumber(L"ZebDiag", L"CheckTime", 1);
    machine.SetNumber(L"ZebDiag", L"MaxPktsRcvd", 1);
    EXPECT_EQ(0u, Zebdiag(L"run --adapter ALPHA --test 9").ExitCode);
    EXPECT_EQ(L"40", AllResults(CWmiClient()).at(L"9@ALPHA").at(L"PercentOfTestCoverage"));
}
} // namespace
