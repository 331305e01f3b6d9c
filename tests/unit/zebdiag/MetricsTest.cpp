// The metrics: the whole document, since scrapers and rules read every name in it.
#include "SampleInventory.h"
#include "tests/support/CaseName.h"
#include "tools/zebdiag/metrics/MetricsDocument.h"

#include <gtest/gtest.h>
#include <sstream>

namespace zebdiag
{
namespace
{
constexpr char kBuild[] =
    "# HELP zeb_build_info Version of the program that wrote this document, and version of the format.\n"
    "# TYPE zeb_build_info gauge\n"
    "zeb_build_info{version=\"" ZEB_VERSION "\",format=\"1\"} 1\n"
    "# HELP zeb_document_timestamp_seconds When this document was written.\n"
    "# TYPE zeb_document_timestamp_seconds gauge\n"
    "# UNIT zeb_document_timestamp_seconds seconds\n"
    "zeb_document_timestamp_seconds 1714571170\n"
    "# HELP zeb_up 1 if the diagnostics provider answered, 0 if not.\n"
    "# TYPE zeb_up gauge\n";

const TIME_ZONE_INFORMATION* OneHourEastOfUtc()
{
    static TIME_ZONE_INFORMATION zone = {};
    zone.Bias = -60;
    return &zone;
}

// The lines of a run with these counters, in the order of the provider.
std::vector<std::wstring> CounterLines(const std::vector<std::wstring>& numbers)
{
    std::vector<std::wstring> lines;
    for (const std::wstring& number : numbers)
        lines.push_back(L"20240501134510.000000+060|Sender|Some text (1 is one): " + number);
    return lines;
}

CMetricsFacts SampleFacts()
{
    CMetricsFacts facts;
    facts.Now = 1714571170;
    facts.AnswerMilliseconds = 70;
    facts.Inventory = SampleInventory();
    facts.Zone = OneHourEastOfUtc();
    CResult passed;
    passed.State = TestState::Passed;
    passed.Started = L"20240501134510.000000+0";
    passed.Completed = L"20240501134511.000000+0";
    CResult failed = passed;
    failed.State = TestState::Failed;
    CResult sent = passed;
    sent.State = TestState::InProgress;
    sent.Completed.clear();
    sent.Lines = CounterLines({L"1", L"1", L"688", L"369", L"368", L"370", L"367", L"-1", L"1", L"2", L"57"});
    facts.Results = {{L"1@{AAAA-1111}", passed}, {L"1@{BBBB-2222}", failed}, {L"9@{BBBB-2222}", sent}};
    return facts;
}

std::string States(const std::string& test, const std::string& now)
{
    std::string text;
    for (const char* state : {"passed", "failed", "stopped", "in_progress", "other", "unknown", "none"})
        text += "zeb_test_state{" + test + ",state=\"" + state + "\"} " + (now == state ? "1" : "0") + "\n";
    return text;
}

std::string OfSender(const std::string& name, const std::string& help, const std::string& unit,
                     const std::string& value)
{
    return "# HELP " + name + " " + help + "\n# TYPE " + name + " gauge\n" +
           (unit.empty() ? "" : "# UNIT " + name + " " + unit + "\n") + name +
           "{adapter=\"Ethernet 2\",test=\"9\"} " + value + "\n";
}

std::string LinesOf(const std::string& document, const std::string& name)
{
    std::istringstream lines(document);
    std::string found;
    for (std::string line; std::getline(lines, line);)
        if (line.starts_with(name))
            found += line + "\n";
    return found;
}

TEST(MetricsDocumentTest, IsWhole)
{
    const std::string first = R"(adapter="Ethernet",test="1")";
    const std::string link = R"(adapter="Ethernet 2",test="1")";
    const std::string speed = R"(adapter="Ethernet 2",test="2")";
    const std::string sender = R"(adapter="Ethernet 2",test="9")";
    EXPECT_EQ(
        MetricsDocument(SampleFacts()),
        std::string(kBuild) +
            "zeb_up 1\n"
            "# HELP zeb_provider_answer_seconds Time until the provider had named its tests.\n"
            "# TYPE zeb_provider_answer_seconds gauge\n"
            "# UNIT zeb_provider_answer_seconds seconds\n"
            "zeb_provider_answer_seconds 0.070\n"
            "# HELP zeb_adapter_info An adapter that has tests.\n"
            "# TYPE zeb_adapter_info gauge\n"
            "zeb_adapter_info{adapter=\"Ethernet\",key=\"{AAAA-1111}\",description=\"Contoso Gigabit\"} 1\n"
            "zeb_adapter_info{adapter=\"Ethernet 2\",key=\"{BBBB-2222}\",description=\"Fabrikam 10G\"} 1\n"
            "# HELP zeb_test_info A test; its kind is ordinary or packets, which is sender and responder.\n"
            "# TYPE zeb_test_info gauge\n"
            "zeb_test_info{" +
            first + ",name=\"Link\",kind=\"ordinary\"} 1\n" + "zeb_test_info{" + link +
            ",name=\"Link\",kind=\"ordinary\"} 1\n" + "zeb_test_info{" + speed +
            ",name=\"Link speed\",kind=\"ordinary\"} 1\n" + "zeb_test_info{" + sender +
            ",name=\"Sender\",kind=\"packets\"} 1\n" +
            "# HELP zeb_test_state 1 for the state of the test's last result, 0 for all other states.\n"
            "# TYPE zeb_test_state gauge\n" +
            States(first, "passed") + States(link, "failed") + States(speed, "none") +
            States(sender, "in_progress") +
            "# HELP zeb_test_start_timestamp_seconds When the run of the last result began.\n"
            "# TYPE zeb_test_start_timestamp_seconds gauge\n"
            "# UNIT zeb_test_start_timestamp_seconds seconds\n"
            "zeb_test_start_timestamp_seconds{" +
            first + "} 1714567510\n" + "zeb_test_start_timestamp_seconds{" + link + "} 1714567510\n" +
            "zeb_test_start_timestamp_seconds{" + sender + "} 1714567510\n" +
            "# HELP zeb_test_end_timestamp_seconds When the run of the last result ended.\n"
            "# TYPE zeb_test_end_timestamp_seconds gauge\n"
            "# UNIT zeb_test_end_timestamp_seconds seconds\n"
            "zeb_test_end_timestamp_seconds{" +
            first + "} 1714567511\n" + "zeb_test_end_timestamp_seconds{" + link + "} 1714567511\n" +
            "# HELP zeb_test_age_seconds Time from the end of the last result's run to this document.\n"
            "# TYPE zeb_test_age_seconds gauge\n"
            "# UNIT zeb_test_age_seconds seconds\n"
            "zeb_test_age_seconds{" +
            first + "} 3659\n" + "zeb_test_age_seconds{" + link + "} 3659\n" +
            "# HELP zeb_run_info Role of the last run that sent or answered test packets.\n"
            "# TYPE zeb_run_info gauge\n"
            "zeb_run_info{" +
            sender + ",role=\"sender\"} 1\n" +
            OfSender("zeb_run_link_up", "1 if the adapter had a link in that run, 0 if not.", "", "1") +
            OfSender("zeb_run_round_trip_median_seconds", "Median round trip of that run.", "seconds",
                     "0.000688") +
            OfSender("zeb_run_round_trip_longest_seconds", "Longest round trip of that run.", "seconds",
                     "0.057") +
            OfSender("zeb_run_sender_sent_packets", "Packets that the sender sent in that run.", "packets",
                     "370") +
            OfSender("zeb_run_responder_received_packets", "Packets that the responder received in that run.",
                     "packets", "369") +
            OfSender("zeb_run_responder_sent_packets", "Replies that the responder sent in that run.",
                     "packets", "368") +
            OfSender("zeb_run_sender_received_packets", "Replies that the sender received in that run.",
                     "packets", "367") +
            OfSender("zeb_run_disordered_packets", "Packets that came twice or out of order in that run.",
                     "packets", "4294967295") +
            "# HELP zeb_run_lost_packets Packets that were lost in that run.\n"
            "# TYPE zeb_run_lost_packets gauge\n"
            "# UNIT zeb_run_lost_packets packets\n"
            "zeb_run_lost_packets{" +
            sender + ",direction=\"to_responder\"} 1\n" + "zeb_run_lost_packets{" + sender +
            ",direction=\"to_sender\"} 2\n" + "# EOF\n");
}

TEST(MetricsDocumentTest, FailureIsAllThatCanBeTold)
{
    const CFailure failure(ExitCode::NotReachable, L"Cause", L"Next", static_cast<HRESULT>(0x80041013));
    CMetricsFacts facts;
    facts.Now = 1714571170;
    facts.Failure = &failure;
    EXPECT_EQ(MetricsDocument(facts),
              std::string(kBuild) +
                  "zeb_up 0\n"
                  "# HELP zeb_failure_info Why the provider did not answer.\n"
                  "# TYPE zeb_failure_info gauge\n"
                  "zeb_failure_info{reason=\"not_reachable\",exit_code=\"6\",status=\"0x80041013\"} 1\n"
                  "# EOF\n");
}

TEST(MetricsDocumentTest, WithoutAdaptersOnlyTheAnswerIsTold)
{
    CMetricsFacts facts;
    facts.Now = 1714571170;
    EXPECT_EQ(MetricsDocument(facts),
              std::string(kBuild) +
                  "zeb_up 1\n"
                  "# HELP zeb_provider_answer_seconds Time until the provider had named its "
                  "tests.\n"
                  "# TYPE zeb_provider_answer_seconds gauge\n"
                  "# UNIT zeb_provider_answer_seconds seconds\n"
                  "zeb_provider_answer_seconds 0.000\n"
                  "# EOF\n");
}

TEST(MetricsDocumentTest, LabelsAreEscaped)
{
    CMetricsFacts facts;
    facts.Inventory.Adapters = {{L"K\x1", L"back\\slash \"quoted\"\nline\r Größe", L"half \xD800 pair", {}}};
    EXPECT_EQ(LinesOf(MetricsDocument(facts), "zeb_adapter_info"),
              "zeb_adapter_info{adapter=\"back\\\\slash \\\"quoted\\\"\\nline  Gr\xC3\xB6\xC3\x9F"
              "e\",key=\"K \","
              "description=\"half \xEF\xBF\xBD pair\"} 1\n");
}

// Twice the same series would make a collector refuse the whole file.
TEST(MetricsDocumentTest, AdaptersOfOneNameAreToldApart)
{
    CMetricsFacts facts;
    facts.Inventory = SampleInventory();
    facts.Inventory.Adapters[1].Name = L"Ethernet";
    const std::string document = MetricsDocument(facts);
    EXPECT_NE(document.find("zeb_test_info{adapter=\"Ethernet ({AAAA-1111})\",test=\"1\""),
              std::string::npos);
    EXPECT_NE(document.find("zeb_test_info{adapter=\"Ethernet ({BBBB-2222})\",test=\"1\""),
              std::string::npos);
}

TEST(MetricsDocumentTest, StateWithoutAMeaningIsUnknown)
{
    CMetricsFacts facts = SampleFacts();
    facts.Results[L"1@{AAAA-1111}"].State = static_cast<TestState>(17);
    EXPECT_TRUE(LinesOf(MetricsDocument(facts), "zeb_test_state")
                    .starts_with(States(R"(adapter="Ethernet",test="1")", "unknown")));
}

TEST(MetricsDocumentTest, ClockThatWasSetBackMakesNoNegativeAge)
{
    CMetricsFacts facts = SampleFacts();
    facts.Now = 1714560000;
    EXPECT_EQ(LinesOf(MetricsDocument(facts), "zeb_test_age_seconds"),
              "zeb_test_age_seconds{adapter=\"Ethernet\",test=\"1\"} 0\n"
              "zeb_test_age_seconds{adapter=\"Ethernet 2\",test=\"1\"} 0\n");
}

TEST(MetricsDocumentTest, TextThatIsNoTimeIsLeftOut)
{
    CMetricsFacts facts = SampleFacts();
    for (auto& [key, result] : facts.Results)
        result.Completed = L"********000000.000000:000";
    const std::string document = MetricsDocument(facts);
    EXPECT_EQ(LinesOf(document, "zeb_test_end_timestamp_seconds"), "");
    EXPECT_EQ(LinesOf(document, "zeb_test_age_seconds"), "");
}

struct RoleCase
{
    const char* name;
    const wchar_t* number;
    const char* role;
    std::string directions;
    bool KnowsRoundTrip;
};

class MetricsRoleTest : public testing::TestWithParam<RoleCase>
{
};

TEST_P(MetricsRoleTest, TellsWhatItCanKnow)
{
    CMetricsFacts facts = SampleFacts();
    facts.Results[L"9@{BBBB-2222}"].Lines = CounterLines(
        {GetParam().number, L"0", L"10", L"20", L"30", L"40", L"50", L"60", L"70", L"80", L"90"});
    const std::string document = MetricsDocument(facts);
    const std::string sender = R"({adapter="Ethernet 2",test="9")";
    EXPECT_EQ(LinesOf(document, "zeb_run_info"),
              "zeb_run_info" + sender + ",role=\"" + GetParam().role + "\"} 1\n");
    std::string losses;
    for (const std::string& line :
         {std::string("to_responder\"} 70\n"), std::string("to_sender\"} 80\n"), std::string("both\"} 70\n")})
        if (GetParam().directions.find(line.substr(0, line.find('"'))) != std::string::npos)
            losses += "zeb_run_lost_packets" + sender + ",direction=\"" + line;
    EXPECT_EQ(LinesOf(document, "zeb_run_lost_packets"), losses);
    for (const char* metric : {"zeb_run_round_trip_median_seconds{", "zeb_run_round_trip_longest_seconds{",
                               "zeb_run_sender_received_packets{"})
        EXPECT_EQ(LinesOf(document, metric).empty(), !GetParam().KnowsRoundTrip) << metric;
    EXPECT_EQ(LinesOf(document, "zeb_run_sender_sent_packets{"),
              "zeb_run_sender_sent_packets" + sender + "} 40\n");
}

INSTANTIATE_TEST_SUITE_P(
    Roles, MetricsRoleTest,
    testing::Values(RoleCase{"Sender", L"1", "sender", "to_responder to_sender", true},
                    RoleCase{"Responder", L"2", "responder", "to_responder to_sender", false},
                    RoleCase{"OneWay", L"3", "sender_without_direction", "both", true},
                    RoleCase{"OfAnAgent", L"7", "other", "to_responder to_sender", true}),
    NameOf<RoleCase>);

struct NoCountersCase
{
    const char* name;
    std::vector<std::wstring> lines;
};

class MetricsNoCountersTest : public testing::TestWithParam<NoCountersCase>
{
};

TEST_P(MetricsNoCountersTest, AreNotInvented)
{
    CMetricsFacts facts = SampleFacts();
    facts.Results[L"9@{BBBB-2222}"].Lines = GetParam().lines;
    EXPECT_EQ(LinesOf(MetricsDocument(facts), "zeb_run_"), "");
}

INSTANTIATE_TEST_SUITE_P(
    Lines, MetricsNoCountersTest,
    testing::Values(NoCountersCase{"None", {}},
                    NoCountersCase{"Failure", {L"t|Sender|Packets were lost: 1", L"t|Sender|b"}},
                    NoCountersCase{"TooFew", CounterLines(std::vector<std::wstring>(10, L"1"))},
                    NoCountersCase{"TooMany", CounterLines(std::vector<std::wstring>(12, L"1"))},
                    NoCountersCase{"NoNumber", CounterLines(std::vector<std::wstring>(11, L"none"))}),
    NameOf<NoCountersCase>);

TEST(MetricsDocumentTest, OrdinaryTestWithManyFindingsHasNoCounters)
{
    CMetricsFacts facts = SampleFacts();
    facts.Results[L"1@{AAAA-1111}"].Lines = facts.Results[L"9@{BBBB-2222}"].Lines;
    EXPECT_EQ(LinesOf(MetricsDocument(facts), "zeb_run_info{adapter=\"Ethernet\""), "");
}
} // namespace
} // namespace zebdiag
