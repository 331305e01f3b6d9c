// Documents of commands that no other case asks for one. All documents are checked against their schemas in
// tests/docs/documents_test.py; what they say is looked at here.
#include "tests/system/support/Documents.h"
#include "tests/system/provider/SharedMachine.h"

#include <filesystem>
#include <fstream>
#include <iterator>

namespace
{
TEST_F(Served, EveryOutcomeOfARunIsInItsDocument)
{
    const nlohmann::json passed = ZebdiagJson(L"run --adapter BETA --test 1");
    EXPECT_EQ("passed", passed.at("runs").at(0).at("outcome"));
    const nlohmann::json failed = ZebdiagJson(L"run --adapter ALPHA --all", 1);
    EXPECT_EQ("passed", failed.at("runs").at(0).at("outcome"));
    EXPECT_EQ("failed", failed.at("runs").at(1).at("outcome"));
}

TEST_F(Served, StoppedRunAndTheStopHaveADocumentEach)
{
    RunUntilStopped(Machine());
    const unsigned runs = CallsOf(Machine(), "9@ALPHA", "RunDiagTest");
    const unsigned polls = CallsOf(Machine(), "9@ALPHA", "GetDiagTestStatistics");
    CRunningProgram run(ZebdiagCommand(L"run --adapter ALPHA --test 9 --json"), Errors::Dropped);
    ASSERT_TRUE(WaitForCalls(Machine(), "9@ALPHA", "RunDiagTest", runs + 1));
    ASSERT_TRUE(WaitForCalls(Machine(), "9@ALPHA", "GetDiagTestStatistics", polls + 1));
    EXPECT_EQ("in_progress", StateOf(ZebdiagJson(L"results"), "9@ALPHA"));
    const nlohmann::json busy = ZebdiagJson(L"run --adapter ALPHA --test 9", 5);
    EXPECT_TRUE(busy.at("runs").at(0).at("result").is_null());
    const nlohmann::json stop = ZebdiagJson(L"stop");
    EXPECT_EQ("passed", stop.at("tests").at(0).at("outcome"));
    const CRunResult stopped = run.Finish();
    EXPECT_EQ(2u, stopped.ExitCode);
    EXPECT_EQ("stopped", nlohmann::json::parse(stopped.Output).at("runs").at(0).at("outcome"));
}

TEST_F(Served, SettingsBeforeAndAfterAChange)
{
    EXPECT_EQ(100, ZebdiagJson(L"settings").at("settings").at(0).at("coverage"));
    EXPECT_EQ(40,
              ZebdiagJson(L"set --adapter ALPHA --test 9 --coverage 40").at("settings").at(0).at("coverage"));
}

TEST_F(Served, ClearedResults)
{
    Zebdiag(L"run --adapter BETA --test 1");
    EXPECT_EQ(1u, ZebdiagJson(L"clear --all").at("tests").size());
    EXPECT_EQ(0u, ZebdiagJson(L"results").at("results").size());
}

TEST_F(Served, ProfilesAndTheirFile)
{
    const nlohmann::json kept = ZebdiagJson(L"profiles --save documents --coverage 20");
    wchar_t folder[MAX_PATH] = {};
    GetEnvironmentVariableW(L"APPDATA", folder, MAX_PATH);
    std::ifstream file(std::filesystem::path(folder) / L"Veltrane/ZEB/profiles.json", std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    file.close();
    KeepDocument(bytes);
    const nlohmann::json left = ZebdiagJson(L"profiles --delete documents");
    EXPECT_NE(std::string::npos, kept.dump().find("\"documents\""));
    EXPECT_EQ(20, nlohmann::json::parse(bytes).at("profiles").at("documents").at("coverage"));
    EXPECT_EQ(std::string::npos, left.dump().find("\"documents\""));
}

TEST_F(Served, AdapterThatIsNotThereIsAnError)
{
    EXPECT_EQ("not_found", ZebdiagJson(L"list --adapter nope", 4).at("verdict"));
}
} // namespace
