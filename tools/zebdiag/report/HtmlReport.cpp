#include "tools/zebdiag/report/HtmlReport.h"

#include "tools/zebdiag/DateTime.h"
#include "tools/zebdiag/ServingProcess.h"
#include "tools/zebdiag/TextReport.h"
#include "tools/zebdiag/doctor/Places.h"
#include "tools/zebdiag/languages/Said.h"
#include "tools/zebdiag/report/Html.h"
#include "tools/zebdiag/report/PageStyle.h"
#include "tools/zebdiag/report/Standing.h"
#include "tools/zebdiag/report/TestCard.h"

#include <utility>

namespace zebdiag
{
namespace
{
// Even if something got past the escapes, the browser would neither run nor fetch it.
constexpr wchar_t kPolicy[] = L"default-src 'none'; style-src 'unsafe-inline'";

std::wstring Title(const CReport& report)
{
    return report.Computer.empty() ? Said(L"Diagnostics report")
                                   : Said(L"Diagnostics report of {1}", {report.Computer});
}

void AddHead(CHtml& html, const CReport& report)
{
    const auto head = html.Element(L"head");
    html.AddVoid(L"meta", {{L"charset", L"utf-8"}});
    html.AddVoid(L"meta", {{L"http-equiv", L"Content-Security-Policy"}, {L"content", kPolicy}});
    html.AddVoid(L"meta", {{L"name", L"viewport"}, {L"content", L"width=device-width, initial-scale=1"}});
    html.AddVoid(L"meta", {{L"name", L"color-scheme"}, {L"content", L"light dark"}});
    html.Add(L"title", Title(report));
    html.Add(L"style", kPageStyle);
}

std::wstring Provider(const std::vector<unsigned long>& processes)
{
    std::wstring numbers;
    for (const unsigned long process : processes)
        numbers += (numbers.empty() ? L"" : L", ") + std::to_wstring(process);
    return numbers.empty() ? std::wstring(kProviderImage)
                           : Said(L"{1} (process {2})", {kProviderImage, numbers});
}

void AddFacts(CHtml& html, const CReport& report)
{
    const std::pair<std::wstring, std::wstring> facts[] = {
        {Said(L"Computer"), report.Computer},
        {Said(L"Made"), ReadableTime(report.Made)},
        {Said(L"Provider"), Provider(report.Processes)},
        {Said(L"Namespace"), report.Namespace},
        {Said(L"Version of zebdiag"), kOwnVersion},
    };
    const auto list = html.Element(L"dl", {{L"class", L"facts"}});
    for (const auto& [name, value] : facts)
    {
        if (value.empty())
            continue;
        const auto row = html.Element(L"div");
        html.Add(L"dt", name);
        html.Add(L"dd", value);
    }
}

// What the elements of an adapter and of a test are called on the page.
std::wstring AdapterId(size_t adapter)
{
    return L"adapter-" + std::to_wstring(adapter + 1);
}

std::wstring TestId(size_t adapter, size_t test)
{
    return L"test-" + std::to_wstring(adapter + 1) + L"-" + std::to_wstring(test + 1);
}

template <class Fn>
void ForEachTest(const CReport& report, Fn&& each)
{
    for (size_t a = 0; a < report.Adapters.size(); ++a)
        for (size_t t = 0; t < report.Adapters[a].Tests.size(); ++t)
            each(TestId(a, t), CTestChoice{&report.Adapters[a], &report.Adapters[a].Tests[t]});
}

std::wstring Verdict(size_t failed, size_t withoutResult, size_t all)
{
    if (withoutResult == all)
        return Said(L"No test has run yet. Run \"zebdiag run --all\", then make the report again.");
    return failed == 0   ? Said(L"No test has failed.")
           : failed == 1 ? Said(L"One test has failed.")
                         : Said(L"{1} tests have failed.", {std::to_wstring(failed)});
}

void AddSummary(CHtml& html, const CReport& report)
{
    std::map<Standing, size_t> counts;
    size_t all = 0;
    ForEachTest(report,
                [&](const std::wstring&, const CTestChoice& choice)
                {
                    ++counts[StandingOf(report, *choice.Test)];
                    ++all;
                });
    html.Add(L"p", Verdict(counts[Standing::Failed], counts[Standing::NoResult], all),
             {{L"class", L"verdict"}});
    const auto list = html.Element(L"ul", {{L"class", L"counts"}});
    for (const auto& [standing, count] : counts)
    {
        if (count == 0)
            continue;
        const auto item = html.Element(L"li", {{L"class", KindOf(standing)}});
        html.Add(L"b", std::to_wstring(count));
        AddStanding(html, standing, StandingInWords(standing));
    }
}

void AddFailures(CHtml& html, const CReport& report)
{
    std::vector<std::pair<std::wstring, CTestChoice>> failures;
    ForEachTest(report,
                [&](const std::wstring& id, const CTestChoice& choice)
                {
                    if (StandingOf(report, *choice.Test) == Standing::Failed)
                        failures.emplace_back(id, choice);
                });
    if (failures.empty())
        return;
    const auto section =
        html.Element(L"section", {{L"class", L"failures"}, {L"aria-labelledby", L"failures"}});
    html.Add(L"h2", Said(L"What has failed"), {{L"id", L"failures"}});
    for (const auto& [id, choice] : failures)
    {
        {
            const auto title = html.Element(L"h3");
            html.Add(L"a", TestTitle(choice), {{L"href", L"#" + id}});
        }
        AddFindings(html, *report.ResultOf(*choice.Test));
    }
}

void AddAdapters(CHtml& html, const CReport& report)
{
    for (size_t a = 0; a < report.Adapters.size(); ++a)
    {
        const CAdapter& adapter = report.Adapters[a];
        const std::wstring id = AdapterId(a);
        const auto section = html.Element(L"section", {{L"class", L"adapter"}, {L"aria-labelledby", id}});
        html.Add(L"h2", adapter.Name, {{L"id", id}});
        if (!adapter.Description.empty() && adapter.Description != adapter.Name)
            html.Add(L"p", adapter.Description, {{L"class", L"device"}});
        if (adapter.Key != adapter.Name)
            html.Add(L"p", adapter.Key, {{L"class", L"key"}});
        for (size_t t = 0; t < adapter.Tests.size(); ++t)
            AddTestCard(html, report, adapter.Tests[t], TestId(a, t));
    }
}
} // namespace

std::wstring HtmlReport(const CReport& report)
{
    CHtml html;
    {
        // Each language has its own name in place of this one.
        const auto page = html.Element(L"html", {{L"lang", Said(L"en")}});
        AddHead(html, report);
        const auto body = html.Element(L"body");
        {
            const auto header = html.Element(L"header");
            html.Add(L"h1", Title(report));
            AddFacts(html, report);
        }
        const auto main = html.Element(L"main");
        AddSummary(html, report);
        AddFailures(html, report);
        AddAdapters(html, report);
        if (!report.Settings.empty())
            html.Add(L"p", SettingsExplained(), {{L"class", L"note"}});
    }
    return html.Page();
}
} // namespace zebdiag
