// The whole program, from the arguments to what is printed and the exit code.
#include "Common/src/com/Text.h"
#include "FakeConsole.h"
#include "FakeDiagnostics.h"
#include "tests/support/CaseName.h"
#include "tools/zebdiag/Application.h"

#include <atomic>
#include <nlohmann/json.hpp>

namespace zebdiag
{
namespace
{
using nlohmann::json;

class CommandsTest : public testing::Test
{
  protected:
    CommandsTest()
    {
        m_seams.Connect = [this](const CTarget& target, const std::wstring& password)
        {
            m_password = password;
            return CWmiSession(m_world, target);
        };
        m_seams.Control.Stop = m_stop.Get();
        m_seams.Control.Abandon = m_abandon.Get();
        m_seams.Control.PollMilliseconds = 1;
        m_seams.Control.Now = [this] { return m_now.load(); };
        m_seams.Surroundings.Names = [](const CWmiSession&) {
            return AdapterNames{{L"{AAAA}", {L"Ethernet", L"Contoso"}},
                                {L"{BBBB}", {L"Ethernet 2", L"Fabrikam"}}};
        };
        m_seams.Surroundings.ServingProcesses = [](const CWmiSession&)
        { return std::vector<unsigned long>{312}; };
        m_seams.Surroundings.FullRunSeconds = [this](const CWmiSession&) { return m_fullRunSeconds; };

        m_world->Add(L"1@{AAAA}", L"Link");
        m_world->Add(L"1@{BBBB}", L"Link");
        m_world->Add(L"2@{BBBB}", L"Speed");
        m_world->Add(L"9@{BBBB}", L"Sender", true);
    }

    ExitCode Run(const std::vector<std::wstring>& arguments)
    {
        return RunApplication(arguments, m_console, m_seams);
    }
    json Document() const { return json::parse(Utf8Text(m_console.Output)); }

    // The test runs, in another program.
    void Occupy(const wchar_t* key)
    {
        m_world->Tests[key].InUse = true;
        m_world->Results[key] = {TestState::InProgress, 40, {}, {}};
        m_world->Tests[key].Stop = [this, key]
        {
            m_world->Tests[key].InUse = false;
            m_world->Results[key].State = TestState::Stopped;
            return true;
        };
    }

    ComPtr<CFakeDiagnostics> m_world = MakeCom<CFakeDiagnostics>();
    CFakeConsole m_console;
    CHandle m_stop{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    CHandle m_abandon{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    std::atomic<unsigned long long> m_now = 0;
    std::optional<unsigned> m_fullRunSeconds = 100;
    std::wstring m_password;
    CApplicationSeams m_seams;
};

TEST_F(CommandsTest, ListGroupsTestsByAdapter)
{
    EXPECT_EQ(Run({L"list"}), ExitCode::Passed);
    EXPECT_EQ(m_console.Output, L"Ethernet (Contoso)\n"
                                L"  {AAAA}\n"
                                L"  Number  Test  Description\n"
                                L"  1       Link  Looks at Link.\n"
                                L"\n"
                                L"Ethernet 2 (Fabrikam)\n"
                                L"  {BBBB}\n"
                                L"  Number  Test    Description\n"
                                L"  1       Link    Looks at Link.\n"
                                L"  2       Speed   Looks at Speed.\n"
                                L"  9       Sender  Looks at Sender.\n"
                                L"\n"
                                L"4 tests on 2 adapters of WS42, delivered by Drevok.EXE (process 312).\n");
    EXPECT_EQ(m_console.Errors, L"");
}

TEST_F(CommandsTest, ListSortsTestsByNumberNotByText)
{
    m_world->Add(L"10@{AAAA}", L"Sixteenth");
    m_world->Add(L"A@{AAAA}", L"Tenth");
    EXPECT_EQ(Run({L"list", L"--json", L"--adapter", L"contoso"}), ExitCode::Passed);
    const json tests = Document()["adapters"][0]["tests"];
    ASSERT_EQ(tests.size(), 3u);
    EXPECT_EQ(tests[1]["number"], "A");
    EXPECT_EQ(tests[2]["number"], "10");
}

TEST_F(CommandsTest, JsonStandsAloneOnStandardOutput)
{
    for (const auto& arguments :
         std::vector<std::vector<std::wstring>>{{L"list", L"--json"},
                                                {L"run", L"--all", L"--json"},
                                                {L"run", L"--test", L"sender", L"--json"},
                                                {L"stop", L"--json"},
                                                {L"results", L"--json"},
                                                {L"settings", L"--json"},
                                                {L"set", L"--test", L"9", L"--quick", L"on", L"--json"},
                                                {L"clear", L"--all", L"--json"}})
    {
        m_console.Output.clear();
        EXPECT_EQ(Run(arguments), ExitCode::Passed);
        const json document = json::parse(Utf8Text(m_console.Output), nullptr, false);
        ASSERT_FALSE(document.is_discarded()) << Utf8Text(m_console.Output);
        EXPECT_EQ(document["version"], 1);
        EXPECT_EQ(document["command"], Utf8Text(arguments[0]));
        EXPECT_EQ(m_console.Errors, L"") << "a program that reads both streams must find the document alone";
    }
}

TEST_F(CommandsTest, FailureGoesToStandardErrorWithItsExitCode)
{
    m_world->Failures[L"Enum Tolva_DiagTest"] = {wmi::ProviderLoadFailure, L"No agent."};
    EXPECT_EQ(Run({L"list"}), ExitCode::NotReachable);
    EXPECT_EQ(m_console.Output, L"");
    EXPECT_EQ(m_console.Errors, L"zebdiag: The diagnostics provider could not be started on this computer.\n"
                                L"The provider says: No agent.\n"
                                L"Register it there as an administrator: \"Drevok.EXE /RegServer\". If it is "
                                L"registered, its trace log "
                                L"tells why it does not start.\n"
                                L"(Status 0x80041013.)\n");
}

TEST_F(CommandsTest, FailureIsADocumentToo)
{
    m_world->Failures[L"Enum Tolva_DiagTest"] = {wmi::InvalidClass, L""};
    EXPECT_EQ(Run({L"results", L"--json"}), ExitCode::NotReachable);
    EXPECT_EQ(Document()["error"]["status"], "0x80041010");
    EXPECT_EQ(Document()["exitCode"], 6);
    EXPECT_EQ(m_console.Errors, L"");
}

TEST_F(CommandsTest, WhoWatchesADocumentBeingMadeSeesWhatGoesOn)
{
    m_console.ErrorsAreWatched = true;
    EXPECT_EQ(Run({L"run", L"--test", L"speed", L"--json"}), ExitCode::Passed);
    EXPECT_TRUE(m_console.Errors.starts_with(L"Speed on Ethernet 2\n"));
    EXPECT_EQ(Document()["verdict"], "passed");
    m_console.Errors.clear();
    EXPECT_EQ(Run({L"stop", L"--test", L"speed", L"--json"}), ExitCode::CouldNotRun);
    EXPECT_EQ(m_console.Errors, L"zebdiag: The test is not running.\n");
}

TEST_F(CommandsTest, PasswordIsAskedForWhereAUserIsNamed)
{
    EXPECT_EQ(Run({L"list", L"--computer", L"WS42", L"--user", L"EXAMPLE\\admin"}), ExitCode::Passed);
    EXPECT_EQ(m_console.Asked, L"Password of EXAMPLE\\admin: ");
    EXPECT_EQ(m_password, L"secret");
}

TEST_F(CommandsTest, PasswordIsNotAskedForOtherwise)
{
    EXPECT_EQ(Run({L"list", L"--computer", L"WS42"}), ExitCode::Passed);
    EXPECT_EQ(m_console.Asked, L"");
}

TEST_F(CommandsTest, UsageErrorConnectsNowhere)
{
    m_seams.Connect = [](const CTarget&, const std::wstring&) -> CWmiSession
    { throw std::runtime_error("connected"); };
    EXPECT_EQ(Run({L"run"}), ExitCode::Usage);
    EXPECT_EQ(m_console.Output, L"");
    EXPECT_EQ(m_console.Errors, L"zebdiag: --test or --all is required\nTry: zebdiag run --help\n");
}

TEST_F(CommandsTest, RunAllRunsTheOrdinaryTestsOfEveryAdapter)
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

TEST_F(CommandsTest, VerdictOfASeriesIsItsGravestOutcome)
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

TEST_F(CommandsTest, BusyTestHasItsExitCode)
{
    m_world->Tests[L"2@{BBBB}"].InUse = true;
    EXPECT_EQ(Run({L"run", L"--test", L"speed"}), ExitCode::Busy);
    EXPECT_TRUE(m_console.Output.ends_with(L"BUSY: Speed on Ethernet 2.\n"));
}

TEST_F(CommandsTest, UnknownNamesHaveTheirExitCode)
{
    EXPECT_EQ(Run({L"run", L"--test", L"teleport"}), ExitCode::NotFound);
    EXPECT_EQ(Run({L"run", L"--adapter", L"wifi", L"--all"}), ExitCode::NotFound);
    EXPECT_TRUE(m_world->Calls.empty());
}

TEST_F(CommandsTest, NothingButPacketTestsIsNothingToRun)
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
    EXPECT_EQ(Utf8Text(m_console.Output.substr(0, m_console.Output.find(L"  Sender on Ethernet 2: passed"))),
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
                     L"Takes up to about 50 s, where that computer is not configured otherwise."}),
    NameOf<AnnounceCase>);

TEST_F(CommandsTest, OrdinaryTestTakesNoNoticeOfPacketOptions)
{
    EXPECT_EQ(Run({L"run", L"--test", L"speed", L"--coverage", L"50", L"--no-quick"}), ExitCode::Passed);
    EXPECT_NE(
        m_console.Output.find(L"This test has no settings: --coverage and --no-quick make no difference."),
        std::wstring::npos);
    EXPECT_TRUE(m_world->Puts.empty());
}

TEST_F(CommandsTest, PacketOptionsAreGivenToTheRun)
{
    EXPECT_EQ(Run({L"run", L"--test", L"sender", L"--coverage", L"50", L"--no-quick", L"--json"}),
              ExitCode::Passed);
    const json setting = Document()["runs"][0]["result"]["setting"];
    EXPECT_EQ(setting["coverage"], 50);
    EXPECT_EQ(setting["quick"], false);
    EXPECT_EQ(m_world->Settings[L"9@{BBBB}"].Coverage, 100) << "put back";
}

TEST_F(CommandsTest, InterruptEndsTheSeries)
{
    m_world->Tests[L"1@{BBBB}"].Run = [this]
    {
        SetEvent(m_stop.Get());
        return TestState::Failed;
    };
    EXPECT_EQ(Run({L"run", L"--all", L"--json"}), ExitCode::Stopped);
    const json document = Document();
    EXPECT_EQ(document["verdict"], "stopped");
    EXPECT_EQ(document["runs"].size(), 2u);
    ASSERT_EQ(document["notRun"].size(), 1u);
    EXPECT_EQ(document["notRun"][0]["key"], "2@{BBBB}");
}

TEST_F(CommandsTest, TimeoutIsThatOfTheWholeSeries)
{
    CHandle mayEnd(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    m_world->Tests[L"1@{BBBB}"].Run = [&]
    {
        m_now = 10000;
        WaitForSingleObject(mayEnd.Get(), INFINITE);
        return TestState::Stopped;
    };
    m_world->Tests[L"1@{BBBB}"].Stop = [&] { return SetEvent(mayEnd.Get()) != FALSE; };
    EXPECT_EQ(Run({L"run", L"--all", L"--timeout", L"10"}), ExitCode::Stopped);
    EXPECT_NE(m_console.Output.find(L"The time given with --timeout was over."), std::wstring::npos);
    EXPECT_TRUE(m_console.Output.ends_with(L"STOPPED: 1 passed, 1 stopped, 1 not run.\n"))
        << Utf8Text(m_console.Output);
}

TEST_F(CommandsTest, StopStopsWhatRuns)
{
    Occupy(L"9@{BBBB}");
    EXPECT_EQ(Run({L"stop"}), ExitCode::Passed);
    EXPECT_EQ(m_console.Output, L"Sender on Ethernet 2: Stopped.\n");
    ASSERT_EQ(m_world->Calls.size(), 1u);
    EXPECT_EQ(m_world->Calls[0].Method, L"DiscontinueTest");
}

TEST_F(CommandsTest, StopWaitsForTheEnd)
{
    Occupy(L"9@{BBBB}");
    m_world->Tests[L"9@{BBBB}"].Stop = [] { return true; };
    int looks = 0;
    m_seams.Control.Now = [&]
    {
        // The clock is looked at once before every wait.
        if (++looks == 4)
        {
            m_world->Tests[L"9@{BBBB}"].InUse = false;
            m_world->Results[L"9@{BBBB}"].State = TestState::Stopped;
        }
        return 0ULL;
    };
    EXPECT_EQ(Run({L"stop"}), ExitCode::Passed);
    EXPECT_EQ(looks, 4);
    EXPECT_EQ(m_console.Output, L"Sender on Ethernet 2: Stopped.\n");
}

TEST_F(CommandsTest, StopGivesUpAfterThirtySeconds)
{
    Occupy(L"9@{BBBB}");
    m_world->Tests[L"9@{BBBB}"].Stop = [] { return true; };
    m_seams.Control.Now = [this] { return m_now += 10000; };
    EXPECT_EQ(Run({L"stop"}), ExitCode::CouldNotRun);
    EXPECT_EQ(m_console.Output, L"Sender on Ethernet 2: It was told to stop but still runs.\n");
}

TEST_F(CommandsTest, StopOfNothing)
{
    EXPECT_EQ(Run({L"stop"}), ExitCode::Passed);
    EXPECT_EQ(m_console.Output, L"No test is running.\n");
}

TEST_F(CommandsTest, StopOfANamedTestThatDoesNotRun)
{
    EXPECT_EQ(Run({L"stop", L"--test", L"sender"}), ExitCode::CouldNotRun);
    EXPECT_EQ(m_console.Errors, L"zebdiag: The test is not running.\n");
}

TEST_F(CommandsTest, StopThatIsRefused)
{
    Occupy(L"9@{BBBB}");
    m_world->Tests[L"9@{BBBB}"].Stop = [] { return false; };
    EXPECT_EQ(Run({L"stop"}), ExitCode::CouldNotRun);
    EXPECT_EQ(m_console.Output,
              L"Sender on Ethernet 2: The provider did not stop the test. Its trace log tells why.\n");
}

TEST_F(CommandsTest, StopOfATestThatEndsMeanwhile)
{
    Occupy(L"9@{BBBB}");
    m_world->Tests[L"9@{BBBB}"].Stop = [this]
    {
        m_world->Tests[L"9@{BBBB}"].InUse = false;
        return false;
    };
    EXPECT_EQ(Run({L"stop"}), ExitCode::Passed);
    EXPECT_EQ(m_console.Output, L"Sender on Ethernet 2: It had ended already.\n");
}

TEST_F(CommandsTest, ResultsShowsWhatIsStored)
{
    m_world->Results[L"1@{AAAA}"] = {TestState::Passed, 100, {}, {}};
    EXPECT_EQ(Run({L"results"}), ExitCode::Passed);
    EXPECT_EQ(m_console.Output, L"Ethernet (Contoso)\n"
                                L"  Test  State   Started              Ended                Findings\n"
                                L"  Link  Passed  2024-05-01 13:45:10  2024-05-01 13:45:11\n"
                                L"\n"
                                L"1 result: 1 passed.\n");
}

TEST_F(CommandsTest, SettingsShowsTestsThatHaveAny)
{
    EXPECT_EQ(Run({L"settings"}), ExitCode::Passed);
    EXPECT_EQ(m_console.Output.substr(0, m_console.Output.find(L"\n\n")),
              L"Ethernet 2 (Fabrikam)\n  Test    Coverage  Quick  Report\n  Sender  100 %     on     on");
}

TEST_F(CommandsTest, SetChangesWhatIsGivenAndShowsIt)
{
    EXPECT_EQ(Run({L"set", L"--test", L"sender", L"--coverage", L"50", L"--report", L"off"}),
              ExitCode::Passed);
    const CSettingValues& values = m_world->Settings[L"9@{BBBB}"];
    EXPECT_EQ(values.Coverage, 50);
    EXPECT_EQ(values.Quick, true);
    EXPECT_EQ(values.Report, false);
    EXPECT_NE(m_console.Output.find(L"  Sender  50 %      on     off\n"), std::wstring::npos);
}

TEST_F(CommandsTest, SetOfATestWithoutSettings)
{
    EXPECT_EQ(Run({L"set", L"--test", L"speed", L"--coverage", L"50"}), ExitCode::CouldNotRun);
    EXPECT_NE(m_console.Errors.find(L"Speed on Ethernet 2 has no settings."), std::wstring::npos);
    EXPECT_TRUE(m_world->Puts.empty());
}

TEST_F(CommandsTest, SetThatTheProviderRefuses)
{
    m_world->Failures[L"Put"] = {wmi::Failed, L"Read only."};
    EXPECT_EQ(Run({L"set", L"--test", L"sender", L"--coverage", L"50"}), ExitCode::CouldNotRun);
    EXPECT_NE(m_console.Errors.find(L"did not take the setting.\nThe provider says: Read only."),
              std::wstring::npos);
}

TEST_F(CommandsTest, ClearDeletesResults)
{
    m_world->Results[L"1@{AAAA}"] = {};
    m_world->Results[L"1@{BBBB}"] = {};
    m_world->Results[L"2@{BBBB}"] = {};
    EXPECT_EQ(Run({L"clear", L"--test", L"link"}), ExitCode::Passed);
    EXPECT_EQ(m_console.Output, L"Cleared 2 results.\n");
    EXPECT_EQ(m_world->Results.size(), 1u);
}

TEST_F(CommandsTest, ClearOfNothing)
{
    EXPECT_EQ(Run({L"clear", L"--all"}), ExitCode::Passed);
    EXPECT_EQ(m_console.Output, L"There was no result to clear.\n");
    EXPECT_TRUE(m_world->Calls.empty());
}

// The method's answer does not tell that nothing was cleared.
TEST_F(CommandsTest, ClearOfARunningTestIsBusy)
{
    Occupy(L"9@{BBBB}");
    m_world->Results[L"1@{AAAA}"] = {};
    EXPECT_EQ(Run({L"clear", L"--all"}), ExitCode::Busy);
    EXPECT_EQ(m_console.Output,
              L"Sender on Ethernet 2: The result cannot be cleared while the test runs. Wait for its "
              L"end, or stop it.\n"
              L"Cleared 1 result.\n");
}
} // namespace
} // namespace zebdiag
