#include "tools/zebdiag/report/Report.h"

#include "tools/zebdiag/Commands.h"
#include "tools/zebdiag/Inventory.h"
#include "tools/zebdiag/Words.h"
#include "tools/zebdiag/languages/Said.h"

#include <cwchar>
#include <limits>
#include <windows.h>

namespace zebdiag
{
namespace
{
constexpr wchar_t kNumberFollows[] = L": ";
constexpr wchar_t kDecimalDigits[] = L"0123456789";

std::wstring TimeNow()
{
    SYSTEMTIME now = {};
    GetLocalTime(&now);
    wchar_t text[32] = {};
    std::swprintf(text, 32, L"%04d%02d%02d%02d%02d%02d", now.wYear, now.wMonth, now.wDay, now.wHour,
                  now.wMinute, now.wSecond);
    return text;
}

// False for a finding that does not end with a number of 32 bits.
bool ReadCounter(const std::wstring& finding, CCounter& counter)
{
    const size_t mark = finding.rfind(kNumberFollows);
    if (mark == std::wstring::npos)
        return false;
    const std::wstring digits = finding.substr(mark + 2);
    if (digits.empty() || digits.size() > 10 ||
        digits.find_first_not_of(kDecimalDigits) != std::wstring::npos)
        return false;
    const unsigned long long value = std::wcstoull(digits.c_str(), nullptr, 10);
    counter = {finding.substr(0, mark), static_cast<unsigned long>(value)};
    return value <= std::numeric_limits<unsigned long>::max();
}
} // namespace

const CResult* CReport::ResultOf(const CTest& test) const
{
    const auto found = Results.find(test.Key);
    return found == Results.end() ? nullptr : &found->second;
}

const CSettingValues* CReport::SettingOf(const CTest& test) const
{
    const auto found = Settings.find(test.Key);
    return found == Settings.end() || !test.SendsPackets() ? nullptr : &found->second;
}

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

std::vector<CCounter> CountersOf(const CTest& test, const CResult& result)
{
    std::vector<CCounter> counters;
    if (!test.SendsPackets())
        return counters;
    for (const std::wstring& finding : Findings(result))
    {
        CCounter counter;
        if (!ReadCounter(finding, counter))
            return {};
        counters.push_back(std::move(counter));
    }
    return counters;
}
} // namespace zebdiag
