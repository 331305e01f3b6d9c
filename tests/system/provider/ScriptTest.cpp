// Clients that nobody here wrote: the system's scripting objects, driven by cscript.
#include "tests/system/provider/SharedMachine.h"

#include <algorithm>

namespace
{
using Lines = std::vector<std::string>;

TEST_F(Served, ScriptRunsATest)
{
    EXPECT_EQ(Lines{"TestState 2"}, RunScript(L"run.vbs", L"1@BETA BETA"));
    EXPECT_EQ(Lines{"TestState 3"}, RunScript(L"run.vbs", L"2@ALPHA ALPHA"));
}

// A script that names no language gets the computer's.
TEST_F(Served, ScriptShowsEachTestWithItsName)
{
    const bool isGerman = PRIMARYLANGID(GetSystemDefaultLangID()) == LANG_GERMAN;
    const Lines names = RunScript(L"captions.vbs");
    EXPECT_EQ(5u, names.size());
    EXPECT_EQ(1, std::count(names.begin(), names.end(), isGerman ? "1@BETA: Verbindung" : "1@BETA: Link"));
}

// With the built-in values the sender would be polled a hundred times. What a run has found is a list, which
// Wine's scripting objects do not give to scripts.
TEST_F(Served, ScriptRunsATestWithItsSetting)
{
    Machine().SetNumber(L"ZebDiag", L"CheckTime", 1);
    Machine().SetNumber(L"ZebDiag", L"TimeoutSndRsp", 100);
    Machine().SetNumber(L"ZebDiag", L"MaxPktsRcvd", 1000000);
    const CWmiClient client;
    ComPtr<IWbemClassObject> setting;
    ASSERT_EQ(S_OK, client.Get(L"Tolva_DiagSetting.SettingID=\"9@ALPHA\"", setting));
    ASSERT_EQ(S_OK, PutCoverage(client, setting.Get(), 1));
    const auto polls = [] { return CallsOf(Machine(), "9@ALPHA", "GetDiagTestStatistics"); };
    const unsigned before = polls();
    const Lines sender = RunScript(L"run-with-setting.vbs", L"9@ALPHA");
    EXPECT_EQ(1, std::count(sender.begin(), sender.end(), "TestState 2"));
    EXPECT_EQ(before + 1, polls());

    EXPECT_EQ(Lines{"TestState 2"}, RunScript(L"run-with-setting.vbs", L"1@BETA"));
    const Lines failed = RunScript(L"run-with-setting.vbs", L"2@ALPHA");
    EXPECT_EQ(1, std::count(failed.begin(), failed.end(), "TestState 3"));
}

TEST_F(Served, ScriptClearsTheResultsOfOneTest)
{
    RunScript(L"run.vbs", L"1@BETA BETA");
    RunScript(L"run.vbs", L"1@ALPHA ALPHA");

    EXPECT_EQ((Lines{"ReturnValue 0", "left: 1@ALPHA"}), RunScript(L"clear.vbs", L"1@BETA BETA"));
    EXPECT_EQ((std::vector<std::wstring>{L"1@ALPHA"}),
              PropertyTexts(CWmiClient().Instances(L"Tolva_DiagResult"), L"DiagnosticName"));
}

// In Wine, Put_ of the scripting objects does nothing and fails as an action that is not supported (445).
TEST_F(Served, ScriptChangesASettingWhereThePlatformsPutWorks)
{
    const Lines answer = RunScript(L"set.vbs", L"9@ALPHA 40");
    ComPtr<IWbemClassObject> setting;
    ASSERT_EQ(S_OK, CWmiClient().Get(L"Tolva_DiagSetting.SettingID=\"9@ALPHA\"", setting));
    const auto coverage = PropertyText(setting.Get(), L"PercentOfTestCoverage");
    if (answer == Lines{"before: 100", "not put: 1bd", "now: 100", "to put: 40"})
    {
        EXPECT_EQ(L"100", coverage);
        GTEST_SKIP() << "The platform's scripting objects do not put instances.";
    }
    EXPECT_EQ((Lines{"before: 100", "now: 40", "to put: 40"}), answer);
    EXPECT_EQ(L"40", coverage);
}
} // namespace
