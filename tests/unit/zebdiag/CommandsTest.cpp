// The program but for its run command, from the arguments to what is printed and the exit code.
#include "CommandsFixture.h"

namespace zebdiag
{
namespace
{
using nlohmann::json;

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
    EXPECT_EQ(tests[1]["number"], 10);
    EXPECT_EQ(tests[2]["number"], 16);
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
        EXPECT_EQ(document["version"], 2);
        EXPECT_EQ(document["command"], Utf8Text(arguments[0]));
        EXPECT_EQ(m_console.Errors, L"") << "a program that reads both streams must find the document alone";
    }
}

TEST_F(CommandsTest, FailureGoesToStandardErrorWithItsExitCode)
{
    m_world->Failures[L"Enum Tolva_DiagTest"] = {wmi::ProviderLoadFailure, L"No agent."};
    EXPECT_EQ(Run({L"list"}), ExitCode::NotReachable);
    EXPECT_EQ(m_console.Output, L"");
    EXPECT_EQ(m_console.Errors,
              L"zebdiag: The diagnostics provider could not be started on this computer.\n"
              L"The provider says: No agent.\n"
              L"Switch the provider's trace on: as an administrator set DebugLevel (REG_DWORD) of "
              L"HKEY_LOCAL_MACHINE\\SOFTWARE\\Veltrane\\Halvern\\ZEB\\ZebDiag to 2, try again, and "
              L"read C:\\ProgramData\\ZEB\\ZebDiagDbg.log.\n"
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

TEST_F(CommandsTest, LostOutputIsToldAndIsNoSuccess)
{
    m_console.OutputError = ERROR_DISK_FULL;
    for (const auto& arguments :
         std::vector<std::vector<std::wstring>>{{L"list"}, {L"report", L"--json"}, {L"metrics"}, {L"help"}})
    {
        m_console.Errors.clear();
        EXPECT_EQ(Run(arguments), ExitCode::CouldNotRun);
        EXPECT_EQ(m_console.Errors, L"zebdiag: The output could not be written completely.\n"
                                    L"See whether the disk that it goes to is full.\n"
                                    L"(Status 0x80070070.)\n");
    }
}

TEST_F(CommandsTest, LostOutputDoesNotHideAnotherFailure)
{
    m_console.OutputError = ERROR_DISK_FULL;
    m_world->Failures[L"Enum Tolva_DiagTest"] = {wmi::InvalidClass, L""};
    EXPECT_EQ(Run({L"results", L"--json"}), ExitCode::NotReachable);
    EXPECT_TRUE(m_console.Errors.starts_with(L"zebdiag: The output could not be written completely.\n"));
    m_console.Errors.clear();
    EXPECT_EQ(Run({L"results"}), ExitCode::NotReachable);
    EXPECT_TRUE(m_console.Errors.starts_with(L"zebdiag: The class Tolva_DiagTest is not known"));
    EXPECT_NE(m_console.Errors.find(L"zebdiag: The output could not be written completely.\n"),
              std::wstring::npos);
}

TEST_F(CommandsTest, WhoWatchesADocumentBeingMadeSeesWhatGoesOn)
{
    m_console.ErrorsAreWatched = true;
    EXPECT_EQ(Run({L"run", L"--test", L"speed", L"--json"}), ExitCode::Passed);
    EXPECT_TRUE(m_console.Errors.starts_with(L"Speed on Ethernet 2\n"));
    EXPECT_EQ(Document()["verdict"], "passed");
    m_console.Errors.clear();
    EXPECT_EQ(Run({L"results", L"--test", L"warp", L"--json"}), ExitCode::NotFound);
    EXPECT_TRUE(m_console.Errors.starts_with(L"zebdiag: No test is called \"warp\"."));
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
    EXPECT_EQ(m_console.Errors,
              L"zebdiag: Name a test with --test, or take all with --all.\nTry: zebdiag run --help\n");
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
    EXPECT_EQ(m_console.Output, L"Sender on Ethernet 2: It was told to stop but still runs. "
                                L"\"zebdiag list\" shows when it has ended.\n");
}

TEST_F(CommandsTest, StopThatFailsSaysAllThatIsKnown)
{
    Occupy(L"9@{BBBB}");
    m_world->Failures[L"DiscontinueTest"] = {wmi::Failed, L"Out of order."};
    EXPECT_EQ(Run({L"stop"}), ExitCode::CouldNotRun);
    EXPECT_TRUE(m_console.Output.starts_with(L"Sender on Ethernet 2: ")) << Utf8Text(m_console.Output);
    EXPECT_TRUE(m_console.Output.ends_with(L"\nThe provider says: Out of order.\n(Status 0x80041001.)\n"))
        << Utf8Text(m_console.Output);
}

TEST_F(CommandsTest, StopOfNothing)
{
    EXPECT_EQ(Run({L"stop"}), ExitCode::Passed);
    EXPECT_EQ(m_console.Output, L"No test is running.\n");
}

// As without a name: that there was nothing to stop is no failure.
TEST_F(CommandsTest, StopOfANamedTestThatDoesNotRun)
{
    EXPECT_EQ(Run({L"stop", L"--test", L"link"}), ExitCode::Passed);
    EXPECT_EQ(m_console.Output, L"Link on Ethernet is not running.\nLink on Ethernet 2 is not running.\n");
    EXPECT_EQ(m_console.Errors, L"");
}

TEST_F(CommandsTest, StopThatIsRefused)
{
    Occupy(L"9@{BBBB}");
    m_world->Tests[L"9@{BBBB}"].Stop = [] { return false; };
    EXPECT_EQ(Run({L"stop"}), ExitCode::CouldNotRun);
    EXPECT_EQ(
        m_console.Output,
        L"Sender on Ethernet 2: The provider did not stop the test. Its trace tells why; \"zebdiag doctor\" says where "
        L"it is.\n");
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
                                L"  Test  State   Started              Ended     Findings\n"
                                L"  Link  Passed  2024-05-01 13:45:10  13:45:11\n"
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
    EXPECT_NE(m_console.Errors.find(
                  L"zebdiag: Sender on Ethernet 2: The provider on this computer did not take the setting.\n"
                  L"The provider says: Read only."),
              std::wstring::npos);
}

TEST_F(CommandsTest, ClearDeletesResults)
{
    m_world->Results[L"1@{AAAA}"] = {};
    m_world->Results[L"1@{BBBB}"] = {};
    m_world->Results[L"2@{BBBB}"] = {};
    EXPECT_EQ(Run({L"clear", L"--test", L"link"}), ExitCode::Passed);
    EXPECT_EQ(m_console.Output, L"Cleared: 2 results.\n");
    EXPECT_EQ(m_world->Results.size(), 1u);
}

TEST_F(CommandsTest, ClearOfNothing)
{
    EXPECT_EQ(Run({L"clear", L"--all"}), ExitCode::Passed);
    EXPECT_EQ(m_console.Output, L"There was no result to clear.\n");
    EXPECT_TRUE(m_world->Calls.empty());
}

TEST_F(CommandsTest, ClearTellsWhatAStoreThatRefusesMeans)
{
    m_world->Results[L"1@{BBBB}"] = {TestState::Passed, 100, {}, {}};
    m_seams.Surroundings.StoreRefuses = [](const CWmiSession&) { return true; };
    EXPECT_EQ(Run({L"clear", L"--all"}), ExitCode::CouldNotRun);
    EXPECT_TRUE(m_world->Results.empty());
    EXPECT_EQ(m_console.Output,
              L"Link on Ethernet 2: The result is gone from the provider's memory, but a stored copy of it "
              L"stays: you "
              L"may not change the provider's data folder. It is back when the provider starts next. An "
              L"administrator, or anyone else who may change files in that folder, can then remove it with "
              L"\"zebdiag clear\".\nCleared: 0 results.\n");
}

TEST_F(CommandsTest, ClearThatTheServiceRefusesLeavesTheResult)
{
    m_world->Results[L"1@{BBBB}"] = {TestState::Passed, 100, {}, {}};
    m_world->Failures[L"ClearResults"] = {E_ACCESSDENIED, L""};
    EXPECT_EQ(Run({L"clear", L"--all"}), ExitCode::NotReachable);
    EXPECT_EQ(m_console.Output,
              L"Link on Ethernet 2: Access to root\\cimv2 on this computer was denied. Run "
              L"zebdiag as an administrator, or for another computer name an administrator of "
              L"it with --user.\n(Status 0x80070005.)\nCleared: 0 results.\n");
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
              L"Cleared: 1 result.\n");
}
} // namespace
} // namespace zebdiag
