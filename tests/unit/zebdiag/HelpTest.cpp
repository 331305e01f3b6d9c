// The help: what asks for it, and that what it shows can be typed.
#include "tools/zebdiag/CommandLine.h"

#include "Common/src/com/Text.h"
#include "tests/support/CaseName.h"
#include "tools/zebdiag/Filled.h"
#include "tools/zebdiag/OptionTable.h"

namespace zebdiag
{
namespace
{
std::wstring HelpOfProgram()
{
    return ParseCommandLine({L"--help"}).Text;
}

std::wstring HelpOf(const wchar_t* command)
{
    return ParseCommandLine({command, L"--help"}).Text;
}

// A line of an example as the system would hand it over, without the program's name.
std::vector<std::wstring> Arguments(const std::wstring& line)
{
    std::vector<std::wstring> words(1);
    bool quoted = false;
    for (const wchar_t c : line)
        if (c == L'"')
            quoted = !quoted;
        else if (c == L' ' && !quoted)
            words.emplace_back();
        else
            words.back() += c;
    EXPECT_EQ(words.front(), L"zebdiag") << Utf8Text(line);
    words.erase(words.begin());
    return words;
}

constexpr wchar_t kBeginOfProgram[] =
    L"Diagnostics of wired Ethernet adapters: list, run and stop tests, read results.\n"
    L"\n"
    L"Usage: zebdiag COMMAND [OPTIONS]\n";
constexpr wchar_t kBeginOfRun[] = L"Run one test, or all ordinary tests, and show the results.\n"
                                  L"\n"
                                  L"Usage: zebdiag run [OPTIONS]\n";

struct HelpCase
{
    const char* name;
    std::vector<std::wstring> arguments;
    const wchar_t* begin;
};

class AskedHelpTest : public testing::TestWithParam<HelpCase>
{
};

TEST_P(AskedHelpTest, IsShown)
{
    const CCommandLine line = ParseCommandLine(GetParam().arguments);
    EXPECT_FALSE(line.Options);
    EXPECT_EQ(line.Code, ExitCode::Passed);
    EXPECT_TRUE(line.Text.starts_with(GetParam().begin)) << Utf8Text(line.Text);
}

INSTANTIATE_TEST_SUITE_P(Lines, AskedHelpTest,
                         testing::Values(HelpCase{"Nothing", {}, kBeginOfProgram},
                                         HelpCase{"Help", {L"help"}, kBeginOfProgram},
                                         HelpCase{"Long", {L"--help"}, kBeginOfProgram},
                                         HelpCase{"Short", {L"-h"}, kBeginOfProgram},
                                         HelpCase{"Slash", {L"/?"}, kBeginOfProgram},
                                         HelpCase{"Dash", {L"-?"}, kBeginOfProgram},
                                         HelpCase{"HelpOfRun", {L"help", L"run"}, kBeginOfRun},
                                         HelpCase{"RunHelp", {L"run", L"--help"}, kBeginOfRun},
                                         HelpCase{"RunSlash", {L"run", L"/?"}, kBeginOfRun},
                                         HelpCase{"RunDash", {L"run", L"--all", L"-?"}, kBeginOfRun}),
                         NameOf<HelpCase>);

TEST(HelpTest, ProgramNamesCommandsAndExitCodes)
{
    const std::wstring help = HelpOfProgram();
    for (const CCommandRow& row : CommandRows())
        EXPECT_NE(help.find(L"\n  " + WidenText(CommandName(row.Id)) + L" "), std::wstring::npos);
    EXPECT_NE(help.find(L"  7          the command line cannot be understood\n"), std::wstring::npos);
}

// Of every option; each can be typed as it stands and makes use of the option.
TEST(HelpTest, EveryOptionHasAnExampleThatIsUnderstood)
{
    for (const CCommandRow& command : CommandRows())
    {
        const std::wstring help = HelpOf(WidenText(CommandName(command.Id)).c_str());
        for (const COptionRow& option : OptionRows())
        {
            if (!(option.Commands & Only(command.Id)))
                continue;
            const std::wstring names = WidenText(option.Names);
            const std::wstring example =
                Filled(option.Example, {command.Example, L"zebdiag " + WidenText(CommandName(command.Id))});
            SCOPED_TRACE(Utf8Text(example));
            EXPECT_NE(help.find(example + L"\n"), std::wstring::npos);
            EXPECT_NE(example.find(names.substr(names.find(L"--"))), std::wstring::npos);
            const CCommandLine line = ParseCommandLine(Arguments(example));
            ASSERT_TRUE(line.Options) << Utf8Text(line.Text);
            EXPECT_EQ(line.Options->Command, command.Id);
        }
    }
}

TEST(HelpTest, ExamplesOfTheProgramAreUnderstood)
{
    const std::wstring help = HelpOfProgram();
    size_t count = 0;
    for (size_t at = help.find(L"Examples:"); (at = help.find(L"\n  zebdiag", at)) != std::wstring::npos;
         ++count)
    {
        at += 3;
        const std::wstring example = help.substr(at, help.find(L'\n', at) - at);
        EXPECT_TRUE(ParseCommandLine(Arguments(example)).Options) << Utf8Text(example);
    }
    EXPECT_EQ(count, 4u);
}

// Words of a library for command lines, and a file that only developers have.
TEST(HelpTest, SaysNothingThatUsersDoNotKnow)
{
    std::wstring all = HelpOfProgram();
    for (const CCommandRow& row : CommandRows())
        all += HelpOf(WidenText(CommandName(row.Id)).c_str());
    for (const wchar_t* word :
         {L"subcommand", L"SUBCOMMAND", L"Excludes", L"REQUIRED", L"Needs", L"docs/", L".md"})
        EXPECT_EQ(all.find(word), std::wstring::npos) << Utf8Text(word);
}
} // namespace
} // namespace zebdiag
