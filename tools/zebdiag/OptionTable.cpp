#include "tools/zebdiag/OptionTable.h"

#include "Common/src/com/Text.h"
#include "tools/zebdiag/Filled.h"
#include "tools/zebdiag/OptionValues.h"

#include <CLI/CLI.hpp>

namespace zebdiag
{
namespace
{
using CLI::App;

constexpr unsigned kLongestTimeout = 1000000; // seconds

CLI::Option* AddTest(App& a, const char* n, COptions& o)
{
    return AddName(a, n, o.Test);
}

CLI::Option* AddAll(App& a, const char* n, COptions& o)
{
    return AddFlag(a, n, o.All);
}

CLI::Option* AddCoverage(App& a, const char* n, COptions& o)
{
    return AddNumber(a, n, o.Coverage, 1, 100);
}

CLI::Option* AddQuick(App& a, const char* n, COptions& o)
{
    return AddSwitch(a, n, o.Quick);
}

CLI::Option* AddReport(App& a, const char* n, COptions& o)
{
    return AddSwitch(a, n, o.Report);
}

constexpr const wchar_t* kCoverageSummary = L"Percent of the configured time to run, 1 to 100.";
constexpr const wchar_t* kQuickSummary = L"on: end as soon as enough packets came; off: use the full time.";
constexpr const wchar_t* kReportSummary = L"on: show packet counters in the result; off: do not.";

constexpr COptionRow kOptions[] = {
    {"-a,--adapter", L"NAME", kList | kRun | kStop | kResults | kSettings | kSet | kClear,
     L"Only this adapter.", L"{1} --adapter \"Ethernet 2\"",
     [](App& a, const char* n, COptions& o) { return AddName(a, n, o.Adapter); }},
    {"-t,--test", L"NAME", kRun | kStop | kResults | kClear, L"Only this test.", L"{2} --test link", AddTest},
    {"-t,--test", L"NAME", kSettings, L"Only this test.", L"{1} --test sender", AddTest},
    {"-t,--test", L"NAME", kSet, L"The test to change.", L"{1}", AddTest},
    {"--all", L"", kRun, L"All ordinary tests.", L"{2} --all", AddAll},
    {"--all", L"", kClear, L"All results.", L"{2} --all", AddAll},
    {"--save", L"NAME", kProfiles, L"Keep the settings given with it as this profile.",
     L"{1} --save short --coverage 20 --quick on",
     [](App& a, const char* n, COptions& o) { return AddName(a, n, o.Save); }},
    {"--delete", L"NAME", kProfiles, L"Delete this profile.", L"{1} --delete short",
     [](App& a, const char* n, COptions& o) { return AddName(a, n, o.Delete); }},
    {"--out", L"FILE", kMetrics, L"Write to this file; without it, to standard output.",
     L"{1} --out zebdiag.prom", [](App& a, const char* n, COptions& o) { return AddName(a, n, o.Out); }},
    {"--coverage", L"N", kRun | kSet, kCoverageSummary, L"{1} --coverage 50", AddCoverage},
    {"--coverage", L"N", kProfiles, kCoverageSummary, L"{1} --save half --coverage 50", AddCoverage},
    {"--quick", L"on|off", kSet, kQuickSummary, L"{1} --quick off", AddQuick},
    {"--quick", L"on|off", kProfiles, kQuickSummary, L"{1} --save thorough --quick off", AddQuick},
    {"--report", L"on|off", kSet, kReportSummary, L"{1}", AddReport},
    {"--report", L"on|off", kProfiles, kReportSummary, L"{1} --save thorough --quick off --report on",
     AddReport},
    {"--no-quick", L"", kRun, L"Use the full time even if enough packets came sooner.", L"{1} --no-quick",
     [](App& a, const char* n, COptions& o) { return AddFlag(a, n, o.NoQuick); }},
    {"--profile", L"NAME", kRun, L"Run with the settings of this profile; see \"zebdiag help profiles\".",
     L"{1} --profile short", [](App& a, const char* n, COptions& o) { return AddName(a, n, o.Profile); }},
    {"--serial", L"", kRun, L"One test after the other, whatever the adapter.", L"{2} --all --serial",
     [](App& a, const char* n, COptions& o) { return AddFlag(a, n, o.Serial); }},
    {"--timeout", L"SECONDS", kRun, L"Stop the run after this many seconds.", L"{1} --timeout 120",
     [](App& a, const char* n, COptions& o)
     { return AddNumber(a, n, o.TimeoutSeconds, 1, kLongestTimeout); }},
    {"--peer", L"ADDRESS", kRun, L"Where the sender sends its packets to.", L"{1} --peer 192.0.2.7",
     [](App& a, const char* n, COptions& o) { return AddName(a, n, o.Sender.Peer); }},
    // The limits are the agent's.
    {"--port", L"N", kRun, L"The peer's UDP port, 1 to 65535.", L"{1} --peer 192.0.2.7 --port 8620",
     [](App& a, const char* n, COptions& o) { return AddNumber(a, n, o.Sender.Port, 1, 65535); }},
    {"--rate", L"N", kRun, L"Packets per second, 1 to 1000.", L"{1} --peer 192.0.2.7 --rate 200",
     [](App& a, const char* n, COptions& o) { return AddNumber(a, n, o.Sender.Rate, 1, 1000); }},
    {"--size", L"N", kRun, L"Octets of UDP data in each packet, 44 to 1452.",
     L"{1} --peer 192.0.2.7 --size 1452",
     [](App& a, const char* n, COptions& o) { return AddNumber(a, n, o.Sender.Size, 44, 1452); }},
    {"--dscp", L"N", kRun, L"The mark of the packets, 0 to 63.", L"{1} --peer 192.0.2.7 --dscp 46",
     [](App& a, const char* n, COptions& o) { return AddNumber(a, n, o.Sender.Dscp, 0, 63); }},
    {"--json", L"", kRemote | kProfiles, L"Print one JSON document instead of text.", L"{1} --json",
     [](App& a, const char* n, COptions& o) { return AddFlag(a, n, o.Json); }},
    {"--computer", L"NAME", kRemote, L"The computer to look at; without it, this one.",
     L"{1} --computer WS42",
     [](App& a, const char* n, COptions& o) { return AddName(a, n, o.Target.Computer); }},
    {"--user", L"NAME", kRemote, L"The user to connect to another computer as; the password is asked for.",
     L"{1} --computer WS42 --user EXAMPLE\\admin",
     [](App& a, const char* n, COptions& o) { return AddName(a, n, o.Target.User); }},
    {"--namespace", L"NAME", kRemote | kMetrics, L"The provider's namespace; without it, root\\cimv2.",
     L"{1} --namespace root\\cimv2",
     [](App& a, const char* n, COptions& o) { return AddName(a, n, o.Target.Namespace); }},
    {"--locale", L"NAME", kRemote | kProfiles | kMetrics, L"The language of names and texts.",
     L"{1} --locale de-DE",
     [](App& a, const char* n, COptions& o) { return AddLocale(a, n, o.Target.Locale); }},
};
} // namespace

std::span<const COptionRow> OptionRows() noexcept
{
    return kOptions;
}

void AddOptions(App& app, Command command, COptions& options)
{
    const std::wstring alone = L"zebdiag " + WidenText(CommandName(command));
    for (const COptionRow& row : kOptions)
        if (row.Commands & Only(command))
            row.Add(app, row.Names, options)
                ->type_name(Utf8Text(row.Value))
                ->description(Utf8Text(std::wstring(row.Summary) + L"\n" +
                                       Filled(row.Example, {RowOf(command).Example, alone})));
}
} // namespace zebdiag
