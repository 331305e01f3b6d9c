// What the commands print on narrow and wide terminals: no line is longer than its terminal, nothing is lost.
#include "CommandsFixture.h"
#include "tests/support/CaseName.h"
#include "tools/zebdiag/TextWidth.h"
#include "tools/zebdiag/Wrap.h"

#include <sstream>

namespace zebdiag
{
namespace
{
std::vector<std::wstring> LinesOf(const std::wstring& text)
{
    std::vector<std::wstring> lines;
    std::wistringstream stream(text);
    for (std::wstring line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

std::vector<std::wstring> WordsOf(const std::wstring& text)
{
    std::vector<std::wstring> words;
    std::wistringstream stream(text);
    for (std::wstring word; stream >> word;)
        words.push_back(word);
    std::ranges::sort(words);
    return words;
}

struct WidthCase
{
    const char* name;
    std::vector<std::wstring> arguments;
};

class WidthTest : public CommandsTest, public testing::WithParamInterface<WidthCase>
{
  protected:
    WidthTest()
    {
        m_world->Add(L"3@{BBBB}", L"Negotiated speed and duplex");
        m_world->Add(L"A@{BBBB}", L"Responder", true);
        m_world->Results[L"1@{AAAA}"] = {TestState::Passed, 100, {}, {}};
        m_world->Results[L"3@{BBBB}"] = {
            TestState::Failed,
            100,
            {L"t|Link|The adapter negotiated half duplex, which slows down traffic and causes collisions. Set adapter "
             L"and switch port both to automatic negotiation."},
            {}};
        m_world->Results[L"9@{BBBB}"] = {
            TestState::Stopped,
            45,
            {L"t|Sender|Role (1 is sender, 2 is responder, 3 is sender that cannot tell "
             L"on which way packets were lost): 2",
             L"t|Sender|Packets lost: 3", L"t|Sender|Packets sent: -2"},
            {}};
        m_console.ErrorsAreWatched = true;
    }

    // Everything that the command prints on a terminal of that width; 0 is no terminal.
    std::wstring Printed(unsigned width)
    {
        m_console.Columns = width;
        m_console.Output.clear();
        m_console.Errors.clear();
        Run(GetParam().arguments);
        return m_console.Output + m_console.Errors;
    }
};

TEST_P(WidthTest, NoLineIsLongerThanTheTerminal)
{
    const std::wstring whole = Printed(0);
    ASSERT_FALSE(whole.empty());
    for (const unsigned width : {40u, 60u, 80u, 100u, 200u})
    {
        const std::wstring printed = Printed(width);
        for (const std::wstring& line : LinesOf(printed))
            // A path or a key that is longer than the terminal has to stay whole.
            EXPECT_TRUE(ColumnsOf(line) < width || WordsOf(line).size() == 1)
                << width << ": " << Utf8Text(line);
    }
}

// Each word stays whole, whatever the layout.
TEST_P(WidthTest, NoWordIsSplit)
{
    const std::vector<std::wstring> words = WordsOf(Printed(0));
    for (const unsigned width : {60u, 80u, 200u})
    {
        const std::vector<std::wstring> here = WordsOf(Printed(width));
        std::vector<std::wstring> strange;
        std::ranges::copy_if(here, std::back_inserter(strange),
                             [&](const std::wstring& word)
                             {
                                 // A heading that stands before its value ends with a colon.
                                 return !std::ranges::binary_search(words, word) &&
                                        !(word.ends_with(L":") &&
                                          std::ranges::binary_search(words, word.substr(0, word.size() - 1)));
                             });
        EXPECT_TRUE(strange.empty()) << width << ": " << Utf8Text(strange.empty() ? L"" : strange.front());
    }
}

INSTANTIATE_TEST_SUITE_P(
    Commands, WidthTest,
    testing::Values(WidthCase{"List", {L"list"}}, WidthCase{"RunAll", {L"run", L"--all"}},
                    WidthCase{"RunSender", {L"run", L"--test", L"sender"}}, WidthCase{"Stop", {L"stop"}},
                    WidthCase{"StopNothing", {L"stop", L"--test", L"link"}},
                    WidthCase{"Results", {L"results"}}, WidthCase{"Settings", {L"settings"}},
                    WidthCase{"Set", {L"set", L"--test", L"sender", L"--quick", L"off"}},
                    WidthCase{"ClearNothing", {L"clear", L"--test", L"speed", L"--adapter", L"contoso"}},
                    WidthCase{"Profiles", {L"profiles", L"--save", L"short", L"--coverage", L"20"}},
                    WidthCase{"Doctor", {L"doctor"}}, WidthCase{"UnknownTest", {L"run", L"--test", L"warp"}},
                    WidthCase{"Usage", {L"run", L"--all", L"--timeout", L"abc"}},
                    WidthCase{"PeerElsewhere",
                              {L"run", L"--test", L"9", L"--peer", L"x", L"--computer", L"WS42"}},
                    WidthCase{"Help", {L"help"}}, WidthCase{"HelpOfRun", {L"help", L"run"}},
                    WidthCase{"HelpOfSet", {L"help", L"set"}},
                    WidthCase{"ListInGerman", {L"list", L"--locale", L"de-DE"}},
                    WidthCase{"RunInGerman", {L"run", L"--all", L"--locale", L"de-DE"}},
                    WidthCase{"DoctorInGerman", {L"doctor", L"--locale", L"de-DE"}},
                    WidthCase{"HelpInGerman", {L"help", L"--locale", L"de-DE"}},
                    WidthCase{"HelpOfRunInGerman", {L"help", L"run", L"--locale", L"de-DE"}}),
    NameOf<WidthCase>);

using ResultsWidthTest = CommandsTest;

// As a picture: the same results on three terminals.
TEST_F(ResultsWidthTest, FindingsStandWhereThereIsRoom)
{
    m_world->Add(L"3@{BBBB}", L"Negotiated speed and duplex");
    m_world->Results[L"3@{BBBB}"] = {
        TestState::Failed,
        100,
        {L"t|Link|The adapter negotiated half duplex. Set both sides to automatic."},
        {}};
    const auto printed = [this](unsigned width)
    {
        m_console.Columns = width;
        m_console.Output.clear();
        EXPECT_EQ(Run({L"results"}), ExitCode::Passed);
        return m_console.Output;
    };
    EXPECT_EQ(printed(60), L"Ethernet 2 (Fabrikam)\n"
                           L"  Test: Negotiated speed and duplex\n"
                           L"    State: Failed\n"
                           L"    Started: 2024-05-01 13:45:10\n"
                           L"    Ended: 13:45:11\n"
                           L"    Findings: The adapter negotiated half duplex. Set both\n"
                           L"    sides to automatic.\n"
                           L"\n"
                           L"1 result: 1 failed.\n");
    EXPECT_EQ(printed(80), L"Ethernet 2 (Fabrikam)\n"
                           L"  Test                         State   Started              Ended\n"
                           L"      Findings\n"
                           L"  Negotiated speed and duplex  Failed  2024-05-01 13:45:10  13:45:11\n"
                           L"      The adapter negotiated half duplex. Set both sides to automatic.\n"
                           L"\n"
                           L"1 result: 1 failed.\n");
    EXPECT_EQ(
        printed(200),
        L"Ethernet 2 (Fabrikam)\n"
        L"  Test                         State   Started              Ended     Findings\n"
        L"  Negotiated speed and duplex  Failed  2024-05-01 13:45:10  13:45:11  The adapter negotiated half "
        L"duplex. Set both sides to automatic.\n"
        L"\n"
        L"1 result: 1 failed.\n");
    EXPECT_EQ(printed(0), printed(200));
}
} // namespace
} // namespace zebdiag
