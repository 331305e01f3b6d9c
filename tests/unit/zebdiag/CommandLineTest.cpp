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
        GoodCase{"ReportAsPage", L"report|--html|r.html|--adapter|Ethernet 2",
                 [](const COptions& o)
                 {
                     return o.Command == Command::Report && o.Html == L"r.html" && !o.Json &&
                            o.JsonFile.empty() && o.Adapter == L"Ethernet 2";
                 }},
        GoodCase{"ReportAsDocument", L"report|--json",
                 [](const COptions& o) { return o.Json && o.JsonFile.empty() && o.Html.empty(); }},
        GoodCase{"ReportAsDocumentInAFile", L"report|--json|r.json",
                 [](const COptions& o) { return !o.Json && o.JsonFile == L"r.json"; }},
        GoodCase{"ReportWithAFileBehindTheSign", L"report|--json=-r.json",
                 [](const COptions& o) { return !o.Json && o.JsonFile == L"-r.json"; }},
        GoodCase{"ReportWithAnOptionBehindTheDocument", L"report|--json|-a|x|--html|r.html",
                 [](const COptions& o)
                 { return o.Json && o.JsonFile.empty() && o.Adapter == L"x" && o.Html == L"r.html"; }},
        GoodCase{"RunOneTest", L"run|--adapter|Ethernet 2|--test|Link",
                 [](const COptions& o)
                 {
                     return o.Command == Command::Run && o.Adapter == L"Ethernet 2" && o.Test == L"Link" &&
                            !o.All && !o.Coverage && !o.NoQuick && !o.TimeoutSeconds;
                 }},
        GoodCase{"RunAll", L"run|--all", [](const COptions& o) { return o.All && o.Test.empty(); }},
        GoodCase{"NumbersWithALeadingZeroAreDecimal", L"run|--test|9|--coverage|010|--timeout|08",
                 [](const COptions& o) { return o.Coverage == 10u && o.TimeoutSeconds == 8u; }},
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
        GoodCase{"RunWithProfile", L"run|--test|9|--profile|short",
                 [](const COptions& o) { return o.Profile == L"short" && !o.Coverage; }},
        GoodCase{"SaveProfile", L"profiles|--save|short|--coverage|20|--quick|on",
                 [](const COptions& o)
                 {
                     return o.Command == Command::Profiles && o.Save == L"short" && o.Coverage == 20u &&
                            o.Quick == true && !o.Report && o.Delete.empty();
                 }},
        GoodCase{"DeleteProfile", L"profiles|--delete|short",
                 [](const COptions& o) { return o.Delete == L"short" && o.Save.empty(); }},
        GoodCase{"SlashForDashes", L"run|/test:link|/no-quick",
                 [](const COptions& o) { return o.Test == L"link" && o.NoQuick; }},
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
    const wchar_t* command; // whose help is named, and a blank
};

class BadCommandLineTest : public testing::TestWithParam<BadCase>
{
};

TEST_P(BadCommandLineTest, IsRefusedWithAHint)
{
    const CCommandLine line = ParseCommandLine(Words(GetParam().line));
    EXPECT_FALSE(line.Options);
    EXPECT_EQ(line.Code, ExitCode::Usage);
    EXPECT_EQ(line.Text, L"zebdiag: " + std::wstring(GetParam().text) + L"\nTry: zebdiag " +
                             GetParam().command + L"--help\n");
}

INSTANTIATE_TEST_SUITE_P(
    Lines, BadCommandLineTest,
    testing::Values(
        BadCase{"UnknownCommand", L"destroy", L"There is no command \"destroy\".", L""},
        BadCase{"OptionFirst", L"--json|list", L"Give a command first.", L""},
        BadCase{"HelpForAnUnknownCommand", L"help|destroy", L"There is no command \"destroy\".", L""},
        BadCase{"UnknownOption", L"list|--test|x", L"\"zebdiag list\" has no option --test.", L"list "},
        BadCase{"NoOption", L"list|everything", L"\"everything\" is no option.", L"list "},
        BadCase{"Twice", L"run|--test|x|-t|y", L"--test is given twice.", L"run "},
        BadCase{"ValueMissing", L"run|--test", L"--test needs a value: --test NAME.", L"run "},
        BadCase{"OptionForAValue", L"run|--test|--json", L"--test: \"--json\" is no name.", L"run "},
        BadCase{"ValueForAFlag", L"list|--json=yes", L"--json takes no value.", L"list "},
        BadCase{"ReportOfNoKind", L"report", L"Name a file for the report with --html, or take --json.",
                L"report "},
        BadCase{"ReportWithoutAFile", L"report|--html", L"--html needs a value: --html FILE.", L"report "},
        BadCase{"ReportTwiceInAFile", L"report|--html|r|--json|r", L"--html and --json need a file each.",
                L"report "},
        BadCase{"ReportTwiceInAFileOfAnyCase", L"report|--html|GRÖ.html|--json|grö.HTML",
                L"--html and --json need a file each.", L"report "},
        BadCase{"RunNothing", L"run", L"Name a test with --test, or take all with --all.", L"run "},
        BadCase{"RunOneAndAll", L"run|--all|--test|x", L"--test and --all do not go together.", L"run "},
        BadCase{"CoverageZero", L"run|--all|--coverage|0", L"--coverage: 0 is not between 1 and 100.",
                L"run "},
        BadCase{"CoverageTooHigh", L"set|--test|9|--coverage|101",
                L"--coverage: 101 is not between 1 and 100.", L"set "},
        BadCase{"TimeoutZero", L"run|--all|--timeout|0", L"--timeout: 0 is not between 1 and 1000000.",
                L"run "},
        BadCase{"TimeoutNoNumber", L"run|--all|--timeout|abc", L"--timeout: \"abc\" is no number.", L"run "},
        BadCase{"TimeoutNegative", L"run|--all|--timeout|-1", L"--timeout: \"-1\" is no number.", L"run "},
        BadCase{"TimeoutWithUnit", L"run|--all|--timeout|10s", L"--timeout: \"10s\" is no number.", L"run "},
        BadCase{"TimeoutEndless", L"run|--all|--timeout|99999999999999999999",
                L"--timeout: 99999999999999999999 is not between 1 and 1000000.", L"run "},
        BadCase{"PeerWithoutTest", L"run|--all|--peer|192.0.2.7",
                L"--peer is for the sender alone: name it with --test sender.", L"run "},
        BadCase{"PortWithoutPeer", L"run|--test|sender|--port|862",
                L"--port, --rate, --size and --dscp need --peer.", L"run "},
        BadCase{"EmptyPeer", L"run|--test|sender|--peer|", L"--peer: a name is missing.", L"run "},
        BadCase{"PortZero", L"run|--test|sender|--peer|x|--port|0", L"--port: 0 is not between 1 and 65535.",
                L"run "},
        BadCase{"RateTooHigh", L"run|--test|sender|--peer|x|--rate|1001",
                L"--rate: 1001 is not between 1 and 1000.", L"run "},
        BadCase{"SizeTooSmall", L"run|--test|sender|--peer|x|--size|43",
                L"--size: 43 is not between 44 and 1452.", L"run "},
        BadCase{"DscpTooHigh", L"run|--test|sender|--peer|x|--dscp|64",
                L"--dscp: 64 is not between 0 and 63.", L"run "},
        BadCase{"SetWithoutTest", L"set|--quick|on", L"Name the test with --test.", L"set "},
        BadCase{"SetNothing", L"set|--test|9", L"Give at least one of --coverage, --quick and --report.",
                L"set "},
        BadCase{"QuickMaybe", L"set|--test|9|--quick|maybe", L"--quick: \"maybe\" is neither on nor off.",
                L"set "},
        BadCase{"EmptyTest", L"clear|--test|", L"--test: a name is missing.", L"clear "},
        BadCase{"EmptyAdapter", L"run|--all|--adapter|", L"--adapter: a name is missing.", L"run "},
        BadCase{"ClearNothing", L"clear", L"Name a test with --test, or take all with --all.", L"clear "},
        BadCase{"SaveAndDelete", L"profiles|--save|a|--delete|b", L"--save and --delete do not go together.",
                L"profiles "},
        BadCase{"SaveNothing", L"profiles|--save|a",
                L"Give at least one of --coverage, --quick and --report.", L"profiles "},
        BadCase{"SettingsWithoutSave", L"profiles|--quick|on",
                L"--coverage, --quick and --report need --save.", L"profiles "},
        BadCase{"UnknownLanguage", L"list|--locale|klingon", L"--locale: there is no language \"klingon\".",
                L"list "},
        BadCase{"UserOfThisComputer", L"list|--user|admin",
                L"--user is for other computers: name one with --computer.", L"list "}),
    NameOf<BadCase>);

// The password never stands on a command line, where other users can read it.
TEST(CommandLineTest, ThereIsNoOptionForThePassword)
{
    for (const wchar_t* line :
         {L"list|--computer|x|--user|y|--password|z", L"list|--computer|x|--user|y|-p|z"})
        EXPECT_EQ(ParseCommandLine(Words(line)).Code, ExitCode::Usage);
}

TEST(CommandLineTest, ShowsItsVersion)
{
    EXPECT_EQ(ParseCommandLine({L"--version"}).Text.substr(0, 8), L"zebdiag ");
}
} // namespace
} // namespace zebdiag
