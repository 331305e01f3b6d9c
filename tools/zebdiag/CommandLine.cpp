#include "tools/zebdiag/CommandLine.h"

#include "Common/src/com/Text.h"
#include "tools/zebdiag/LocaleName.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>

namespace zebdiag
{
namespace
{
// The texts as CLI11 reads them, in UTF-8, before they become options.
struct CRawOptions
{
    std::string Computer;
    std::string Namespace = "root\\cimv2";
    std::string User;
    std::string Locale;
    std::string Adapter;
    std::string Test;
    bool Json = false;
    bool All = false;
    bool NoQuick = false;
    std::optional<unsigned> Coverage;
    std::optional<unsigned> Timeout;
    std::string Peer;
    std::optional<unsigned> Port;
    std::optional<unsigned> Rate;
    std::optional<unsigned> Size;
    std::optional<unsigned> Dscp;
    std::optional<std::string> Quick;
    std::optional<std::string> Report;
};

// Which options a command has besides those that all have.
enum Feature : unsigned
{
    kAdapter = 1,
    kTest = 2,
    kAll = 4,
    kCoverage = 8,
    kRun = 16,
    kSet = 32,
    kTestRequired = 64,
    kTestOrAllRequired = 128
};

constexpr unsigned kLongestTimeout = 1000000; // seconds

// Numbers that go with --peer; the limits are the agent's.
struct CPeerNumberRow
{
    const char* Option;
    const char* Summary;
    std::optional<unsigned> CRawOptions::*Member;
    unsigned Smallest;
    unsigned Largest;
};

constexpr CPeerNumberRow kPeerNumbers[] = {
    {"--port", "The peer's UDP port, 1 to 65535", &CRawOptions::Port, 1, 65535},
    {"--rate", "Packets per second, 1 to 1000", &CRawOptions::Rate, 1, 1000},
    {"--size", "Octets of UDP data in each packet, 44 to 1452", &CRawOptions::Size, 44, 1452},
    {"--dscp", "The mark of the packets, 0 to 63", &CRawOptions::Dscp, 0, 63},
};

struct CCommandRow
{
    Command Id;
    unsigned Features;
    const char* Summary;
    const char* Footer;
};

constexpr CCommandRow kCommands[] = {
    {Command::Doctor, 0, "Check the installation and say what is wrong with it and what to do.",
     "Each point is good, wrong or unknown; nothing is changed. This is the command to begin with where\n"
     "another one fails. Exit code 0 means that nothing is wrong, 1 that something is, 6 that the provider\n"
     "cannot be reached because of it.\n\n"
     "Examples:\n"
     "  zebdiag doctor\n"
     "  zebdiag doctor --json"},
    {Command::List, kAdapter, "Show the tests of every wired adapter, and which process delivers them.",
     "Examples:\n"
     "  zebdiag list\n"
     "  zebdiag list --adapter \"Ethernet 2\"\n"
     "  zebdiag list --computer WS42 --user EXAMPLE\\admin --json"},
    {Command::Run, kAdapter | kTest | kAll | kCoverage | kRun | kTestOrAllRequired,
     "Run one test, or all ordinary tests, and show the results.",
     "--all leaves out the tests that send and receive test packets: they take minutes, need a\n"
     "partner and can slow other traffic down. Run those by name. --coverage and --no-quick hold for this "
     "run\n"
     "only: the setting is put back afterwards. So are the registry values that --peer and the options\n"
     "with it set for the run, as an administrator on this computer. Ctrl+C stops the running test.\n\n"
     "Examples:\n"
     "  zebdiag run --all\n"
     "  zebdiag run --adapter \"Ethernet 2\" --test link\n"
     "  zebdiag run --adapter realtek --test sender --coverage 50 --timeout 120\n"
     "  zebdiag run --test sender --peer 192.0.2.7 --rate 200"},
    {Command::Stop, kAdapter | kTest, "Stop running tests: all of them, or the named one.",
     "Examples:\n"
     "  zebdiag stop\n"
     "  zebdiag stop --adapter \"Ethernet 2\" --test sender"},
    {Command::Results, kAdapter | kTest, "Show the stored results and those of running tests.",
     "Examples:\n"
     "  zebdiag results\n"
     "  zebdiag results --test link --json"},
    {Command::Settings, kAdapter | kTest, "Show the settings of the tests that have any.",
     "Examples:\n"
     "  zebdiag settings\n"
     "  zebdiag settings --adapter \"Ethernet 2\" --test sender"},
    {Command::Set, kAdapter | kTest | kCoverage | kSet | kTestRequired,
     "Change the settings of a test for all later runs.",
     "Give at least one of --coverage, --quick and --report.\n\n"
     "Examples:\n"
     "  zebdiag set --test sender --coverage 50\n"
     "  zebdiag set --adapter \"Ethernet 2\" --test responder --quick off"},
    {Command::Clear, kAdapter | kTest | kAll | kTestOrAllRequired,
     "Delete the stored results of one test, or of all.",
     "Examples:\n"
     "  zebdiag clear --test link\n"
     "  zebdiag clear --adapter \"Ethernet 2\" --all"},
};

constexpr char kFooter[] =
    "An adapter or a test may be given by any part of its name that only it has, in any case; a test also\n"
    "by its number. Without --adapter a command means every adapter. Each command has its own --help.\n\n"
    "Exit codes:\n"
    "  0  done; what ran has passed      4  no such adapter or test, or the name fits several\n"
    "  1  a test failed                  5  the test is running already\n"
    "  2  a test was stopped             6  the management service or the provider is not reachable\n"
    "  3  could not be run or done       7  the command line cannot be understood\n\n"
    "Examples:\n"
    "  zebdiag doctor\n"
    "  zebdiag list\n"
    "  zebdiag run --all\n"
    "  zebdiag run --adapter \"Ethernet 2\" --test link --json";

// An empty name must not be taken for one that was left out, which means all.
CLI::Validator NotEmpty()
{
    return {[](std::string& text) { return text.empty() ? std::string("a name is missing") : std::string(); },
            ""};
}

void AddOptions(CLI::App& app, const CCommandRow& row, CRawOptions& raw)
{
    if (row.Features & kAdapter)
        app.add_option("-a,--adapter", raw.Adapter, "Only this adapter")
            ->type_name("NAME")
            ->check(NotEmpty());
    CLI::Option* test = nullptr;
    if (row.Features & kTest)
        test = app.add_option("-t,--test", raw.Test, "Only this test")
                   ->type_name("NAME")
                   ->check(NotEmpty())
                   ->required(row.Features & kTestRequired);
    if (row.Features & kAll)
    {
        const char* text = row.Id == Command::Run ? "All ordinary tests" : "All results";
        CLI::Option* all = app.add_flag("--all", raw.All, text);
        all->excludes(test);
        if (row.Features & kTestOrAllRequired)
            app.callback(
                [test, all]
                {
                    if (test->count() == 0 && all->count() == 0)
                        throw CLI::RequiredError("--test or --all");
                });
    }
    if (row.Features & kCoverage)
        app.add_option("--coverage", raw.Coverage, "Percent of the configured time to run, 1 to 100")
            ->type_name("N")
            ->check(CLI::Range(1u, 100u).description(""));
    if (row.Features & kRun)
    {
        app.add_flag("--no-quick", raw.NoQuick, "Use the full time even where enough packets came sooner");
        app.add_option("--timeout", raw.Timeout, "Stop the run after this many seconds")
            ->type_name("SECONDS")
            ->check(CLI::Range(1u, kLongestTimeout).description(""));
        CLI::Option* peer = app.add_option("--peer", raw.Peer, "Where the sender sends its packets to")
                                ->type_name("ADDRESS")
                                ->check(NotEmpty())
                                ->needs(test);
        for (const CPeerNumberRow& number : kPeerNumbers)
            app.add_option(number.Option, raw.*number.Member, number.Summary)
                ->type_name("N")
                ->check(CLI::Range(number.Smallest, number.Largest).description(""))
                ->needs(peer);
    }
    if (row.Features & kSet)
    {
        app.add_option("--quick", raw.Quick, "on: end as soon as enough packets came; off: use the full time")
            ->type_name("on|off")
            ->check(CLI::IsMember({"on", "off"}).description(""));
        app.add_option("--report", raw.Report, "on: show packet counters in the result; off: do not")
            ->type_name("on|off")
            ->check(CLI::IsMember({"on", "off"}).description(""));
        app.callback(
            [&raw]
            {
                if (!raw.Coverage && !raw.Quick && !raw.Report)
                    throw CLI::RequiredError("--coverage, --quick or --report");
            });
    }
    app.add_flag("--json", raw.Json, "Print one JSON document instead of text (see docs/json.md)");
    app.add_option("--computer", raw.Computer, "The computer to look at; this one where left out")
        ->type_name("NAME");
    app.add_option("--user", raw.User, "The user to connect as; the password is asked for")
        ->type_name("NAME");
    app.add_option("--namespace", raw.Namespace, "The provider's namespace")
        ->type_name("NAME")
        ->capture_default_str();
    app.add_option("--locale", raw.Locale, "The language of names and texts, such as de-DE or MS_407")
        ->type_name("NAME")
        ->check(
            [](const std::string& text)
            {
                return text.empty() || LocaleArgument(WidenUtf8(text)).empty() ? "unknown language: " + text
                                                                               : std::string();
            });
}

std::optional<bool> OnOff(const std::optional<std::string>& text)
{
    return text ? std::optional<bool>(*text == "on") : std::nullopt;
}

COptions ToOptions(Command command, const CRawOptions& raw)
{
    COptions options;
    options.Command = command;
    options.Target.Computer = WidenUtf8(raw.Computer);
    options.Target.Namespace = WidenUtf8(raw.Namespace);
    options.Target.User = WidenUtf8(raw.User);
    options.Target.Locale = raw.Locale.empty() ? L"" : LocaleArgument(WidenUtf8(raw.Locale));
    options.Json = raw.Json;
    options.Adapter = WidenUtf8(raw.Adapter);
    options.Test = WidenUtf8(raw.Test);
    options.All = raw.All;
    options.Coverage = raw.Coverage;
    options.NoQuick = raw.NoQuick;
    options.TimeoutSeconds = raw.Timeout;
    options.Sender = {WidenUtf8(raw.Peer), raw.Port, raw.Rate, raw.Size, raw.Dscp};
    options.Quick = OnOff(raw.Quick);
    options.Report = OnOff(raw.Report);
    return options;
}

CCommandLine UsageError(const CLI::App& app, const std::string& message)
{
    const CLI::App* command = &app;
    for (const CLI::App* sub : app.get_subcommands())
        command = sub;
    const std::string name = command == &app ? "zebdiag" : "zebdiag " + command->get_name();
    return {std::nullopt, WidenUtf8("zebdiag: " + message + "\nTry: " + name + " --help\n"), ExitCode::Usage};
}
} // namespace

CCommandLine ParseCommandLine(const std::vector<std::wstring>& arguments)
{
    CRawOptions raw;
    CLI::App app("Diagnostics of wired Ethernet adapters: list, run and stop tests, read results.",
                 "zebdiag");
    app.require_subcommand(1);
    app.get_formatter()->label("SUBCOMMAND", "COMMAND");
    app.set_help_flag("-h,--help", "Show this help");
    app.get_formatter()->column_width(26);
    app.footer(kFooter);
    app.set_version_flag("--version", "zebdiag " ZEB_VERSION, "Show the version");
    std::array<CLI::App*, std::size(kCommands)> commands = {};
    for (size_t i = 0; i < std::size(kCommands); ++i)
    {
        commands[i] = app.add_subcommand(CommandName(kCommands[i].Id), kCommands[i].Summary);
        commands[i]->group("Commands");
        commands[i]->footer(kCommands[i].Footer);
        AddOptions(*commands[i], kCommands[i], raw);
    }

    // CLI11 takes the arguments from the back.
    std::vector<std::string> reversed;
    for (auto argument = arguments.rbegin(); argument != arguments.rend(); ++argument)
        reversed.push_back(Utf8Text(*argument));
    try
    {
        app.parse(std::move(reversed));
    }
    catch (const CLI::CallForHelp&)
    {
        const auto asked = app.get_subcommands();
        return {std::nullopt, WidenUtf8(asked.empty() ? app.help() : asked.front()->help("zebdiag")),
                ExitCode::Passed};
    }
    catch (const CLI::CallForVersion& version)
    {
        return {std::nullopt, WidenUtf8(std::string(version.what()) + "\n"), ExitCode::Passed};
    }
    catch (const CLI::ParseError& error)
    {
        // CLI11 reports the missing command before the word that is none.
        if (app.get_subcommands().empty() && !arguments.empty() && !arguments.front().starts_with(L"-"))
            return UsageError(app, "There is no command \"" + Utf8Text(arguments.front()) + "\"");
        return UsageError(app, error.what());
    }

    const auto asked = std::find(commands.begin(), commands.end(), app.get_subcommands().front());
    COptions options = ToOptions(kCommands[asked - commands.begin()].Id, raw);
    if (!options.Target.User.empty() && options.Target.IsLocal())
        return UsageError(app, "--user is for other computers: name one with --computer");
    return {std::move(options), {}, ExitCode::Passed};
}
} // namespace zebdiag
