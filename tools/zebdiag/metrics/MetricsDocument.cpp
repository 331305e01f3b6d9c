#include "tools/zebdiag/metrics/MetricsDocument.h"

#include "Common/src/com/Text.h"
#include "tools/zebdiag/Words.h"
#include "tools/zebdiag/metrics/Exposition.h"
#include "tools/zebdiag/metrics/RunCounters.h"
#include "tools/zebdiag/metrics/UnixTime.h"

#include <algorithm>

namespace zebdiag
{
namespace
{
struct CTestFacts
{
    const CTest* Test;
    const CResult* Result; // null: it has none
    std::optional<CRunCounters> Counters;
    MetricLabels Labels;
    const CMetricsFacts* All;
};
using Value = std::optional<std::string>;

// Tells adapters apart even if the system calls two the same.
std::wstring LabelOf(const CAdapter& adapter, const CInventory& inventory)
{
    const auto sameName = std::ranges::count(inventory.Adapters, adapter.Name, &CAdapter::Name);
    return sameName == 1 ? adapter.Name : adapter.Name + L" (" + adapter.Key + L")";
}

std::vector<CTestFacts> TestsOf(const CMetricsFacts& facts)
{
    std::vector<CTestFacts> tests;
    for (const CAdapter& adapter : facts.Inventory.Adapters)
        for (const CTest& test : adapter.Tests)
        {
            const auto found = facts.Results.find(test.Key);
            CTestFacts one = {
                &test,
                found == facts.Results.end() ? nullptr : &found->second,
                std::nullopt,
                {{"adapter", LabelOf(adapter, facts.Inventory)}, {"test", std::to_wstring(test.Number)}},
                &facts};
            if (one.Result && test.SendsPackets())
                one.Counters = CountersOf(*one.Result);
            tests.push_back(std::move(one));
        }
    return tests;
}

MetricLabels With(MetricLabels labels, const char* name, std::wstring value)
{
    labels.push_back({name, std::move(value)});
    return labels;
}

Value Time(const std::wstring& text, const CMetricsFacts& facts)
{
    const auto time = UnixTime(text, facts.Zone);
    return time ? Value(std::to_string(*time)) : std::nullopt;
}

Value StartOf(const CTestFacts& test)
{
    return test.Result ? Time(test.Result->Started, *test.All) : std::nullopt;
}

Value EndOf(const CTestFacts& test)
{
    return test.Result ? Time(test.Result->Completed, *test.All) : std::nullopt;
}

Value AgeOf(const CTestFacts& test)
{
    const auto end = test.Result ? UnixTime(test.Result->Completed, test.All->Zone) : std::nullopt;
    // A clock that was set back would make it negative.
    return end ? Value(std::to_string(std::max(0LL, test.All->Now - *end))) : std::nullopt;
}

const wchar_t* RoleName(RunRole role)
{
    switch (role)
    {
    case RunRole::Sender:
        return L"sender";
    case RunRole::Responder:
        return L"responder";
    case RunRole::SenderWithoutDirection:
        return L"sender_without_direction";
    }
    return L"other";
}

template <Value (*ValueOf)(const CTestFacts&)>
void EachTest(const CMetricsFacts&, const std::vector<CTestFacts>& tests, CExposition& out)
{
    for (const CTestFacts& test : tests)
        if (const Value value = ValueOf(test))
            out.Add(test.Labels, *value);
}

template <unsigned long CRunCounters::*Counter, unsigned Places = 0>
void EachRun(const CMetricsFacts&, const std::vector<CTestFacts>& tests, CExposition& out)
{
    for (const CTestFacts& test : tests)
        if (test.Counters)
            out.Add(test.Labels, MetricValue(*test.Counters.*Counter, Places));
}

// What only a sender can know; a responder has 0 for it.
template <unsigned long CRunCounters::*Counter, unsigned Places = 0>
void EachSender(const CMetricsFacts&, const std::vector<CTestFacts>& tests, CExposition& out)
{
    for (const CTestFacts& test : tests)
        if (test.Counters && test.Counters->Role != RunRole::Responder)
            out.Add(test.Labels, MetricValue(*test.Counters.*Counter, Places));
}

void WriteBuild(const CMetricsFacts&, const std::vector<CTestFacts>&, CExposition& out)
{
    out.Add({{"version", WidenUtf8(ZEB_VERSION)}, {"format", std::to_wstring(kMetricsVersion)}}, "1");
}

void WriteTime(const CMetricsFacts& facts, const std::vector<CTestFacts>&, CExposition& out)
{
    out.Add({}, std::to_string(facts.Now));
}

void WriteUp(const CMetricsFacts& facts, const std::vector<CTestFacts>&, CExposition& out)
{
    out.Add({}, facts.Failure ? "0" : "1");
}

void WriteFailure(const CMetricsFacts& facts, const std::vector<CTestFacts>&, CExposition& out)
{
    if (const CFailure* failure = facts.Failure)
        out.Add({{"reason", WidenUtf8(ExitCodeName(failure->Code))},
                 {"exit_code", std::to_wstring(static_cast<int>(failure->Code))},
                 {"status", failure->Status == S_OK ? L"" : StatusText(failure->Status)}},
                "1");
}

void WriteAnswer(const CMetricsFacts& facts, const std::vector<CTestFacts>&, CExposition& out)
{
    if (!facts.Failure)
        out.Add({}, MetricValue(facts.AnswerMilliseconds, 3));
}

void WriteAdapters(const CMetricsFacts& facts, const std::vector<CTestFacts>&, CExposition& out)
{
    for (const CAdapter& adapter : facts.Inventory.Adapters)
        out.Add({{"adapter", LabelOf(adapter, facts.Inventory)},
                 {"key", adapter.Key},
                 {"description", adapter.Description}},
                "1");
}

void WriteTests(const CMetricsFacts&, const std::vector<CTestFacts>& tests, CExposition& out)
{
    for (const CTestFacts& test : tests)
        out.Add(With(With(test.Labels, "name", test.Test->Caption), "kind",
                     test.Test->SendsPackets() ? L"packets" : L"ordinary"),
                "1");
}

void WriteStates(const CMetricsFacts&, const std::vector<CTestFacts>& tests, CExposition& out)
{
    constexpr TestState kStates[] = {TestState::Passed,     TestState::Failed, TestState::Stopped,
                                     TestState::InProgress, TestState::Other,  TestState::Unknown};
    for (const CTestFacts& test : tests)
    {
        // A number without a meaning has the name of the unknown state.
        const std::string now = test.Result ? StateName(test.Result->State) : "none";
        for (const TestState state : kStates)
            out.Add(With(test.Labels, "state", WidenUtf8(StateName(state))),
                    now == StateName(state) ? "1" : "0");
        out.Add(With(test.Labels, "state", L"none"), test.Result ? "0" : "1");
    }
}

void WriteRoles(const CMetricsFacts&, const std::vector<CTestFacts>& tests, CExposition& out)
{
    for (const CTestFacts& test : tests)
        if (test.Counters)
            out.Add(With(test.Labels, "role", RoleName(test.Counters->Role)), "1");
}

void WriteLosses(const CMetricsFacts&, const std::vector<CTestFacts>& tests, CExposition& out)
{
    for (const CTestFacts& test : tests)
    {
        if (!test.Counters)
            continue;
        const bool together = test.Counters->Role == RunRole::SenderWithoutDirection;
        out.Add(With(test.Labels, "direction", together ? L"both" : L"to_responder"),
                MetricValue(test.Counters->LostOut));
        if (!together)
            out.Add(With(test.Labels, "direction", L"to_sender"), MetricValue(test.Counters->LostBack));
    }
}

struct CMetricRow
{
    const char* Name;
    const char* Unit;
    const char* Help;
    void (*Write)(const CMetricsFacts& facts, const std::vector<CTestFacts>& tests, CExposition& out);
};

constexpr char kSeconds[] = "seconds";
constexpr char kPackets[] = "packets";

// All are gauges: a run counts from 0, and only the last one is known.
constexpr CMetricRow kMetricRows[] = {
    {"zeb_build_info", nullptr, "Version of the program that wrote this document, and version of the format.",
     WriteBuild},
    {"zeb_document_timestamp_seconds", kSeconds, "When this document was written.", WriteTime},
    {"zeb_up", nullptr, "1 if the diagnostics provider answered, 0 if not.", WriteUp},
    {"zeb_failure_info", nullptr, "Why the provider did not answer.", WriteFailure},
    {"zeb_provider_answer_seconds", kSeconds, "Time until the provider had named its tests.", WriteAnswer},
    {"zeb_adapter_info", nullptr, "An adapter that has tests.", WriteAdapters},
    {"zeb_test_info", nullptr, "A test; its kind is ordinary or packets, which is sender and responder.",
     WriteTests},
    {"zeb_test_state", nullptr, "1 for the state of the test's last result, 0 for all other states.",
     WriteStates},
    {"zeb_test_start_timestamp_seconds", kSeconds, "When the run of the last result began.",
     EachTest<StartOf>},
    {"zeb_test_end_timestamp_seconds", kSeconds, "When the run of the last result ended.", EachTest<EndOf>},
    {"zeb_test_age_seconds", kSeconds, "Time from the end of the last result's run to this document.",
     EachTest<AgeOf>},
    {"zeb_run_info", nullptr, "Role of the last run that sent or answered test packets.", WriteRoles},
    {"zeb_run_link_up", nullptr, "1 if the adapter had a link in that run, 0 if not.",
     EachRun<&CRunCounters::Link>},
    {"zeb_run_round_trip_median_seconds", kSeconds, "Median round trip of that run.",
     EachSender<&CRunCounters::MedianMicroseconds, 6>},
    {"zeb_run_round_trip_longest_seconds", kSeconds, "Longest round trip of that run.",
     EachSender<&CRunCounters::LongestMilliseconds, 3>},
    {"zeb_run_sender_sent_packets", kPackets, "Packets that the sender sent in that run.",
     EachRun<&CRunCounters::SenderSent>},
    {"zeb_run_responder_received_packets", kPackets, "Packets that the responder received in that run.",
     EachRun<&CRunCounters::ResponderReceived>},
    {"zeb_run_responder_sent_packets", kPackets, "Replies that the responder sent in that run.",
     EachRun<&CRunCounters::ResponderSent>},
    {"zeb_run_sender_received_packets", kPackets, "Replies that the sender received in that run.",
     EachSender<&CRunCounters::SenderReceived>},
    {"zeb_run_disordered_packets", kPackets, "Packets that came twice or out of order in that run.",
     EachRun<&CRunCounters::Disordered>},
    {"zeb_run_lost_packets", kPackets, "Packets that were lost in that run.", WriteLosses},
};
} // namespace

std::string MetricsDocument(const CMetricsFacts& facts)
{
    const std::vector<CTestFacts> tests = TestsOf(facts);
    CExposition out;
    for (const CMetricRow& row : kMetricRows)
    {
        out.Begin(row.Name, row.Unit, row.Help);
        row.Write(facts, tests, out);
    }
    return out.Text();
}
} // namespace zebdiag
