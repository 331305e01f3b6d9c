#include "tools/zebdiag/report/GatherReport.h"

#include "tools/zebdiag/Commands.h"
#include "tools/zebdiag/Inventory.h"
#include "tools/zebdiag/languages/Said.h"

#include <cwchar>
#include <windows.h>

namespace zebdiag
{
namespace
{
std::wstring TimeNow()
{
    SYSTEMTIME now = {};
    GetLocalTime(&now);
    wchar_t text[32] = {};
    std::swprintf(text, 32, L"%04d%02d%02d%02d%02d%02d", now.wYear, now.wMonth, now.wDay, now.wHour,
                  now.wMinute, now.wSecond);
    return text;
}
} // namespace

CReport GatherReport(const CCommandContext& context)
{
    const CInventory inventory = context.Inventory();
    if (inventory.TestCount() == 0)
        throw CFailure(ExitCode::NotFound, Said(L"There is nothing to report: no wired adapter has tests."),
                       Said(L"Run \"zebdiag doctor\": it says which adapters were left out, and why."));
    CReport report;
    // Right after the enumeration, while its process still stands by.
    report.Processes = context.Surroundings.ServingProcesses(context.Session);
    report.Computer = inventory.Computer;
    report.Namespace = context.Options.Target.Namespace;
    report.Made = TimeNow();
    report.Results = LoadResults(context.Session);
    for (const CAdapter* adapter : ChooseAdapters(inventory, context.Options.Adapter))
        report.Adapters.push_back(*adapter);
    for (const auto& [key, setting] : LoadSettings(context.Session))
        report.Settings[key] = setting.Values;
    return report;
}
} // namespace zebdiag
