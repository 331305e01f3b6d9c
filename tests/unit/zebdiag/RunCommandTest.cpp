// The run command, from the arguments to what is printed and the exit code.
#include "CommandsFixture.h"
#include "tests/support/CaseName.h"

namespace zebdiag
{
namespace
{
using nlohmann::json;

class RunCommandTest : public CommandsTest
{
};

TEST_F(RunCommandTest, RunAllRunsTheOrdinaryTestsOfEveryAdapter)
{
    EXPECT_EQ(Run({L"run", L"--all"}), ExitCode::Passed);
    EXPECT_EQ(
        m_console.Output,
        L"3 tests, usually some seconds each.\n"
        L"Ordinary tests leave the adapter's traffic alone, unless their description says otherwise.\n"
        L"Left out, because they take long and load the network: Sender on Ethernet 2. Run them by name.\n"
        L"  Link on Ethernet: passed, 0 s\n"
        L"  Link on Ethernet 2: passed, 0 s\n"
        L"  Speed on Ethernet 2: passed, 0 s\n"
        L"PASSED: 3 passed.\n");
}

TEST_F(RunCommandTest, VerdictOfASeriesIsItsGravestOutcome)
{
    m_world->Tests[L"1@{BBBB}"].Run = [this]
    {
        CLockScope lock(m_world->Lock());
        m_world->Results[L"1@{BBBB}"].Lines = {L"t|Link|No cable.", L"t|Link|Plug it in."};
        return TestState::Failed;
    };
    m_world->Tests[L"2@{BBBB}"].InUse = true;
    EXPECT_EQ(Run({L"run", L"--all"}), ExitCode::Failed);
    EXPECT_NE(m_console.Output.find(L"  Link on Ethernet 2: failed, 0 s\n"
                                    L"    No cable.\n"
                                    L"    Plug it in.\n"
                                    L"  Speed on Ethernet 2: busy\n"
                                    L"    The test is running already."),
              std::wstring::npos)
        << Utf8Text(m_console.Output);
    EXPECT_TRUE(m_console.Output.ends_with(L"FAILED: 1 passed, 1 failed, 1 busy.\n"));
}

struct OneRunCase
{
    const char* name;
    TestState state;
    ExitCode code;
    const wchar_t* verdict;
};

class OneRunTest : public CommandsTest, public testing::WithParamInterface<OneRunCase>
{
};

TEST_P(OneRunTest, EndsWithTheVerdict)
{
    m_world->Tests[L"2@{BBBB}"].Run = [] { return GetParam().state; };
    EXPECT_EQ(Run({L"run", L"--test", L"speed"}), GetParam().code);
    EXPECT_TRUE(m_console.Output.ends_with(GetParam().verdict)) << Utf8Text(m_console.Output);
}

INSTANTIATE_TEST_SUITE_P(Outcomes, OneRunTest,
                         testing::Values(OneRunCase{"Passed", TestState::Passed, ExitCode::Passed,
                                                    L"PASSED: Speed on Ethernet 2.\n"},
                                         OneRunCase{"Failed", TestState::Failed, ExitCode::Failed,
                                                    L"FAILED: Speed on Ethernet 2.\n"},
                                         OneRunCase{"Stopped", TestState::Stopped, ExitCode::Stopped,
                                                    L"STOPPED: Speed on Ethernet 2.\n"},
                                         OneRunCase{"Unfinished", TestState::Unknown, ExitCode::CouldNotRun,
                                                    L"COULD NOT RUN: Speed on Ethernet 2.\n"}),
                         NameOf<OneRunCase>);

TEST_F(RunCommandTest, BusyTestHasItsExitCode)
{
    m_world->Tests[L"2@{BBBB}"].InUse = true;
    EXPECT_EQ(Run({L"run", L"--test", L"speed"}), ExitCode::Busy);
    EXPECT_TRUE(m_console.Output.ends_with(L"BUSY: Speed on Ethernet 2.\n"));
}

TEST_F(RunCommandTest, UnknownNamesHaveTheirExitCode)
{
    EXPECT_EQ(Run({L"run", L"--test", L"teleport"}), ExitCode::NotFound);
    EXPECT_EQ(Run({L"run", L"--adapter", L"wifi", L"--all"}), ExitCode::NotFound);
    EXPECT_TRUE(m_world->Calls.empty());
}

TEST_F(RunCommandTest, NothingButPacketTestsIsNothingToRun)
{
    m_world->Tests.erase(L"1@{BBBB}");
    m_world->Tests.erase(L"2@{BBBB}");
    EXPECT_EQ(Run({L"run", L"--adapter", L"fabrikam", L"--all"}), ExitCode::NotFound);
    EXPECT_EQ(m_console.Errors.substr(0, 36), L"zebdiag: There is no test to run.\nSe");
}

struct AnnounceCase
{
    const char* name;
    std::vector<std::wstring> more;
    std::optional<unsigned> fullRunSeconds;
    CSettingValues setting;
    const wchar_t* length;
};

class AnnounceTest : public CommandsTest, public testing::WithParamInterface<AnnounceCase>
{
};

// Before a run that lasts it is said how long it may take and what it does to traffic.
TEST_P(AnnounceTest, TellsLengthAndTraffic)
{
    m_fullRunSeconds = GetParam().fullRunSeconds;
    m_world->Settings[L"9@{BBBB}"] = GetParam().setting;
    std::vector<std::wstring> arguments = {L"run", L"--test", L"sender"};
    arguments.insert(arguments.end(), GetParam().more.begin(), GetParam().more.end());
    EXPECT_EQ(Run(arguments), ExitCode::Passed);
    EXPECT_EQ(Utf8Text(m_console.Output.substr(0, m_console.Output.find(L"  Sender on Ethernet 2: "))),
              Utf8Text(L"Sender on Ethernet 2\n    Looks at Sender.\n    " + std::wstring(GetParam().length) +
                       L"\n    Other traffic on the adapter can become slower while it runs.\n"));
}

INSTANTIATE_TEST_SUITE_P(
    Lengths, AnnounceTest,
    testing::Values(
        AnnounceCase{"AsSet",
                     {},
                     100,
                     {true, true, 100},
                     L"Takes up to 1 min 40 s; less if enough packets come sooner."},
        AnnounceCase{"CoverageOfTheSetting",
                     {},
                     100,
                     {true, true, 30},
                     L"Takes up to 30 s; less if enough packets come sooner."},
        AnnounceCase{"CoverageOfTheCommand",
                     {L"--coverage", L"50"},
                     200,
                     {true, true, 30},
                     L"Takes up to 1 min 40 s; less if enough packets come sooner."},
        AnnounceCase{"NoQuick", {L"--no-quick"}, 100, {true, true, 100}, L"Takes up to 1 min 40 s."},
        AnnounceCase{"NotQuickAsSet", {}, 100, {false, true, 100}, L"Takes up to 1 min 40 s."},
        AnnounceCase{"NoReportNoEarlyEnd", {}, 100, {true, false, 100}, L"Takes up to 1 min 40 s."},
        AnnounceCase{"ConfiguredElsewhere",
                     {},
                     std::nullopt,
                     {false, true, 50},
                     L"Takes up to about 50 s, unless that computer is configured otherwise."}),
    NameOf<AnnounceCase>);

TEST_F(RunCommandTest, OrdinaryTestTakesNoNoticeOfPacketOptions)
{
    EXPECT_EQ(Run({L"run", L"--test", L"speed", L"--coverage", L"50", L"--no-quick"}), ExitCode::Passed);
    EXPECT_NE(m_console.Output.find(
                  L"This test has no settings: --coverage, --no-quick and --profile make no difference."),
              std::wstring::npos);
    EXPECT_TRUE(m_world->Puts.empty());
}

TEST_F(RunCommandTest, OrdinaryTestsTakeNoNoticeOfPacketOptions)
{
    EXPECT_EQ(Run({L"run", L"--all", L"--coverage", L"50"}), ExitCode::Passed);
    EXPECT_NE(m_console.Output.find(
                  L"These tests have no settings: --coverage, --no-quick and --profile make no difference."),
              std::wstring::npos);
}

TEST_F(RunCommandTest, PacketOptionsAreGivenToTheRun)
{
    EXPECT_EQ(Run({L"run", L"--test", L"sender", L"--coverage", L"50", L"--no-quick", L"--json"}),
              ExitCode::Passed);
    const json setting = Document()["runs"][0]["result"]["setting"];
    EXPECT_EQ(setting["coverage"], 50);
    EXPECT_EQ(setting["quick"], false);
    EXPECT_EQ(m_world->Settings[L"9@{BBBB}"].Coverage, 100) << "put back";
}

TEST_F(RunCommandTest, InterruptEndsTheSeries)
{
    m_world->Tests[L"1@{BBBB}"].Run = [this]
    {
        SetEvent(m_stop.Get());
        return TestState::Failed;
    };
    EXPECT_EQ(Run({L"run", L"--all", L"--serial", L"--json"}), ExitCode::Stopped);
    const json document = Document();
    EXPECT_EQ(document["verdict"], "stopped");
    EXPECT_EQ(document["runs"].size(), 2u);
    ASSERT_EQ(document["notRun"].size(), 1u);
    EXPECT_EQ(document["notRun"][0]["key"], "2@{BBBB}");
}

TEST_F(RunCommandTest, TimeoutIsThatOfTheWholeSeries)
{
    CHandle mayEnd(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    m_world->Tests[L"1@{BBBB}"].Run = [&]
    {
        m_now = 10000;
        WaitForSingleObject(mayEnd.Get(), INFINITE);
        return TestState::Stopped;
    };
    m_world->Tests[L"1@{BBBB}"].Stop = [&] { return SetEvent(mayEnd.Get()) != FALSE; };
    EXPECT_EQ(Run({L"run", L"--all", L"--serial", L"--timeout", L"10"}), ExitCode::Stopped);
    EXPECT_NE(m_console.Output.find(L"The time given with --timeout was over."), std::wstring::npos);
    EXPECT_TRUE(m_console.Output.ends_with(L"STOPPED: 1 passed, 1 stopped, 1 not run.\n"))
        << Utf8Text(m_console.Output);
}

TEST_F(RunCommandTest, TimeoutEndsASeriesOfTestsThatEndByThemselves)
{
    m_world->Tests[L"1@{BBBB}"].Run = [this]
    {
        m_now = 10000;
        return TestState::Passed;
    };
    EXPECT_EQ(Run({L"run", L"--all", L"--serial", L"--timeout", L"10"}), ExitCode::Stopped);
    EXPECT_TRUE(m_console.Output.ends_with(L"STOPPED: 2 passed, 1 not run.\n")) << Utf8Text(m_console.Output);
}

TEST_F(RunCommandTest, InterruptBeforeTheFirstTestRunsNone)
{
    SetEvent(m_stop.Get());
    EXPECT_EQ(Run({L"run", L"--all"}), ExitCode::Stopped);
    EXPECT_TRUE(m_console.Output.ends_with(L"STOPPED: 3 not run.\n")) << Utf8Text(m_console.Output);
    EXPECT_TRUE(m_world->Calls.empty());
}
} // namespace
} // namespace zebdiag
