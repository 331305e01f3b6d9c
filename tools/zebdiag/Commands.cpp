#include "tools/zebdiag/Commands.h"

#include "Common/src/com/Owned.h"
#include "tools/zebdiag/Inventory.h"
#include "tools/zebdiag/Wrap.h"
#include "tools/zebdiag/doctor/Places.h"

namespace zebdiag
{
namespace
{
using Handler = ExitCode (*)(const CCommandContext&);

// In the order of Command. Those behind them begin without a session.
constexpr Handler kHandlers[] = {ListTests,    RunTests,       StopTests,    ShowResults,
                                 ShowSettings, ChangeSettings, ClearResults, WriteReport};

// What the provider uses where nothing is configured.
constexpr DWORD kDefaultRunSeconds = 100;
} // namespace

std::optional<unsigned> ConfiguredRunSeconds(const CWmiSession& session)
{
    if (!session.Target().IsLocal())
        return std::nullopt;
    DWORD seconds = 0;
    DWORD size = sizeof seconds;
    const LSTATUS status = RegGetValueW(HKEY_LOCAL_MACHINE, kZebDiagKey, L"TimeoutSndRsp", RRF_RT_REG_DWORD,
                                        nullptr, &seconds, &size);
    return status == ERROR_SUCCESS ? seconds : kDefaultRunSeconds;
}

bool StoreRefusesCaller(const CWmiSession& session, const IMachine& machine)
{
    const std::wstring store = DataFolder(machine) + L"ZebDiag.bin";
    return session.Target().IsLocal() && machine.Look(store) == FileState::There &&
           machine.MayWrite(FolderOf(store), L"") == Right::No;
}

CInventory CCommandContext::Inventory() const
{
    return LoadInventory(Session, Surroundings.Names(Session));
}

std::vector<CTestChoice> CCommandContext::ChosenTests(const CInventory& inventory) const
{
    return ChooseTests(ChooseAdapters(inventory, Options.Adapter), Options.Test);
}

CJsonHead CCommandContext::JsonHead(const CInventory& inventory) const
{
    return {Options.Command, inventory.Computer, Options.Target.Namespace};
}

void CCommandContext::Say(const std::wstring& text) const
{
    if (!text.empty())
        Console.Out(Paragraph(text, Console.Width()));
}

ExitCode Execute(const CCommandContext& context)
{
    return kHandlers[static_cast<int>(context.Options.Command)](context);
}
} // namespace zebdiag
