#include "tools/zebdiag/JsonReport.h"

#include "Common/src/com/Text.h"
#include "SampleInventory.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

// The documents are an interface: each test spells out a whole document, so that a field that goes or changes
// is noticed.
namespace zebdiag
{
namespace
{
using nlohmann::json;

json Read(const std::wstring& document)
{
    return json::parse(Utf8Text(document));
}

CJsonHead Head(Command command)
{
    return {command, L"WS42", L"root\\cimv2"};
}

const json kLinkTest = json::parse(R"({
    "key": "1@{AAAA-1111}", "number": 1, "caption": "Link",
    "adapter": {"key": "{AAAA-1111}", "name": "Ethernet", "description": "Contoso Gigabit"}})");

class JsonReportTest : public testing::Test
{
  protected:
    CInventory m_inventory = SampleInventory();
    std::vector<CTestChoice> m_link = ChooseTests(ChooseAdapters(m_inventory, L"contoso"), L"link");
    std::vector<CTestChoice> m_sender = ChooseTests(ChooseAdapters(m_inventory, L""), L"sender");
};

TEST_F(JsonReportTest, List)
{
    m_inventory.Adapters[0].Description.clear();
    EXPECT_EQ(Read(JsonList(Head(Command::List), ChooseAdapters(m_inventory, L"{aaaa-1111}"), {312})),
              json::parse(R"({
        "version": 2, "command": "list", "computer": "WS42", "namespace": "root\\cimv2",
        "provider": {"image": "Drevok.EXE", "processIds": [312]},
        "adapters": [{"key": "{AAAA-1111}", "name": "Ethernet", "description": null,
          "tests": [{"key": "1@{AAAA-1111}", "number": 1, "caption": "Link",
                     "description": "What Link looks at.", "running": false, "sendsPackets": false,
                     "characteristics": [2]}]}]})"));
}

TEST_F(JsonReportTest, ListWithoutAnything)
{
    EXPECT_EQ(Read(JsonList({Command::List, L"", L"root\\cimv2"}, {}, {})), json::parse(R"({
        "version": 2, "command": "list", "computer": null, "namespace": "root\\cimv2",
        "provider": {"image": "Drevok.EXE", "processIds": []}, "adapters": []})"));
}

TEST_F(JsonReportTest, FieldsComeInTheOrderOfTheDescription)
{
    EXPECT_TRUE(
        JsonList(Head(Command::List), {}, {}).starts_with(L"{\n  \"version\": 2,\n  \"command\": \"list\","));
}

TEST_F(JsonReportTest, Run)
{
    CResult result;
    result.State = TestState::Failed;
    result.Percent = 0;
    result.Started = L"20240501134510.000000+0";
    result.Lines = {L"t|Link|No cable."};
    CTestOutcome ran = {m_link[0], {}};
    ran.Outcome.Code = ExitCode::Failed;
    ran.Outcome.Seconds = 3;
    ran.Outcome.Result = result;
    CTestOutcome refused = {m_link[0], {}};
    refused.Outcome.Code = ExitCode::Busy;
    refused.Outcome.Message = L"It runs.";

    json expected = json::parse(R"({
        "version": 2, "command": "run", "computer": "WS42", "namespace": "root\\cimv2",
        "verdict": "failed", "exitCode": 1,
        "runs": [{"outcome": "failed", "seconds": 3, "message": null,
                  "result": {"state": "failed", "percentComplete": 0, "started": "2024-05-01T13:45:10",
                             "ended": null, "written": null,
                             "setting": {"coverage": null, "quick": null, "report": null},
                             "findings": ["No cable."], "lines": ["t|Link|No cable."]}},
                 {"outcome": "busy", "seconds": 0, "message": "It runs.", "result": null}],
        "notRun": []})");
    expected["runs"][0]["test"] = kLinkTest;
    expected["runs"][1]["test"] = kLinkTest;
    expected["notRun"].push_back(kLinkTest);
    EXPECT_EQ(Read(JsonRun(Head(Command::Run), ExitCode::Failed, {ran, refused}, m_link)), expected);
}

TEST_F(JsonReportTest, Results)
{
    CResult result;
    result.State = TestState::Passed;
    result.Percent = 100;
    result.Setting = {true, false, 50};
    json expected = json::parse(R"({
        "version": 2, "command": "results", "computer": "WS42", "namespace": "root\\cimv2",
        "results": [{"state": "passed", "percentComplete": 100, "started": null, "ended": null, "written": null,
                     "setting": {"coverage": 50, "quick": true, "report": false}, "findings": [], "lines": []}]})");
    expected["results"][0]["test"] = kLinkTest;
    EXPECT_EQ(
        Read(JsonResults(Head(Command::Results), m_link, {{L"1@{AAAA-1111}", result}, {L"other", result}})),
        expected);
}

TEST_F(JsonReportTest, Settings)
{
    const std::map<std::wstring, CSetting> settings = {
        {L"1@{AAAA-1111}", {L"1@{AAAA-1111}", L"", {}}},
        {L"9@{BBBB-2222}", {L"9@{BBBB-2222}", L"", {true, false, 50}}}};
    std::vector<CTestChoice> tests = m_link;
    tests.push_back(m_sender[0]);
    const json document = Read(JsonSettings(Head(Command::Set), tests, settings));
    EXPECT_EQ(document["command"], "set");
    ASSERT_EQ(document["settings"].size(), 1u) << "tests without settings are left out";
    const json& setting = document["settings"][0];
    EXPECT_EQ(setting["test"]["key"], "9@{BBBB-2222}");
    EXPECT_EQ(setting["coverage"], 50);
    EXPECT_EQ(setting["quick"], true);
    EXPECT_EQ(setting["report"], false);
}

TEST_F(JsonReportTest, Effects)
{
    json expected = json::parse(R"({
        "version": 2, "command": "clear", "computer": "WS42", "namespace": "root\\cimv2",
        "verdict": "busy", "exitCode": 5,
        "tests": [{"outcome": "busy", "message": "It runs."}, {"outcome": "passed", "message": null}]})");
    expected["tests"][0]["test"] = kLinkTest;
    expected["tests"][1]["test"] = kLinkTest;
    EXPECT_EQ(
        Read(JsonEffects(Head(Command::Clear), ExitCode::Busy,
                         {{m_link[0], ExitCode::Busy, L"It runs."}, {m_link[0], ExitCode::Passed, L""}})),
        expected);
}

TEST_F(JsonReportTest, Failure)
{
    const CFailure failure(ExitCode::NotReachable, L"Cause", L"Next", static_cast<HRESULT>(0x8004100E),
                           L"Said");
    EXPECT_EQ(Read(JsonFailure(Command::Stop, failure)), json::parse(R"({
        "version": 2, "command": "stop", "verdict": "not_reachable", "exitCode": 6,
        "error": {"cause": "Cause", "nextStep": "Next", "status": "0x8004100E", "providerSays": "Said"}})"));
    EXPECT_EQ(Read(JsonFailure(Command::Stop, CFailure(ExitCode::NotFound, L"Cause", L"")))["error"],
              json::parse(R"({
        "cause": "Cause", "nextStep": null, "status": null, "providerSays": null})"));
}

TEST_F(JsonReportTest, TextThatIsNoUnicodeDoesNotSpoilTheDocument)
{
    m_inventory.Adapters[0].Name = L"half \xD800 pair";
    const json document =
        Read(JsonList(Head(Command::List), ChooseAdapters(m_inventory, L"{aaaa-1111}"), {}));
    EXPECT_EQ(document["adapters"][0]["name"], "half \xEF\xBF\xBD pair");
}
} // namespace
} // namespace zebdiag
