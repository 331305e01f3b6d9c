// The run command with several adapters: what a terminal shows, and what runs, stops and is put back beside
// each other.
#include "CommandsFixture.h"
#include "Gate.h"

#include <algorithm>

namespace zebdiag
{
namespace
{
std::wstring TextOf(const std::vector<CScreenLine>& frame)
{
    std::wstring text;
    for (const CScreenLine& line : frame)
    {
        std::wstring whole;
        for (const CPiece& piece : line)
            whole += piece.Text;
        text += whole.substr(0, whole.find_last_not_of(L' ') + 1) + L"\n";
    }
    return text;
}

bool IsColoured(const std::vector<CScreenLine>& frame)
{
    for (const CScreenLine& line : frame)
        for (const CPiece& piece : line)
            if (piece.InColour != Colour::Plain)
                return true;
    return false;
}

class RunScreenTest : public CommandsTest
{
  protected:
    void Watch()
    {
        m_console.Columns = 80;
        m_console.Lines = 25;
        m_console.OutputIsWatched = true;
    }

    // A sender on each adapter that runs until it is stopped. Both have to run at the same time.
    void AddSenders()
    {
        m_world->Add(L"9@{AAAA}", L"Sender", true);
        for (const wchar_t* key : {L"9@{AAAA}", L"9@{BBBB}"})
        {
            m_world->Tests[key].Run = [this, key]
            {
                m_bothRun.ArriveAndWait();
                SetEvent(m_stop.Get());
                WaitForSingleObject(m_mayEnd[key].Get(), INFINITE);
                return TestState::Stopped;
            };
            m_mayEnd[key].Reset(CreateEventW(nullptr, TRUE, FALSE, nullptr));
            m_world->Tests[key].Stop = [this, key] { return SetEvent(m_mayEnd[key].Get()) != FALSE; };
        }
    }

    CGate m_bothRun{2};
    std::map<std::wstring, CHandle> m_mayEnd;
};

TEST_F(RunScreenTest, TerminalShowsATableThatFillsIn)
{
    Watch();
    m_world->Tests[L"2@{BBBB}"].Run = [this]
    {
        CLockScope lock(m_world->Lock());
        m_world->Results[L"2@{BBBB}"].Lines = {L"t|Speed|Too slow."};
        return TestState::Failed;
    };
    EXPECT_EQ(Run({L"run", L"--all"}), ExitCode::Failed);
    ASSERT_GT(m_console.Frames.size(), 6u);
    EXPECT_EQ(Utf8Text(TextOf(m_console.Frames.front())),
              "  Adapter     Test   State           Time\n"
              "  Ethernet    Link   waiting\n"
              "  Ethernet 2  Link   waiting\n"
              "  Ethernet 2  Speed  waiting\n"
              "  [........................................] 0 of 3 done\n");
    EXPECT_EQ(Utf8Text(TextOf(m_console.Frames.back())), "  Adapter     Test   State           Time\n"
                                                         "  Ethernet    Link   passed          0 s\n"
                                                         "  Ethernet 2  Link   passed          0 s\n"
                                                         "  Ethernet 2  Speed  failed          0 s\n");
    EXPECT_TRUE(m_console.Output.ends_with(L"Run them by name.\n"
                                           L"  Speed on Ethernet 2: failed, 0 s\n"
                                           L"    Too slow.\n"
                                           L"FAILED: 2 passed, 1 failed.\n"))
        << Utf8Text(m_console.Output);
}

TEST_F(RunScreenTest, OneTestHasABarAndTheTimeLeft)
{
    Watch();
    CHandle mayEnd(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    m_world->Tests[L"9@{BBBB}"].Run = [&]
    {
        m_now = 10000;
        {
            CLockScope lock(m_world->Lock());
            m_world->Results[L"9@{BBBB}"].Percent = 25;
        }
        WaitForSingleObject(mayEnd.Get(), INFINITE);
        return TestState::Passed;
    };
    m_console.OnRedraw = [&](const std::vector<CScreenLine>& frame)
    {
        if (TextOf(frame).find(L"running, 25 %") != std::wstring::npos)
            SetEvent(mayEnd.Get());
    };
    EXPECT_EQ(Run({L"run", L"--test", L"sender"}), ExitCode::Passed);
    const bool drawn = std::ranges::any_of(
        m_console.Frames,
        [](const auto& frame)
        {
            return TextOf(frame) ==
                   L"  Adapter     Test    State           Time\n"
                   L"  Ethernet 2  Sender  running, 25 %   10 s\n"
                   L"  [##########..............................] 0 of 1 done, about 30 s left\n";
        });
    EXPECT_TRUE(drawn);
}

TEST_F(RunScreenTest, NoColoursIfTheUserWantsNone)
{
    Watch();
    Run({L"run", L"--all"});
    const auto coloured = m_console.Frames.back();
    m_console.Frames.clear();
    m_console.Coloured = false;
    Run({L"run", L"--all"});
    EXPECT_TRUE(IsColoured(coloured));
    EXPECT_TRUE(std::ranges::none_of(m_console.Frames, IsColoured));
    EXPECT_EQ(TextOf(m_console.Frames.back()), TextOf(coloured)) << "the words say the same";
}

TEST_F(RunScreenTest, NoTerminalNoTable)
{
    EXPECT_EQ(Run({L"run", L"--all"}), ExitCode::Passed);
    EXPECT_TRUE(m_console.Frames.empty());
    Watch();
    m_console.Lines = 5;
    EXPECT_EQ(Run({L"run", L"--all"}), ExitCode::Passed);
    EXPECT_TRUE(m_console.Frames.empty()) << "too low";
    EXPECT_NE(m_console.Output.find(L"  Speed on Ethernet 2: passed, 0 s\n"), std::wstring::npos);
}

TEST_F(RunScreenTest, DocumentGoesToOutputAndTheTableToWhoWatches)
{
    m_console.Columns = 80;
    m_console.Lines = 25;
    m_console.ErrorsAreWatched = true;
    EXPECT_EQ(Run({L"run", L"--all", L"--json"}), ExitCode::Passed);
    EXPECT_EQ(Document()["runs"].size(), 3u);
    EXPECT_FALSE(m_console.Frames.empty());
}

// The first test of each adapter waits for that of the other one.
TEST_F(RunScreenTest, AdaptersRunSideBySideAndAreReportedInTheOrderOfTheList)
{
    CGate both(2);
    for (const wchar_t* key : {L"1@{AAAA}", L"1@{BBBB}"})
        m_world->Tests[key].Run = [&]
        {
            both.ArriveAndWait();
            return TestState::Passed;
        };
    EXPECT_EQ(Run({L"run", L"--all", L"--json"}), ExitCode::Passed);
    const nlohmann::json runs = Document()["runs"];
    EXPECT_EQ(runs[0]["test"]["key"], "1@{AAAA}");
    EXPECT_EQ(runs[1]["test"]["key"], "1@{BBBB}");
    EXPECT_EQ(runs[2]["test"]["key"], "2@{BBBB}");
}

// The first line waits for the slower adapter.
TEST_F(RunScreenTest, LinesAreInTheOrderOfTheListWhoeverEndsFirst)
{
    CGate secondEnded(1);
    m_world->Tests[L"1@{AAAA}"].Run = [&]
    {
        secondEnded.Wait();
        return TestState::Passed;
    };
    m_world->Tests[L"2@{BBBB}"].Run = [&]
    {
        secondEnded.Arrive();
        return TestState::Passed;
    };
    EXPECT_EQ(Run({L"run", L"--all"}), ExitCode::Passed);
    EXPECT_TRUE(m_console.Output.ends_with(L"  Link on Ethernet: passed, 0 s\n"
                                           L"  Link on Ethernet 2: passed, 0 s\n"
                                           L"  Speed on Ethernet 2: passed, 0 s\n"
                                           L"PASSED: 3 passed.\n"))
        << Utf8Text(m_console.Output);
}

TEST_F(RunScreenTest, SerialRunsOneAfterTheOther)
{
    EXPECT_EQ(Run({L"run", L"--all", L"--serial"}), ExitCode::Passed);
    std::vector<std::wstring> paths;
    for (const auto& call : m_world->Calls)
        paths.push_back(call.Path);
    ASSERT_EQ(paths.size(), 3u);
    EXPECT_NE(paths[0].find(L"1@{AAAA}"), std::wstring::npos);
    EXPECT_NE(paths[1].find(L"1@{BBBB}"), std::wstring::npos);
    EXPECT_NE(paths[2].find(L"2@{BBBB}"), std::wstring::npos);
}

TEST_F(RunScreenTest, InterruptStopsAllThatRunAndPutsEverySettingBack)
{
    AddSenders();
    EXPECT_EQ(Run({L"run", L"--test", L"sender", L"--coverage", L"50"}), ExitCode::Stopped);
    std::vector<std::wstring> stopped;
    for (const auto& call : m_world->Calls)
        if (call.Method == L"DiscontinueTest")
            stopped.push_back(call.Path);
    EXPECT_EQ(stopped.size(), 2u);
    for (const wchar_t* key : {L"9@{AAAA}", L"9@{BBBB}"})
    {
        EXPECT_EQ(m_world->Results[key].Setting.Coverage, 50) << "used by the run";
        EXPECT_EQ(m_world->Settings[key].Coverage, 100) << "put back";
    }
    const std::wstring said = L"  Stopping the tests. Press Ctrl+C again to leave them running.\n";
    const size_t first = m_console.Output.find(said);
    EXPECT_NE(first, std::wstring::npos);
    EXPECT_EQ(m_console.Output.find(said, first + 1), std::wstring::npos) << "said once";
    EXPECT_TRUE(m_console.Output.ends_with(L"STOPPED: 2 stopped.\n")) << Utf8Text(m_console.Output);
}

// Both are announced together, because the same is to be said of them.
TEST_F(RunScreenTest, SendersAreAnnouncedTogether)
{
    AddSenders();
    Watch();
    Run({L"run", L"--test", L"sender"});
    EXPECT_TRUE(
        m_console.Output.starts_with(L"Sender on Ethernet, Sender on Ethernet 2\n"
                                     L"    Looks at Sender.\n"
                                     L"    Takes up to 1 min 40 s; less if enough packets come sooner.\n"))
        << Utf8Text(m_console.Output);
}

TEST_F(RunScreenTest, WhatASettingLeavesNamesItsTest)
{
    m_world->Add(L"9@{AAAA}", L"Sender", true);
    m_world->Tests[L"9@{AAAA}"].Run = [this]
    {
        CLockScope lock(m_world->Lock());
        m_world->Settings[L"9@{AAAA}"].Coverage = 70;
        return TestState::Passed;
    };
    EXPECT_EQ(Run({L"run", L"--test", L"sender", L"--coverage", L"50"}), ExitCode::Passed);
    EXPECT_NE(
        m_console.Output.find(
            L"  Sender on Ethernet: The setting was changed while the test ran; the new values stay.\n"),
        std::wstring::npos)
        << Utf8Text(m_console.Output);
}

TEST(ConsoleTest, VariableTellsThatNoColoursAreWanted)
{
    SetEnvironmentVariableW(L"NO_COLOR", nullptr);
    EXPECT_TRUE(ProcessConsole().Colours());
    SetEnvironmentVariableW(L"NO_COLOR", L"");
    EXPECT_TRUE(ProcessConsole().Colours());
    SetEnvironmentVariableW(L"NO_COLOR", L"1");
    EXPECT_FALSE(ProcessConsole().Colours());
    SetEnvironmentVariableW(L"NO_COLOR", nullptr);
}
} // namespace
} // namespace zebdiag
