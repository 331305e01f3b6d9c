#include "tools/zebdiag/CommandLine.h"

#include "Common/src/com/Text.h"
#include "tests/support/CaseName.h"

#include <functional>

namespace zebdiag
{
namespace
{
// Words separated by "|", so that a word may hold spaces or nothing.
std::vector<std::wstring> Words(std::wstring line)
{
    std::vector<std::wstring> words;
    for (size_t bar = line.find(L'|'); bar != std::wstring::npos; bar = line.find(L'|'))
    {
        words.push_back(line.substr(0, bar));
        line.erase(0, bar + 1);
    }
    if (!words.empty() || !line.empty())
        words.push_back(line);
    return words;
}

struct GoodCase
{
    const char* name;
    const wchar_t* line;
    std::function<bool(const COptions&)> isRight;
};

class GoodCommandLineTest : public testing::TestWithParam<GoodCase>
{
};

TEST_P(GoodCommandLineTest, IsRead)
{
    const CCommandLine line = ParseCommandLine(Words(GetParam().line));
    ASSERT_TRUE(line.Options) << Utf8Text(line.Text);
    EXPECT_TRUE(GetParam().isRight(*line.Options));
}

INSTANTIATE_TEST_SUITE_P(
    Lines, GoodCommandLineTest,
    testing::Values(
        GoodCase{"ListAlone", L"list",
                 [](const COptions& o)
                 {
                     return o.Command == Command::List && !o.Json && o.Target.IsLocal() &&
                            o.Target.Namespace == L"root\\cimv2" && o.Adapter.empty() &&
                            o.Target.Locale.empty();
                 }},
        GoodCase{"DoctorAsJson", L"doctor|--json",
                 [](const COptions& o) { return o.Command == Command::Doctor && o.Json; }},
        GoodCase{"ListAsJson", L"list|--json",
                 [](const COptions& o) { return o.Command == Command::List && o.Json; }},
        GoodCase{"RunOneTest", L"run|--adapter|Ethernet 2|--test|Link",
                 [](const COptions& o)
                 {
                     return o.Command == Command::Run && o.Adapter == L"Ethernet 2" && o.Test == L"Link" &&
                            !o.All && !o.Coverage && !o.NoQuick && !o.TimeoutSeconds;
                 }},
        GoodCase{"RunAll", L"run|--all", [](const COptions& o) { return o.All && o.Test.empty(); }},
        GoodCase{"RunWithEverything", L"run|--test|9|--coverage|50|--no-quick|--timeout|120",
                 [](const COptions& o)
                 { return o.Coverage == 50u && o.NoQuick && o.TimeoutSeconds == 120u && o.Test == L"9"; }},
        GoodCase{"RunWithPeer",
                 L"run|--test|sender|--peer|192.0.2.7|--port|8620|--rate|1000|--size|1452|--dscp|0",
                 [](const COptions& o)
                 {
                     return o.Sender.Peer == L"192.0.2.7" && o.Sender.Port == 8620u &&
                            o.Sender.Rate == 1000u && o.Sender.Size == 1452u && o.Sender.Dscp == 0u;
                 }},
        GoodCase{"RunWithPeerAlone", L"run|--test|sender|--peer|größe",
                 [](const COptions& o)
                 {
                     return o.Sender.Peer == L"größe" && !o.Sender.Port && !o.Sender.Rate && !o.Sender.Size &&
                            !o.Sender.Dscp;
                 }},
        GoodCase{"ShortNames", L"run|-a|x|-t|y",
                 [](const COptions& o) { return o.Adapter == L"x" && o.Test == L"y"; }},
        GoodCase{"EqualsSign", L"run|--test=Größe", [](const COptions& o) { return o.Test == L"Größe"; }},
        GoodCase{"StopAlone", L"stop", [](const COptions& o) { return o.Command == Command::Stop; }},
        GoodCase{"Results", L"results|--test|link",
                 [](const COptions& o) { return o.Command == Command::Results && o.Test == L"link"; }},
        GoodCase{"Settings", L"settings", [](const COptions& o) { return o.Command == Command::Settings; }},
        GoodCase{"SetAll", L"set|--test|9|--coverage|100|--quick|off|--report|on",
                 [](const COptions& o) {
                     return o.Command == Command::Set && o.Coverage == 100u && o.Quick == false &&
                            o.Report == true;
                 }},
        GoodCase{"SetOneThing", L"set|--test|9|--quick|on",
                 [](const COptions& o) { return o.Quick == true && !o.Report && !o.Coverage; }},
        GoodCase{"ClearOne", L"clear|--test|link",
                 [](const COptions& o) { return o.Command == Command::Clear && !o.All; }},
        GoodCase{"ClearAll", L"clear|--all", [](const COptions& o) { return o.All; }},
        GoodCase{"AnotherComputer",
                 L"list|--computer|WS42|--user|EXAMPLE\\admin|--namespace|root\\test|--locale|de-DE",
                 [](const COptions& o)
                 {
                     return o.Target.Computer == L"WS42" && o.Target.User == L"EXAMPLE\\admin" &&
                            o.Target.Namespace == L"root\\test" && o.Target.Locale == L"MS_407" &&
                            !o.Target.IsLocal() && o.Target.ComputerInWords() == L"WS42";
                 }},
        GoodCase{"ThisComputerByName", L"list|--computer|localhost",
                 [](const COptions& o)
                 { return o.Target.IsLocal() && o.Target.ComputerInWords() == L"this computer"; }}),
    NameOf<GoodCase>);

struct BadCase
{
    const char* name;
    const wchar_t* line;
    const wchar_t* text;
};

class BadCommandLineTest : public testing::TestWithParam<BadCase>
{
};

TEST_P(BadCommandLineTest, IsRefusedWithAHint)
{
    const CCommandLine line = ParseCommandLine(Words(GetParam().line));
    EXPECT_FALSE(line.Options);
    EXPECT_EQ(line.Code, ExitCode::Usage);
    EXPECT_EQ(line.Text, GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    Lines, BadCommandLineTest,
    testing::Values(
        BadCase{"NoCommand", L"", L"zebdiag: A subcommand is required\nTry: zebdiag --help\n"},
        BadCase{"UnknownCommand", L"destroy",
                L"zebdiag: There is no command \"destroy\"\nTry: zebdiag --help\n"},
        BadCase{"RunNothing", L"run", L"zebdiag: --test or --all is required\nTry: zebdiag run --help\n"},
        BadCase{"RunOneAndAll", L"run|--all|--test|x",
                L"zebdiag: --test excludes --all\nTry: zebdiag run --help\n"},
        BadCase{"CoverageZero", L"run|--all|--coverage|0",
                L"zebdiag: --coverage: Value 0 not in range 1 to 100\nTry: zebdiag run --help\n"},
        BadCase{"CoverageTooHigh", L"set|--test|9|--coverage|101",
                L"zebdiag: --coverage: Value 101 not in range 1 to 100\nTry: zebdiag set --help\n"},
        BadCase{"TimeoutZero", L"run|--all|--timeout|0",
                L"zebdiag: --timeout: Value 0 not in range 1 to 1000000\nTry: zebdiag run --help\n"},
        BadCase{"PeerWithoutTest", L"run|--all|--peer|192.0.2.7",
                L"zebdiag: --peer requires --test\nTry: zebdiag run --help\n"},
        BadCase{"PortWithoutPeer", L"run|--test|sender|--port|862",
                L"zebdiag: --port requires --peer\nTry: zebdiag run --help\n"},
        BadCase{"EmptyPeer", L"run|--test|sender|--peer|",
                L"zebdiag: --peer: a name is missing\nTry: zebdiag run --help\n"},
        BadCase{"PortZero", L"run|--test|sender|--peer|x|--port|0",
                L"zebdiag: --port: Value 0 not in range 1 to 65535\nTry: zebdiag run --help\n"},
        BadCase{"RateTooHigh", L"run|--test|sender|--peer|x|--rate|1001",
                L"zebdiag: --rate: Value 1001 not in range 1 to 1000\nTry: zebdiag run --help\n"},
        BadCase{"SizeTooSmall", L"run|--test|sender|--peer|x|--size|43",
                L"zebdiag: --size: Value 43 not in range 44 to 1452\nTry: zebdiag run --help\n"},
        BadCase{"DscpTooHigh", L"run|--test|sender|--peer|x|--dscp|64",
                L"zebdiag: --dscp: Value 64 not in range 0 to 63\nTry: zebdiag run --help\n"},
        BadCase{"SetWithoutTest", L"set|--quick|on",
                L"zebdiag: --test is required\nTry: zebdiag set --help\n"},
        BadCase{"SetNothing", L"set|--test|9",
                L"zebdiag: --coverage, --quick or --report is required\nTry: zebdiag set --help\n"},
        BadCase{"QuickMaybe", L"set|--test|9|--quick|maybe",
                L"zebdiag: --quick: maybe not in {on,off}\nTry: zebdiag set --help\n"},
        BadCase{"EmptyTest", L"clear|--test|",
                L"zebdiag: --test: a name is missing\nTry: zebdiag clear --help\n"},
        BadCase{"EmptyAdapter", L"run|--all|--adapter|",
                L"zebdiag: --adapter: a name is missing\nTry: zebdiag run --help\n"},
        BadCase{"ClearNothing", L"clear",
                L"zebdiag: --test or --all is required\nTry: zebdiag clear --help\n"},
        BadCase{"UnknownLanguage", L"list|--locale|klingon",
                L"zebdiag: --locale: unknown language: klingon\nTry: zebdiag list --help\n"},
        BadCase{
            "UserOfThisComputer", L"list|--user|admin",
            L"zebdiag: --user is for other computers: name one with --computer\nTry: zebdiag list --help\n"}),
    NameOf<BadCase>);

// The password never stands on a command line, where other users can read it.
TEST(CommandLineTest, ThereIsNoOptionForThePassword)
{
    for (const wchar_t* line :
         {L"list|--computer|x|--user|y|--password|z", L"list|--computer|x|--user|y|-p|z"})
        EXPECT_EQ(ParseCommandLine(Words(line)).Code, ExitCode::Usage);
}

TEST(CommandLineTest, HelpSaysWhatExitCodesMean)
{
    const CCommandLine line = ParseCommandLine({L"--help"});
    EXPECT_FALSE(line.Options);
    EXPECT_EQ(line.Code, ExitCode::Passed);
    for (const wchar_t* text : {L"list ", L"run ", L"stop ", L"results ", L"settings ", L"set ", L"clear ",
                                L"Exit codes:", L"  7  the command line cannot be understood"})
        EXPECT_NE(line.Text.find(text), std::wstring::npos) << Utf8Text(text);
}

TEST(CommandLineTest, EveryCommandHasHelpWithExamples)
{
    for (const wchar_t* command : {L"list", L"run", L"stop", L"results", L"settings", L"set", L"clear"})
    {
        const CCommandLine line = ParseCommandLine({command, L"--help"});
        EXPECT_EQ(line.Code, ExitCode::Passed);
        EXPECT_NE(line.Text.find(L"Usage: zebdiag " + std::wstring(command)), std::wstring::npos);
        EXPECT_NE(line.Text.find(L"Examples:\n  zebdiag " + std::wstring(command)), std::wstring::npos);
        EXPECT_NE(line.Text.find(L"--json"), std::wstring::npos);
    }
}

TEST(CommandLineTest, ShowsItsVersion)
{
    EXPECT_EQ(ParseCommandLine({L"--version"}).Text.substr(0, 8), L"zebdiag ");
}
} // namespace
} // namespace zebdiag
