// The page of a report: that it shows everything, and that nothing which it shows becomes a part of it.
#include "tools/zebdiag/report/HtmlReport.h"

#include "Common/src/com/Text.h"
#include "SampleReport.h"
#include "tests/support/CaseName.h"
#include "tools/zebdiag/doctor/Places.h"
#include "tools/zebdiag/report/CounterChart.h"
#include "tools/zebdiag/report/PageStyle.h"

#include <gtest/gtest.h>
#include <limits>

namespace zebdiag
{
namespace
{
size_t CountIn(const std::wstring& page, const std::wstring& part)
{
    size_t count = 0;
    for (size_t at = page.find(part); at != std::wstring::npos; at = page.find(part, at + part.size()))
        ++count;
    return count;
}

// The part of a page that shows a test, from the beginning of its element to its end.
std::wstring CardOf(const std::wstring& page, const wchar_t* id)
{
    const size_t begin = page.find(L"<article id=\"" + std::wstring(id) + L"\"");
    if (begin == std::wstring::npos)
        return {};
    return page.substr(begin, page.find(L"</article>", begin) - begin);
}

struct EscapeCase
{
    const char* name;
    std::wstring text;
    std::wstring written;
};

class EscapedTest : public testing::TestWithParam<EscapeCase>
{
};

TEST_P(EscapedTest, IsWhatABrowserShowsAsTheText)
{
    EXPECT_EQ(Escaped(GetParam().text), GetParam().written);
}

INSTANTIATE_TEST_SUITE_P(Texts, EscapedTest,
                         testing::Values(EscapeCase{"Nothing", L"", L""},
                                         EscapeCase{"Plain", L"Größe 2", L"Größe 2"},
                                         EscapeCase{"Script", L"<script>alert(1)</script>",
                                                    L"&lt;script&gt;alert(1)&lt;/script&gt;"},
                                         EscapeCase{"Quotes", L"\"a\" 'b'", L"&quot;a&quot; &#39;b&#39;"},
                                         EscapeCase{"Ampersand", L"&lt;", L"&amp;lt;"},
                                         EscapeCase{"LinesAndTabs", L"a\n\tb", L"a\n\tb"},
                                         EscapeCase{"LineEnds", L"a\r\nb\rc\r\r\n\r", L"a\nb\nc\n\n\n"},
                                         EscapeCase{"Controls", std::wstring(L"a\0b\x1B\x7F\x85", 6),
                                                    L"a\xFFFD"
                                                    L"b\xFFFD\xFFFD\xFFFD"},
                                         EscapeCase{"NoCharacters", L"\xFFFE\xFDD0", L"\xFFFD\xFFFD"}),
                         NameOf<EscapeCase>);

TEST(PageStyleTest, HoldsNothingThatIsEscaped)
{
    EXPECT_EQ(Escaped(kPageStyle), kPageStyle);
}

TEST(HtmlReportTest, SaysWhatItIsAbout)
{
    const std::wstring page = HtmlReport(SampleReport());
    EXPECT_TRUE(page.starts_with(L"<!DOCTYPE html>\n<html lang=\"en\">")) << Utf8Text(page.substr(0, 60));
    for (const wchar_t* part :
         {L"<title>Diagnostics report of WS42</title>", L"<h1>Diagnostics report of WS42</h1>",
          L"<dt>Computer</dt>\n<dd>WS42</dd>", L"<dt>Made</dt>\n<dd>2024-05-01 14:00:00</dd>",
          L"<dd>Drevok.EXE (process 312)</dd>", L"<dd>root\\cimv2</dd>",
          L"<h2 id=\"adapter-1\">Ethernet</h2>", L"Contoso Gigabit", L"{AAAA-1111}"})
        EXPECT_EQ(CountIn(page, part), 1u) << Utf8Text(part);
    EXPECT_EQ(CountIn(page, L"<dd>" + std::wstring(kOwnVersion) + L"</dd>"), 1u);
}

struct StateCase
{
    const char* name;
    const wchar_t* id;
    const wchar_t* kind;
    const wchar_t* words;
    const wchar_t* more; // what else stands there
};

class StateOnPageTest : public testing::TestWithParam<StateCase>
{
};

TEST_P(StateOnPageTest, HasItsWordsAndItsKind)
{
    const std::wstring card = CardOf(HtmlReport(SampleReport()), GetParam().id);
    EXPECT_EQ(CountIn(card, L"class=\"test " + std::wstring(GetParam().kind) + L"\""), 1u) << Utf8Text(card);
    EXPECT_EQ(CountIn(card, L"<span>" + std::wstring(GetParam().words) + L"</span>"), 1u) << Utf8Text(card);
    EXPECT_EQ(CountIn(card, GetParam().more), 1u) << Utf8Text(card);
}

INSTANTIATE_TEST_SUITE_P(
    States, StateOnPageTest,
    testing::Values(
        StateCase{"Passed", L"test-1-1", L"passed", L"Passed", L"2024-05-01 13:45:10 to 13:45:12"},
        StateCase{"Failed", L"test-1-2", L"failed", L"Failed", L"The adapter is slow. Check the cable."},
        StateCase{"InProgress", L"test-1-3", L"running", L"In progress, 45 %",
                  L"Started 2024-05-01 13:45:10<"},
        StateCase{"Stopped", L"test-1-4", L"stopped", L"Stopped", L"Another program stopped the test."},
        StateCase{"Unknown", L"test-1-5", L"none", L"Unknown", L"What Addresses looks at."},
        StateCase{"Other", L"test-1-6", L"none", L"Other", L"What Gateway looks at."},
        StateCase{"NoResult", L"test-1-7", L"none", L"No result", L"What Names looks at."},
        StateCase{"RunsForTheFirstTime", L"test-1-8", L"running", L"In progress", L"What Driver looks at."}),
    NameOf<StateCase>);

TEST(HtmlReportTest, FailuresComeFirst)
{
    const std::wstring page = HtmlReport(SampleReport());
    EXPECT_EQ(CountIn(page, L"<p class=\"verdict\">One test has failed.</p>"), 1u);
    EXPECT_EQ(CountIn(page, L"The adapter is slow. Check the cable."), 2u);
    EXPECT_EQ(CountIn(page, L"<a href=\"#test-1-2\">Speed on Ethernet</a>"), 1u);
    EXPECT_LT(page.find(L"The adapter is slow."), page.find(L"id=\"adapter-1\""));
}

TEST(HtmlReportTest, LinesOfAFindingStayApart)
{
    CReport report = SampleReport();
    report.Results[report.Adapters[0].Tests[1].Key].Lines = {L"time|Speed|No cable.\r\nPlug one in."};
    const std::wstring page = HtmlReport(report);
    EXPECT_EQ(CountIn(page, L"<p class=\"finding\">No cable.\nPlug one in.</p>"), 2u);
    EXPECT_EQ(CountIn(page, L".finding { margin-top: 0.5rem; white-space: pre-line; }"), 1u);
}

TEST(HtmlReportTest, EachStateIsCounted)
{
    const std::wstring page = HtmlReport(SampleReport());
    const std::wstring list = page.substr(page.find(L"<ul"), page.find(L"</ul>") - page.find(L"<ul"));
    std::wstring words;
    for (size_t at = list.find(L"<b>"); at != std::wstring::npos; at = list.find(L"<b>", at + 1))
    {
        const size_t span = list.find(L"<span>", at) + 6;
        words += list.substr(at + 3, list.find(L'<', at + 3) - at - 3) + L" " +
                 list.substr(span, list.find(L'<', span) - span) + L", ";
    }
    EXPECT_EQ(words, L"1 Failed, 1 Stopped, 2 In progress, 2 Passed, 1 Other, 1 Unknown, 1 No result, ");
}

TEST(HtmlReportTest, WithoutFailureSaysSo)
{
    CReport report = SampleReport();
    report.Results.erase(report.Adapters[0].Tests[1].Key);
    const std::wstring page = HtmlReport(report);
    EXPECT_EQ(CountIn(page, L"No test has failed."), 1u);
    EXPECT_EQ(CountIn(page, L"What has failed"), 0u);
}

TEST(HtmlReportTest, WithoutResultsSaysWhatToDo)
{
    CReport report = SampleReport();
    report.Results.clear();
    report.Adapters[0].Tests[7].InUse = false;
    const std::wstring page = HtmlReport(report);
    EXPECT_EQ(
        CountIn(page, L"No test has run yet. Run &quot;zebdiag run --all&quot;, then make the report again."),
        1u);
    EXPECT_EQ(CountIn(page, L"<article"), 9u);
}

TEST(HtmlReportTest, SettingsAreThoseOfNowAndOfTheLastRun)
{
    const std::wstring page = HtmlReport(SampleReport());
    EXPECT_EQ(CountIn(page, L"class=\"settings\""), 1u) << "one test has settings";
    const std::wstring card = CardOf(page, L"test-1-9");
    EXPECT_EQ(CountIn(card, L"Now</th>\n<td>100 %</td>\n<td>on</td>\n<td>on</td>"), 1u) << Utf8Text(card);
    EXPECT_EQ(CountIn(card, L"Last run</th>\n<td>50 %</td>\n<td>off</td>\n<td>on</td>"), 1u);
    EXPECT_EQ(CountIn(page, L"Coverage: how much of the configured time a run takes."), 1u);
}

// Every text that comes from elsewhere, made to break out of its place.
TEST(HtmlReportTest, NoTextBecomesAPartOfThePage)
{
    const std::wstring nasty = L"<script>alert(1)</script>\" onload='x' &lt;";
    CReport report = SampleReport();
    report.Computer = report.Namespace = nasty;
    CAdapter& adapter = report.Adapters[0];
    adapter.Key = adapter.Name = adapter.Description = nasty;
    for (CTest& test : adapter.Tests)
        test.Caption = test.Description = nasty;
    for (auto& [key, result] : report.Results)
        result.Lines = {L"time|test|" + nasty};
    adapter.Description += L"!"; // otherwise it is left out, as is the key
    adapter.Key += L"!";
    const std::wstring page = HtmlReport(report);
    EXPECT_EQ(CountIn(page, L"<script"), 0u);
    EXPECT_EQ(CountIn(page, L"onload='"), 0u);
    // Title and heading, computer, namespace; the adapter's three; nine tests with two each; seven findings;
    // the failure's name, with the adapter's in it, and its finding.
    EXPECT_EQ(CountIn(page, L"&lt;script&gt;alert(1)&lt;/script&gt;&quot; onload=&#39;x&#39; &amp;lt;"),
              4u + 3u + 18u + 7u + 3u);
}

TEST(HtmlReportTest, FetchesAndRunsNothing)
{
    const std::wstring page = HtmlReport(SampleReport());
    for (const wchar_t* part :
         {L"<script", L"<link", L"<img", L"src=", L"url(", L"@import", L"http://", L"https://"})
        EXPECT_EQ(CountIn(page, part), 0u) << Utf8Text(part);
    EXPECT_EQ(CountIn(page, L"content=\"default-src &#39;none&#39;; style-src &#39;unsafe-inline&#39;\""),
              1u);
    EXPECT_EQ(CountIn(page, L" href="), CountIn(page, L" href=\"#"));
}

struct BarCase
{
    const char* name;
    unsigned long value;
    unsigned long most;
    unsigned length;
};

class BarTest : public testing::TestWithParam<BarCase>
{
};

TEST_P(BarTest, HasItsLength)
{
    EXPECT_EQ(BarLength(GetParam().value, GetParam().most), GetParam().length);
}

constexpr unsigned long kLargest = std::numeric_limits<unsigned long>::max();

INSTANTIATE_TEST_SUITE_P(Lengths, BarTest,
                         testing::Values(BarCase{"NoneOfNone", 0, 0, 0}, BarCase{"NoneOfSome", 0, 200, 0},
                                         BarCase{"All", 200, 200, 1000}, BarCase{"Half", 100, 200, 500},
                                         BarCase{"AlmostNothingIsSeen", 1, kLargest, 8},
                                         BarCase{"Huge", kLargest, kLargest, 1000},
                                         BarCase{"HalfOfHuge", kLargest / 2 + 1, kLargest, 500}),
                         NameOf<BarCase>);

// The card of the sender, of which these packets were counted.
std::wstring CardWith(const std::vector<unsigned long>& packets)
{
    CReport report = SampleReport();
    report.Results[report.Adapters[0].Tests[8].Key].Lines = SampleCounterLines(packets);
    return CardOf(HtmlReport(report), L"test-1-9");
}

TEST(CounterChartTest, FollowsThePacketsOnOneScale)
{
    const std::wstring card = CardWith({150, 100, 200, 50, 75, 25, 10});
    struct Row
    {
        const wchar_t* name;
        const wchar_t* kind;
        const wchar_t* length;
        const wchar_t* value;
    };
    size_t at = 0;
    for (const Row& row :
         {Row{L"Sent", L"good", L"1000", L"200"}, Row{L"Received there", L"good", L"750", L"150"},
          Row{L"Replies sent", L"good", L"500", L"100"}, Row{L"Replies received", L"good", L"375", L"75"},
          Row{L"Lost there", L"bad", L"250", L"50"}, Row{L"Lost back", L"bad", L"125", L"25"},
          Row{L"Out of order", L"odd", L"50", L"10"}})
    {
        const size_t name = card.find(L"<dt>" + std::wstring(row.name) + L"</dt>", at);
        ASSERT_NE(name, std::wstring::npos) << Utf8Text(row.name);
        at = card.find(L"</dd>", name);
        const std::wstring value = card.substr(name, at - name);
        EXPECT_EQ(
            CountIn(value, L"<rect class=\"" + std::wstring(row.kind) + L"\" width=\"" + row.length + L"\""),
            1u)
            << Utf8Text(value);
        EXPECT_EQ(CountIn(value, L"<span>" + std::wstring(row.value) + L"</span>"), 1u);
    }
    for (const wchar_t* value :
         {L"<dt>Role</dt>\n<dd>1</dd>", L"<dt>Link</dt>\n<dd>1</dd>",
          L"<dt>Median round trip</dt>\n<dd>240</dd>", L"<dt>Longest round trip</dt>\n<dd>3</dd>"})
        EXPECT_EQ(CountIn(card, value), 1u) << Utf8Text(value);
}

TEST(CounterChartTest, WithoutPacketsHasEmptyBars)
{
    const std::wstring card = CardWith({0, 0, 0, 0, 0, 0, 0});
    EXPECT_EQ(CountIn(card, L"<rect class=\"room\""), 7u);
    EXPECT_EQ(CountIn(card, L"<rect"), 7u);
}

TEST(CounterChartTest, TakesTheLargestNumbers)
{
    const std::wstring card = CardWith({kLargest, kLargest, kLargest, 0, kLargest, 0, 1});
    EXPECT_EQ(CountIn(card, L"<span>4294967295</span>"), 4u);
    EXPECT_EQ(CountIn(card, L"width=\"1000\" height=\"10\""), 7u + 4u);
}

// The provider gives counters from 2^31 on as negative numbers.
TEST(CounterChartTest, NegativeNumbersAreLargeOnes)
{
    CReport report = SampleReport();
    CResult& result = report.Results[report.Adapters[0].Tests[8].Key];
    for (std::wstring& line : result.Lines)
        if (line.find(L"|Sent: ") != std::wstring::npos)
            line = L"time|Sender|Sent: -2147483648";
    const std::wstring card = CardOf(HtmlReport(report), L"test-1-9");
    EXPECT_EQ(CountIn(card, L"<span>2147483648</span>"), 1u) << Utf8Text(card);
}

TEST(CounterChartTest, OtherNumbersArePlainValues)
{
    CReport report = SampleReport();
    report.Results[report.Adapters[0].Tests[8].Key].Lines = {L"t|Sender|a: 1", L"t|Sender|b: 2",
                                                             L"t|Sender|c: 3"};
    const std::wstring card = CardOf(HtmlReport(report), L"test-1-9");
    EXPECT_EQ(CountIn(card, L"class=\"bars\""), 0u);
    EXPECT_EQ(CountIn(card, L"<dt>c</dt>\n<dd>3</dd>"), 1u);
}

TEST(CounterChartTest, AFailureIsShownInWords)
{
    CReport report = SampleReport();
    for (const wchar_t* reason : {L"No answer from 10.0.0.1: Try port 862", L"Status code (decimal): 5"})
    {
        report.Results[report.Adapters[0].Tests[8].Key].Lines = {L"t|Sender|" + std::wstring(reason)};
        const std::wstring card = CardOf(HtmlReport(report), L"test-1-9");
        EXPECT_EQ(CountIn(card, L"<p class=\"finding\">" + std::wstring(reason) + L"</p>"), 1u);
        EXPECT_EQ(CountIn(card, L"<dl"), 0u);
    }
}
} // namespace
} // namespace zebdiag
