// Clients that nobody here wrote: the system's scripting objects, driven by cscript.
#include "tests/system/provider/ProviderFixture.h"

#include "tests/support/CaseName.h"

#include <gtest/gtest.h>

namespace
{
using Lines = std::vector<std::string>;

TEST(Script, RunsATest)
{
    const CProviderMachine machine;
    machine.SetScript(kScriptOfTwoAdapters);
    EXPECT_EQ(Lines{"TestState 2"}, RunScript(L"run.vbs", L"1@BETA BETA"));
    EXPECT_EQ(Lines{"TestState 3"}, RunScript(L"run.vbs", L"2@ALPHA ALPHA"));
}

struct StopCase
{
    const char* name;
    const char* test;
    const wchar_t* run;
    const wchar_t* arguments;
};

class ScriptStop : public testing::TestWithParam<StopCase>
{
};

TEST_P(ScriptStop, EndsARunThatWasStartedElsewhere)
{
    const CProviderMachine machine;
    SetCountedScript(machine, R"([ { "Key": "ALPHA", "Tests": [
        { "TestID": 3, "Duration": "until stopped" }, { "TestID": 9 } ] } ])");
    ShortPolls(machine);
    CRunningProgram run(ZebdiagCommand(GetParam().run));
    ASSERT_TRUE(WaitForCalls(machine, GetParam().test, "RunDiagTest", 1));

    EXPECT_EQ((Lines{"ReturnValue 0", "Stopped"}), RunScript(L"discontinue.vbs", GetParam().arguments));
    const CRunResult stopped = run.Finish();
    EXPECT_EQ(2u, stopped.ExitCode) << stopped.Output;
    EXPECT_NE(std::string::npos, stopped.Output.find("STOPPED: ")) << stopped.Output;
    EXPECT_EQ("stopped", StateOf(ZebdiagJson(L"results"), GetParam().test));
}

INSTANTIATE_TEST_SUITE_P(
    Tests, ScriptStop,
    testing::Values(StopCase{"Ordinary", "3@ALPHA", L"run --adapter ALPHA --test 3", L"3@ALPHA ALPHA"},
                    StopCase{"Sender", "9@ALPHA", L"run --adapter ALPHA --test 9", L"9@ALPHA ALPHA"}),
    NameOf<StopCase>);

TEST(Script, ClearsTheResultsOfOneTest)
{
    const CProviderMachine machine;
    machine.SetScript(kScriptOfTwoAdapters);
    RunScript(L"run.vbs", L"1@BETA BETA");
    RunScript(L"run.vbs", L"1@ALPHA ALPHA");

    EXPECT_EQ((Lines{"ReturnValue 0", "left: 1@ALPHA"}), RunScript(L"clear.vbs", L"1@BETA BETA"));
    EXPECT_EQ((std::vector<std::wstring>{L"1@ALPHA"}),
              PropertyTexts(CWmiClient().Instances(L"Tolva_DiagResult"), L"DiagnosticName"));
}

// In Wine, Put_ of the scripting objects does nothing and fails as an action that is not supported (445).
TEST(Script, ChangesASettingWhereThePlatformsPutWorks)
{
    const CProviderMachine machine;
    machine.SetScript(kScriptOfTwoAdapters);

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
