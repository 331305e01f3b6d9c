// The commands. Each shows what it did and says how it ended; what it cannot do at all is a CFailure.
#pragma once

#include "tools/zebdiag/AdapterNames.h"
#include "tools/zebdiag/Console.h"
#include "tools/zebdiag/ExitCode.h"
#include "tools/zebdiag/JsonReport.h"
#include "tools/zebdiag/NameMatch.h"
#include "tools/zebdiag/Profiles.h"
#include "tools/zebdiag/SenderValues.h"
#include "tools/zebdiag/ServingProcess.h"
#include "tools/zebdiag/TestRun.h"
#include "tools/zebdiag/doctor/Machine.h"

#include <functional>
#include <optional>
#include <vector>

namespace zebdiag
{
// The length configured on this computer for a run that sends packets; absent where the session is with
// another one.
std::optional<unsigned> ConfiguredRunSeconds(const CWmiSession& session);

// True if the provider, which changes its store with the caller's rights, cannot remove a result from it.
// Only this computer can be looked at; on others nothing is known to be refused.
bool StoreRefusesCaller(const CWmiSession& session, const IMachine& machine = ThisMachine());

// What the commands learn about the machine besides what the namespace says.
struct CSurroundings
{
    std::function<AdapterNames(const CWmiSession&)> Names = FindAdapterNames;
    std::function<std::vector<unsigned long>(const CWmiSession&)> ServingProcesses = FindServingProcesses;
    std::function<std::optional<unsigned>(const CWmiSession&)> FullRunSeconds = ConfiguredRunSeconds;
    std::function<bool(const CWmiSession&)> StoreRefuses = [](const CWmiSession& session)
    { return StoreRefusesCaller(session); };
    IRegistryValues* Registry = &ThisRegistry(); // of the sender
    std::wstring ProfileFile = zebdiag::ProfileFile();
};

struct CCommandContext
{
    const COptions& Options;
    const CWmiSession& Session;
    IConsole& Console;
    const CRunControl& Control;
    const CSurroundings& Surroundings;

    CInventory Inventory() const;
    // The tests that the options name.
    std::vector<CTestChoice> ChosenTests(const CInventory& inventory) const;
    CJsonHead JsonHead(const CInventory& inventory) const;
    // Writes a text to standard output, cut into lines for its terminal.
    void Say(const std::wstring& text) const;
};

// The command that the options name, which is any of those that have a session.
ExitCode Execute(const CCommandContext& context);

ExitCode ListTests(const CCommandContext& context);
ExitCode RunTests(const CCommandContext& context);
ExitCode StopTests(const CCommandContext& context);
ExitCode ShowResults(const CCommandContext& context);
ExitCode ShowSettings(const CCommandContext& context);
ExitCode ChangeSettings(const CCommandContext& context);
ExitCode ClearResults(const CCommandContext& context);
ExitCode WriteReport(const CCommandContext& context);

// Shows the profiles in the file, after it has kept or deleted the one that the options name.
ExitCode KeepProfiles(const COptions& options, const std::wstring& file, IConsole& console);
} // namespace zebdiag
