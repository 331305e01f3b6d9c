#include "tools/zebdiag/OptionTable.h"

#include "Common/src/com/Text.h"
#include "tools/zebdiag/Filled.h"
#include "tools/zebdiag/OptionValues.h"
#include "tools/zebdiag/languages/Said.h"

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

constexpr const wchar_t* kCoverageSummary = Marked(L"Percent of the configured time to run, 1 to 100.");
constexpr const wchar_t* kQuickSummary =
    Marked(L"on: end as soon as enough packets came; off: use the full time.");
constexpr const wchar_t* kReportSummary = Marked(L"on: show packet counters in the result; off: do not.");

// Names of tests differ between languages; the examples have one that does not.
constexpr COptionRow kOptions[] = {
    {"-a,--adapter", Marked(L"NAME"), kList | kRun | kStop | kResults | kSettings | kSet | kClear | kReport,
     Marked(L"Only this adapter."), L"{1} --adapter \"Ethernet 2\"",
     [](App& a, const char* n, COptions& o) { return AddName(a, n, o.Adapter); }},
    {"-t,--test", Marked(L"NAME"), kRun | kStop | kResults | kClear, Marked(L"Only this test."),
     L"{2} --test sender", AddTest},
    {"-t,--test", Marked(L"NAME"), kSettings, Marked(L"Only this test."), L"{1} --test sender", AddTest},
    {"-t,--test", Marked(L"NAME"), kSet, Marked(L"The test to change."), L"{1}", AddTest},
    {"--all", L"", kRun, Marked(L"All ordinary tests."), L"{2} --all", AddAll},
    {"--all", L"", kClear, Marked(L"All results."), L"{2} --all", AddAll},
    {"--save", Marked(L"NAME"), kProfiles, Marked(L"Keep the settings given with it as this profile."),
     L"{1} --save short --coverage 20 --quick on",
     [](App& a, const char* n, COptions& o) { return AddName(a, n, o.Save); }},
    {"--delete", Marked(L"NAME"), kProfiles, Marked(L"Delete this profile."), L"{1} --delete short",
     [](App& a, const char* n, COptions& o) { return AddName(a, n, o.Delete); }},
    {"--out", Marked(L"FILE"), kMetrics, Marked(L"Write to this file; without it, to standard output."),
     L"{1} --out zebdiag.prom", [](App& a, const char* n, COptions& o) { return AddName(a, n, o.Out); }},
    {"--coverage", L"N", kRun | kSet, kCoverageSummary, L"{1} --coverage 50", AddCoverage},
    {"--coverage", L"N", kProfiles, kCoverageSummary, L"{1} --save half --coverage 50", AddCoverage},
    {"--quick", L"on|off", kSet, kQuickSummary, L"{1} --quick off", AddQuick},
    {"--quick", L"on|off", kProfiles, kQuickSummary, L"{1} --save thorough --quick off", AddQuick},
    {"--report", L"on|off", kSet, kReportSummary, L"{1}", AddReport},
    {"--report", L"on|off", kProfiles, kReportSummary, L"{1} --save thorough --quick off --report on",
     AddReport},
    {"--no-quick", L"", kRun, Marked(L"Use the full time even if enough packets came sooner."),
     L"{1} --no-quick", [](App& a, const char* n, COptions& o) { return AddFlag(a, n, o.NoQuick); }},
    {"--profile", Marked(L"NAME"), kRun,
     Marked(L"Run with the settings of this profile; see \"zebdiag help profiles\"."), L"{1} --profile short",
     [](App& a, const char* n, COptions& o) { return AddName(a, n, o.Profile); }},
    {"--serial", L"", kRun, Marked(L"One test after the other, whatever the adapter."), L"{2} --all --serial",
     [](App& a, const char* n, COptions& o) { return AddFlag(a, n, o.Serial); }},
    {"--timeout", Marked(L"SECONDS"), kRun, Marked(L"Stop the run after this many seconds."),
     L"{1} --timeout 120",
     [](App& a, const char* n, COptions& o)
     { return AddNumber(a, n, o.TimeoutSeconds, 1, kLongestTimeout); }},
    {"--peer", Marked(L"ADDRESS"), kRun, Marked(L"Where the sender sends its packets to."),
     L"{1} --peer 192.0.2.7",
     [](App& a, const char* n, COptions& o) { return AddName(a, n, o.Sender.Peer); }},
    // The limits are the agent's.
    {"--port", L"N", kRun, Marked(L"The peer's UDP port, 1 to 65535."), L"{1} --peer 192.0.2.7 --port 8620",
     [](App& a, const char* n, COptions& o) { return AddNumber(a, n, o.Sender.Port, 1, 65535); }},
    {"--rate", L"N", kRun, Marked(L"Packets per second, 1 to 1000."), L"{1} --peer 192.0.2.7 --rate 200",
     [](App& a, const char* n, COptions& o) { return AddNumber(a, n, o.Sender.Rate, 1, 1000); }},
    {"--size", L"N", kRun, Marked(L"Octets of UDP data in each packet, 44 to 1452."),
     L"{1} --peer 192.0.2.7 --size 1452",
     [](App& a, const char* n, COptions& o) { return AddNumber(a, n, o.Sender.Size, 44, 1452); }},
    {"--dscp", L"N", kRun, Marked(L"The mark of the packets, 0 to 63."), L"{1} --peer 192.0.2.7 --dscp 46",
     [](App& a, const char* n, COptions& o) { return AddNumber(a, n, o.Sender.Dscp, 0, 63); }},
    {"--html", Marked(L"FILE"), kReport, Marked(L"Write the report as a page to this file."), L"{1}",
     [](App& a, const char* n, COptions& o) { return AddName(a, n, o.Html); }},
    {"--json", Marked(L"[FILE]"), kReport,
     Marked(L"Write it as a JSON document to this file; without one, print it."), L"{2} --json report.json",
     [](App& a, const char* n, COptions& o) { return AddNameOrFlag(a, n, o.JsonFile, o.Json); }},
    {"--json", L"", (kRemote & ~kReport) | kProfiles, Marked(L"Print one JSON document instead of text."),
     L"{1} --json", [](App& a, const char* n, COptions& o) { return AddFlag(a, n, o.Json); }},
    {"--computer", Marked(L"NAME"), kRemote, Marked(L"The computer to look at; without it, this one."),
     L"{1} --computer WS42",
     [](App& a, const char* n, COptions& o) { return AddName(a, n, o.Target.Computer); }},
    {"--user", Marked(L"NAME"), kRemote,
     Marked(L"The user to connect to another computer as; the password is asked for."),
     L"{1} --computer WS42 --user EXAMPLE\\admin",
     [](App& a, const char* n, COptions& o) { return AddName(a, n, o.Target.User); }},
    {"--namespace", Marked(L"NAME"), kRemote | kMetrics,
     Marked(L"The provider's namespace; without it, root\\cimv2."), L"{1} --namespace root\\cimv2",
     [](App& a, const char* n, COptions& o) { return AddName(a, n, o.Target.Namespace); }},
    {"--locale", Marked(L"NAME"), kRemote | kProfiles | kMetrics, Marked(L"The language of names and texts."),
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
                ->type_name(Utf8Text(Said(row.Value)))
                ->description(Utf8Text(Said(row.Summary) + L"\n" +
                                       Filled(row.Example, {RowOf(command).Example, alone})));
}
} // namespace zebdiag
