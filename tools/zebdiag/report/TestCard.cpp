#include "tools/zebdiag/report/TestCard.h"

#include "tools/zebdiag/DateTime.h"
#include "tools/zebdiag/TextReport.h"
#include "tools/zebdiag/Words.h"
#include "tools/zebdiag/languages/Said.h"
#include "tools/zebdiag/report/CounterChart.h"
#include "tools/zebdiag/report/Standing.h"

namespace zebdiag
{
namespace
{
std::wstring TimesOf(const CResult& result)
{
    const std::wstring started = ReadableTime(result.Started);
    if (started.empty())
        return {};
    const std::wstring ended = ReadableEnd(result.Completed, result.Started);
    return ended.empty() ? Said(L"Started {1}", {started}) : Said(L"{1} to {2}", {started, ended});
}

void AddHeading(CHtml& html, const CReport& report, const CTest& test, const std::wstring& id)
{
    const CResult* result = report.ResultOf(test);
    const Standing standing = StandingOf(report, test);
    const auto head = html.Element(L"div", {{L"class", L"head"}});
    {
        const auto name = html.Element(L"h3", {{L"id", id}});
        html.Add(L"span", std::to_wstring(test.Number), {{L"class", L"number"}});
        html.AddText(test.Caption);
    }
    const auto state = html.Element(L"p", {{L"class", L"state"}});
    AddStanding(html, standing, result ? StateCell(*result) : StandingInWords(standing));
}

void AddSettingRow(CHtml& html, const std::wstring& title, const CSettingValues& values)
{
    const auto row = html.Element(L"tr");
    html.Add(L"th", title, {{L"scope", L"row"}});
    for (const std::wstring& cell : SettingCells(values))
        html.Add(L"td", cell);
}

void AddSettings(CHtml& html, const CSettingValues& now, const CResult* result)
{
    const auto table = html.Element(L"table", {{L"class", L"settings"}});
    html.Add(L"caption", Said(L"Settings"));
    {
        const auto row = html.Element(L"tr");
        html.Add(L"td", L"");
        for (const std::wstring& heading : {Said(L"Coverage"), Said(L"Quick"), Said(L"Report")})
            html.Add(L"th", heading, {{L"scope", L"col"}});
    }
    AddSettingRow(html, Said(L"Now"), now);
    if (result)
        AddSettingRow(html, Said(L"Last run"), result->Setting);
}
} // namespace

void AddFindings(CHtml& html, const CResult& result)
{
    for (const std::wstring& finding : Findings(result))
        html.Add(L"p", finding, {{L"class", L"finding"}});
}

void AddTestCard(CHtml& html, const CReport& report, const CTest& test, const std::wstring& id)
{
    const CResult* result = report.ResultOf(test);
    const std::wstring kind = KindOf(StandingOf(report, test));
    const auto card = html.Element(
        L"article", {{L"id", id}, {L"class", L"test " + kind}, {L"aria-labelledby", id + L"-name"}});
    AddHeading(html, report, test, id + L"-name");
    html.Add(L"p", test.Description, {{L"class", L"about"}});
    if (result)
    {
        if (const std::wstring times = TimesOf(*result); !times.empty())
            html.Add(L"p", times, {{L"class", L"times"}});
        const std::vector<CCounter> counters = CountersOf(test, *result);
        if (counters.empty())
            AddFindings(html, *result);
        else
            AddCounters(html, counters);
    }
    if (const CSettingValues* setting = report.SettingOf(test))
        AddSettings(html, *setting, result);
}
} // namespace zebdiag
