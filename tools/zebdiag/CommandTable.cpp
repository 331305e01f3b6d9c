#include "tools/zebdiag/CommandTable.h"
#include "tools/zebdiag/languages/Said.h"

#include <algorithm>

namespace zebdiag
{
namespace
{
constexpr CCommandRow kCommands[] = {
    {Command::Doctor, Marked(L"Check the installation and say what is wrong with it and what to do."),
     L"zebdiag doctor",
     Marked(
         L"Each point is good, wrong or unknown; nothing is changed. Begin with this command if another one fails. Exit "
         L"code 0 means that nothing is wrong, 1 that something is, 6 that the provider does not answer because of it.")},
    {Command::List, Marked(L"Show the tests of every wired adapter, and which process delivers them."),
     L"zebdiag list", nullptr},
    {Command::Run, Marked(L"Run one test, or all ordinary tests, and show the results."),
     L"zebdiag run --test sender",
     Marked(
         L"--all leaves out the tests that send and receive test packets: they take minutes, need a partner and can slow "
         L"other traffic down. Run those by name. --coverage, --no-quick and --profile hold for this run only: the setting "
         L"is put back afterwards. So are the registry values that --peer and the options with it set for the run, which "
         L"takes an administrator and a session with this computer. Ctrl+C stops what runs.")},
    {Command::Stop, Marked(L"Stop running tests: all of them, or the named one."), L"zebdiag stop", nullptr},
    {Command::Results, Marked(L"Show the stored results and those of running tests."), L"zebdiag results",
     nullptr},
    {Command::Settings, Marked(L"Show the settings of the tests that have any."), L"zebdiag settings",
     nullptr},
    {Command::Set, Marked(L"Change the settings of a test until the provider ends."),
     L"zebdiag set --test sender --report on",
     Marked(
         L"The provider ends some seconds after the management service has let it go, which is minutes after the last "
         L"request; then the settings are the built-in ones again. To use your own in every run, keep them in a profile and "
         L"run with --profile.")},
    {Command::Clear, Marked(L"Delete the stored results of one test, or of all."),
     L"zebdiag clear --test sender", nullptr},
    {Command::Report, Marked(L"Write a report on the adapters, their tests and last results."),
     L"zebdiag report --html report.html",
     Marked(
         L"The page needs no other file and fetches nothing: send it, print it, or read it on a phone. An existing "
         L"file is replaced. No test is run for it.")},
    {Command::Profiles, Marked(L"Show, keep or delete profiles, which are settings to run with."),
     L"zebdiag profiles",
     Marked(
         L"A profile belongs to you and stays until you delete it. \"zebdiag run --profile NAME\" gives its settings to the "
         L"run and puts the former ones back afterwards. A setting that the profile leaves out stays as it is.")},
    {Command::Metrics, Marked(L"Write this computer's results as metrics for Prometheus."),
     L"zebdiag metrics",
     Marked(
         L"The format is OpenMetrics. A file is replaced in one step, so it can be read at any moment. If the provider does "
         L"not answer, the metrics say so, and the exit code is that of the failure.")},
};
} // namespace

std::span<const CCommandRow> CommandRows() noexcept
{
    return kCommands;
}

const CCommandRow& RowOf(Command command) noexcept
{
    return *std::ranges::find(kCommands, command, &CCommandRow::Id);
}
} // namespace zebdiag
