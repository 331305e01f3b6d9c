#include "tools/zebdiag/TextReport.h"

#include "tools/zebdiag/DateTime.h"
#include "tools/zebdiag/ServingProcess.h"
#include "tools/zebdiag/Table.h"
#include "tools/zebdiag/Words.h"
#include "tools/zebdiag/Wrap.h"
#include "tools/zebdiag/languages/Said.h"

#include <functional>

namespace zebdiag
{
namespace
{
constexpr unsigned kFindingIndent = 4;
constexpr unsigned kKeyIndent = 2;

constexpr const wchar_t* kSettingsExplained = Marked(
    L"Coverage: how much of the configured time a run takes. Quick: whether it ends as soon as enough packets came. "
    L"Report: whether it shows packet counters. Changes hold until the provider ends.");

// What is listed, and by whom; the sentence is the same without processes.
std::wstring ServedBy(const std::wstring& what, const std::vector<unsigned long>& processes)
{
    if (processes.empty())
        return what + L".";
    std::wstring numbers;
    for (const unsigned long process : processes)
        numbers += (numbers.empty() ? L"" : L", ") + std::to_wstring(process);
    return Said(L"{1}, delivered by {2} (process {3}).", {what, kProviderImage, numbers});
}

std::wstring FindingsCell(const CResult& result)
{
    std::wstring text;
    for (const std::wstring& finding : Findings(result))
        text += (text.empty() ? L"" : L"\n") + finding;
    return text;
}

std::wstring OnOff(const std::optional<bool>& value)
{
    return !value ? L"-" : *value ? Said(L"on") : Said(L"off");
}

std::wstring PercentOrDash(const std::optional<long>& value)
{
    return value ? Percent(*value) : L"-";
}

// A table for each adapter that has a row, under the adapter's title. `addRow` says whether it added one.
std::wstring TablesByAdapter(const std::vector<CTestChoice>& tests, const std::vector<std::wstring>& headings,
                             unsigned width, const std::function<bool(CTable&, const CTest&)>& addRow)
{
    std::wstring text;
    for (size_t i = 0; i < tests.size();)
    {
        const CAdapter* adapter = tests[i].Adapter;
        CTable table(headings);
        bool any = false;
        for (; i < tests.size() && tests[i].Adapter == adapter; ++i)
            any = addRow(table, *tests[i].Test) || any;
        if (any)
            text += Paragraph(AdapterTitle(*adapter), width) + table.Render(width) + L"\n";
    }
    return text;
}
} // namespace

std::wstring StateCell(const CResult& result)
{
    std::wstring text = StateInWords(result.State);
    if (result.State == TestState::InProgress && result.Percent && *result.Percent > 0)
        text += L", " + Percent(*result.Percent);
    return text;
}

std::vector<std::wstring> SettingCells(const CSettingValues& values)
{
    return {PercentOrDash(values.Coverage), OnOff(values.Quick), OnOff(values.Report)};
}

std::wstring SettingsExplained()
{
    return Said(kSettingsExplained);
}

std::wstring AdapterTitle(const CAdapter& adapter)
{
    return adapter.Description.empty() || adapter.Description == adapter.Name
               ? adapter.Name
               : adapter.Name + L" (" + adapter.Description + L")";
}

std::wstring TestTitle(const CTestChoice& choice)
{
    return Said(L"{1} on {2}", {choice.Test->Caption, choice.Adapter->Name});
}

std::wstring RenderList(const CInventory& inventory, const std::vector<const CAdapter*>& adapters,
                        const std::vector<unsigned long>& processes, unsigned width)
{
    std::wstring text;
    size_t count = 0;
    for (const CAdapter* adapter : adapters)
    {
        text += Paragraph(AdapterTitle(*adapter), width);
        if (adapter->Name != adapter->Key)
            text += Paragraph(adapter->Key, width, kKeyIndent);
        CTable table({Said(L"Number"), Said(L"Test"), Said(L"Description")});
        for (const CTest& test : adapter->Tests)
        {
            table.Add({std::to_wstring(test.Number),
                       test.InUse ? Said(L"{1} (running)", {test.Caption}) : test.Caption, test.Description});
            ++count;
        }
        text += table.Render(width) + L"\n";
    }
    if (count == 0)
        return Paragraph(ServedBy(Said(L"There is no wired adapter with tests"), processes), width);
    const std::wstring tests = Tests(count);
    const std::wstring on = Adapters(adapters.size());
    return text + Paragraph(ServedBy(inventory.Computer.empty()
                                         ? tests + L", " + on
                                         : Said(L"{1} on {2} of {3}", {tests, on, inventory.Computer}),
                                     processes),
                            width);
}

std::wstring RenderResults(const std::vector<CTestChoice>& tests,
                           const std::map<std::wstring, CResult>& results, unsigned width)
{
    std::map<TestState, size_t> counts;
    size_t count = 0;
    std::wstring text = TablesByAdapter(
        tests, {Said(L"Test"), Said(L"State"), Said(L"Started"), Said(L"Ended"), Said(L"Findings")}, width,
        [&](CTable& table, const CTest& test)
        {
            const auto found = results.find(test.Key);
            if (found == results.end())
                return false;
            const CResult& result = found->second;
            table.Add({test.Caption, StateCell(result), ReadableTime(result.Started),
                       ReadableEnd(result.Completed, result.Started), FindingsCell(result)});
            ++counts[result.State];
            ++count;
            return true;
        });
    if (count == 0)
        return Paragraph(Said(L"There are no results."), width);
    std::wstring summary = Results(count);
    const wchar_t* separator = L": ";
    for (const auto& [state, number] : counts)
    {
        std::wstring word = StateInWords(state);
        word.front() = static_cast<wchar_t>(towlower(word.front()));
        summary += separator + Said(L"{1} {2}", {std::to_wstring(number), word});
        separator = L", ";
    }
    return text + Paragraph(summary + L".", width);
}

std::wstring RenderSettings(const std::vector<CTestChoice>& tests,
                            const std::map<std::wstring, CSetting>& settings, unsigned width)
{
    std::wstring text =
        TablesByAdapter(tests, {Said(L"Test"), Said(L"Coverage"), Said(L"Quick"), Said(L"Report")}, width,
                        [&](CTable& table, const CTest& test)
                        {
                            const auto found = settings.find(test.Key);
                            if (!test.SendsPackets() || found == settings.end())
                                return false;
                            std::vector<std::wstring> row = SettingCells(found->second.Values);
                            row.insert(row.begin(), test.Caption);
                            table.Add(std::move(row));
                            return true;
                        });
    if (text.empty())
        return Paragraph(Said(L"None of these tests has settings."), width);
    return text + Paragraph(SettingsExplained(), width);
}

std::wstring RenderProfiles(const Profiles& profiles, unsigned width)
{
    if (profiles.empty())
        return Paragraph(
            Said(L"There are no profiles. Keep one with \"zebdiag profiles --save NAME\" and the settings to "
                 L"run with."),
            width);
    CTable table({Said(L"Profile"), Said(L"Coverage"), Said(L"Quick"), Said(L"Report")});
    for (const auto& [name, values] : profiles)
    {
        std::vector<std::wstring> row = SettingCells(values);
        row.insert(row.begin(), name);
        table.Add(std::move(row));
    }
    return table.Render(width) + L"\n" +
           Paragraph(
               Said(
                   L"Run with one: \"zebdiag run --test sender --profile NAME\". A dash leaves a setting as it is."),
               width);
}

std::wstring EffectsInWords(const std::vector<CTestEffect>& effects)
{
    std::wstring text;
    for (const CTestEffect& effect : effects)
        text += (text.empty() ? L"" : L"\n") + TestTitle(effect.Choice) + L": " + effect.Message;
    return text;
}

std::wstring RenderFindings(const CResult& result, unsigned width)
{
    std::wstring text;
    for (const std::wstring& finding : Findings(result))
        text += Paragraph(finding, width, kFindingIndent);
    return text;
}
} // namespace zebdiag
