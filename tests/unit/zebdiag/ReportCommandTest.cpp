// The report command, from the arguments to its files and the exit code.
#include "CommandsFixture.h"
#include "SampleReport.h"
#include "tests/support/CaseName.h"
#include "tools/zebdiag/JsonReport.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iterator>

namespace zebdiag
{
namespace
{
using nlohmann::json;

std::string BytesOf(const std::filesystem::path& file)
{
    std::ifstream opened(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(opened), {}};
}

// As "2024-05-01".
std::string DateToday()
{
    SYSTEMTIME now = {};
    GetLocalTime(&now);
    char text[32] = {};
    std::snprintf(text, sizeof text, "%04d-%02d-%02d", now.wYear, now.wMonth, now.wDay);
    return text;
}

class ReportCommandTest : public CommandsTest
{
  protected:
    ReportCommandTest()
    {
        m_world->Results[L"1@{AAAA}"] = {TestState::Failed, 100, {L"t|Link|No cable. Größe!"}, {}};
        m_world->Results[L"9@{BBBB}"] = {
            TestState::Passed, 100, SampleCounterLines({195, 195, 200, 5, 190, 5, 0}), {true, true, 50}};
    }
    std::filesystem::path File(const wchar_t* name) const { return m_folder.Path() / name; }
    std::vector<std::wstring> FilesThere() const
    {
        std::vector<std::wstring> names;
        for (const auto& entry : std::filesystem::directory_iterator(m_folder.Path()))
            names.push_back(entry.path().filename().wstring());
        std::ranges::sort(names);
        return names;
    }
};

TEST_F(ReportCommandTest, WritesThePage)
{
    const std::wstring file = File(L"Report of WS42.html").wstring();
    EXPECT_EQ(Run({L"report", L"--html", file}), ExitCode::Passed);
    EXPECT_EQ(m_console.Output, L"The report is in " + file + L".\n");
    EXPECT_EQ(m_console.Errors, L"");
    const std::string page = BytesOf(file);
    EXPECT_TRUE(page.starts_with("<!DOCTYPE html>\n")) << page.substr(0, 40);
    EXPECT_TRUE(page.ends_with("</html>\n"));
    EXPECT_NE(page.find("No cable. Gr\xC3\xB6\xC3\x9F"
                        "e!"),
              std::string::npos);
    EXPECT_NE(page.find("Ethernet 2"), std::string::npos);
    EXPECT_EQ(FilesThere(), std::vector<std::wstring>{L"Report of WS42.html"});
}

TEST_F(ReportCommandTest, ReplacesWhatIsThere)
{
    const std::wstring file = File(L"r.html").wstring();
    std::ofstream(std::filesystem::path(file)) << std::string(1000000, 'x');
    EXPECT_EQ(Run({L"report", L"--html", file}), ExitCode::Passed);
    EXPECT_TRUE(BytesOf(file).ends_with("</html>\n"));
}

TEST_F(ReportCommandTest, OneAdapterIsEnough)
{
    EXPECT_EQ(Run({L"report", L"--json", L"-a", L"contoso"}), ExitCode::Passed);
    const json adapters = Document()["adapters"];
    ASSERT_EQ(adapters.size(), 1u);
    EXPECT_EQ(adapters[0]["name"], "Ethernet");
}

TEST_F(ReportCommandTest, PrintsTheDocumentAlone)
{
    EXPECT_EQ(Run({L"report", L"--html", File(L"r.html").wstring(), L"--json"}), ExitCode::Passed);
    EXPECT_EQ(Document()["command"], "report");
    EXPECT_EQ(m_console.Errors, L"");
    EXPECT_EQ(FilesThere(), std::vector<std::wstring>{L"r.html"});
}

TEST_F(ReportCommandTest, WhoWatchesIsToldWhereThePageIs)
{
    m_console.ErrorsAreWatched = true;
    const std::wstring file = File(L"r.html").wstring();
    EXPECT_EQ(Run({L"report", L"--html", file, L"--json"}), ExitCode::Passed);
    EXPECT_EQ(m_console.Errors, L"The report is in " + file + L".\n");
}

TEST_F(ReportCommandTest, WritesTheDocumentToAFile)
{
    const std::wstring file = File(L"r.json").wstring();
    EXPECT_EQ(Run({L"report", L"--json", file}), ExitCode::Passed);
    EXPECT_EQ(m_console.Output, L"The report is in " + file + L".\n");
    EXPECT_EQ(json::parse(BytesOf(file))["adapters"].size(), 2u);
}

TEST_F(ReportCommandTest, HasTheTimeOfNow)
{
    const std::string before = DateToday();
    EXPECT_EQ(Run({L"report", L"--json"}), ExitCode::Passed);
    const std::string after = DateToday();
    const std::string made = Document()["made"].get<std::string>().substr(0, before.size());
    EXPECT_TRUE(made == before || made == after) << made << " is neither " << before << " nor " << after;
}

TEST_F(ReportCommandTest, HoldsWhatTheNamespaceHas)
{
    EXPECT_EQ(Run({L"report", L"--json"}), ExitCode::Passed);
    const json document = Document();
    EXPECT_EQ(document["provider"]["processIds"], json::array({312}));
    const json link = document["adapters"][0]["tests"][0];
    EXPECT_EQ(link["result"]["findings"], json::array({"No cable. Größe!"}));
    EXPECT_TRUE(link["setting"].is_null());
    const json sender = document["adapters"][1]["tests"][2];
    EXPECT_EQ(sender["counters"][5], json::parse(R"({"name": "Sent", "value": 200})"));
    EXPECT_EQ(sender["result"]["setting"]["coverage"], 50);
    EXPECT_TRUE(sender["setting"].is_object());
    EXPECT_TRUE(document["adapters"][1]["tests"][0]["result"].is_null());
}

TEST_F(ReportCommandTest, WithoutTestsThereIsNothingToReport)
{
    m_world->Tests.clear();
    EXPECT_EQ(Run({L"report", L"--html", File(L"r.html").wstring()}), ExitCode::NotFound);
    EXPECT_EQ(m_console.Errors, L"zebdiag: There is nothing to report: no wired adapter has tests.\n"
                                L"Run \"zebdiag doctor\": it says which adapters were left out, and why.\n");
    EXPECT_TRUE(FilesThere().empty());
}

constexpr wchar_t kNotTaken[] = L"See that the name is not that of a folder, that no other program has the "
                                L"file open, and that you may change it.";

struct UnwritableCase
{
    const char* name;
    const wchar_t* file; // below the folder of the test
    const wchar_t* nextStep;
};

class UnwritableReportTest : public ReportCommandTest, public testing::WithParamInterface<UnwritableCase>
{
};

TEST_P(UnwritableReportTest, NamesCauseAndNextStepAndLeavesNothing)
{
    std::filesystem::create_directory(File(L"folder"));
    const std::wstring held = File(L"held.html").wstring();
    std::ofstream(std::filesystem::path(held)) << "as before";
    const CFileHandle holder(CreateFileW(held.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    const std::wstring file = m_folder.Path().wstring() + L"\\" + GetParam().file;
    EXPECT_EQ(Run({L"report", L"--html", file}), ExitCode::CouldNotRun);
    EXPECT_TRUE(m_console.Errors.starts_with(L"zebdiag: " + file + L" was not written.\n" +
                                             GetParam().nextStep + L"\n(Status 0x8007"))
        << Utf8Text(m_console.Errors);
    EXPECT_EQ(m_console.Output, L"");
    EXPECT_EQ(FilesThere(), (std::vector<std::wstring>{L"folder", L"held.html"}));
}

INSTANTIATE_TEST_SUITE_P(
    Files, UnwritableReportTest,
    testing::Values(UnwritableCase{"NoFolder", L"none\\r.html",
                                   L"Make the folder, or name a file in another one."},
                    UnwritableCase{"IsAFolder", L"folder", kNotTaken},
                    UnwritableCase{"IsOpen", L"held.html", kNotTaken},
                    UnwritableCase{"NoName", L"a?b.html",
                                   L"Name a file as the system allows it, without < > : \" | ? and *."}),
    NameOf<UnwritableCase>);

TEST_F(ReportCommandTest, FailureIsADocumentToo)
{
    EXPECT_EQ(Run({L"report", L"--html", File(L"none").wstring() + L"\\r.html", L"--json"}),
              ExitCode::CouldNotRun);
    EXPECT_EQ(Document()["error"]["status"], "0x80070003");
}

// The document is an interface, so it is spelled out.
TEST(JsonOfReportTest, HasEverything)
{
    CReport report = SampleReport();
    std::vector<CTest>& tests = report.Adapters[0].Tests;
    tests = {tests[1], tests[6], tests[8]};
    json expected = json::parse(R"({
        "version": 2, "command": "report", "computer": "WS42", "namespace": "root\\cimv2",
        "made": "2024-05-01T14:00:00",
        "provider": {"image": "Drevok.EXE", "processIds": [312]},
        "adapters": [{"key": "{AAAA-1111}", "name": "Ethernet", "description": "Contoso Gigabit", "tests": [
          {"key": "2@{AAAA-1111}", "number": 2, "caption": "Speed", "description": "What Speed looks at.",
           "running": false, "sendsPackets": false, "characteristics": [2], "setting": null,
           "result": {"state": "failed", "percentComplete": 45, "started": "2024-05-01T13:45:10",
                      "ended": "2024-05-01T13:45:12", "written": null,
                      "setting": {"coverage": null, "quick": null, "report": null},
                      "findings": ["The adapter is slow. Check the cable."],
                      "lines": ["time|Speed|The adapter is slow. Check the cable."]},
           "counters": null},
          {"key": "7@{AAAA-1111}", "number": 7, "caption": "Names", "description": "What Names looks at.",
           "running": false, "sendsPackets": false, "characteristics": [2], "setting": null,
           "result": null, "counters": null},
          {"key": "9@{AAAA-1111}", "number": 9, "caption": "Sender", "description": "What Sender looks at.",
           "running": false, "sendsPackets": true, "characteristics": [2, 7],
           "setting": {"coverage": 100, "quick": true, "report": true},
           "counters": [
             {"name": "Role", "value": 1}, {"name": "Link", "value": 1},
             {"name": "Median round trip", "value": 240}, {"name": "Received there", "value": 195},
             {"name": "Replies sent", "value": 195}, {"name": "Sent", "value": 200},
             {"name": "Replies received", "value": 190}, {"name": "Out of order", "value": 0},
             {"name": "Lost there", "value": 5}, {"name": "Lost back", "value": 5},
             {"name": "Longest round trip", "value": 3}]}]}]})");
    json document = json::parse(Utf8Text(JsonOfReport(report)));
    EXPECT_EQ(document["program"], ZEB_VERSION);
    expected["program"] = ZEB_VERSION;
    json& sender = document["adapters"][0]["tests"][2];
    EXPECT_EQ(sender["result"]["findings"].size(), 11u);
    EXPECT_EQ(sender["result"]["setting"]["coverage"], 50);
    sender.erase("result");
    EXPECT_EQ(document, expected);
}
} // namespace
} // namespace zebdiag
