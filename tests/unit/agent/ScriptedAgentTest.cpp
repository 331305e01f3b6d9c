#include "agent/scripted/ScriptedAgent.h"

#include "agent/AgentCodes.h"
#include "tests/support/AgentLists.h"
#include "tests/support/TempFolder.h"

#include <fstream>
#include <future>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace
{
ComPtr<CScriptedAgent> Agent(const std::string& script)
{
    return MakeCom<CScriptedAgent>([script] { return ParseScript(script); }, ScriptedThrow::RaisesException);
}

ComPtr<CScriptedAgent> StartedAgent(const std::string& script)
{
    auto agent = Agent(script);
    EXPECT_EQ(S_OK, agent->Initialize(0));
    return agent;
}

// One adapter "a" with the tests that are given as the items of a list.
std::string WithTests(const std::string& tests)
{
    return R"({"Adapters": [{"Key": "a", "Tests": [)" + tests + "]}]}";
}

const CBstr kKey(L"A"); // as the provider passes it on

TEST(ScriptedAgent, ListsWhatTheScriptSays)
{
    const auto agent = StartedAgent(
        R"({"Adapters": [{"Key": "a", "Tests": [{"TestID": 1, "Reserved": 5}, {"TestID": 10}]}, {"Key": "b"}]})");
    std::vector<std::wstring> keys;
    std::vector<VormTestDescriptor> tests;
    EXPECT_EQ(S_OK, ListAdapters(*agent, keys));
    EXPECT_EQ((std::vector<std::wstring>{L"a", L"b"}), keys);
    EXPECT_EQ(S_OK, ListTests(*agent, L"A", tests));
    EXPECT_EQ((std::vector<ULONG>{1, 10}), Ids(tests));
    EXPECT_EQ(5u, tests[0].Reserved);
    EXPECT_EQ(S_OK, ListTests(*agent, L"b", tests));
    EXPECT_TRUE(tests.empty());
    EXPECT_EQ(vorl::NoSuchAdapter, ListTests(*agent, L"c", tests));
}

TEST(ScriptedAgent, RefusesCallsBeforeInitialize)
{
    const auto agent = Agent("{}");
    std::vector<std::wstring> keys;
    VormTestStatistics statistics;
    EXPECT_EQ(vorl::NotInitialized, ListAdapters(*agent, keys));
    EXPECT_EQ(vorl::NotInitialized, agent->RunDiagTest(kKey.Get(), 1));
    EXPECT_EQ(vorl::NotInitialized, agent->StopTest(kKey.Get(), 1));
    EXPECT_EQ(vorl::NotInitialized, agent->GetDiagTestStatistics(kKey.Get(), 1, &statistics));
}

TEST(ScriptedAgent, BadScriptRefusesToInitialize)
{
    EXPECT_EQ(vorl::script::NotJson, Agent("{")->Initialize(0));
    EXPECT_EQ(vorl::script::BadContent, Agent("[]")->Initialize(0));
}

TEST(ScriptedAgent, OutcomesAreUsedInTurnAndTheLastOneStays)
{
    const auto agent =
        StartedAgent(WithTests(R"({"TestID": 1, "Outcome": ["0x80040311", "passed", "0x80040312"]})"));
    EXPECT_EQ(vorl::link::Down, agent->RunDiagTest(kKey.Get(), 1));
    EXPECT_EQ(S_OK, agent->RunDiagTest(kKey.Get(), 1));
    EXPECT_EQ(vorl::link::Disabled, agent->RunDiagTest(kKey.Get(), 1));
    EXPECT_EQ(vorl::link::Disabled, agent->RunDiagTest(kKey.Get(), 1));
    EXPECT_EQ(vorl::NoSuchTest, agent->RunDiagTest(kKey.Get(), 2));
    EXPECT_EQ(vorl::NoSuchAdapter, agent->RunDiagTest(CBstr(L"b").Get(), 1));
}

// Starts a run beside the test and stops it as soon as the agent knows of it.
HRESULT RunAndStop(CScriptedAgent& agent, ULONG testId)
{
    auto run = std::async(std::launch::async, [&] { return agent.RunDiagTest(kKey.Get(), testId); });
    while (agent.StopTest(kKey.Get(), testId) == vorl::NotRunning)
        std::this_thread::yield();
    return run.get();
}

// The status is the one that the provider takes for a stopped run.
TEST(ScriptedAgent, StoppedRunOfAnOrdinaryTestEndsAsStopped)
{
    const auto agent = StartedAgent(WithTests(
        R"({"TestID": 1, "Duration": 4000000000}, {"TestID": 2, "Duration": "until stopped", "Outcome": "0x80040321"})"));
    EXPECT_EQ(static_cast<HRESULT>(0x80042002), RunAndStop(*agent, 1));
    EXPECT_EQ(static_cast<HRESULT>(0x80042002), RunAndStop(*agent, 2));
    EXPECT_EQ(vorl::NotRunning, agent->StopTest(kKey.Get(), 1));
}

TEST(ScriptedAgent, SenderRunsUntilStoppedAndEndsWithItsOutcome)
{
    const auto agent = StartedAgent(WithTests(R"({"TestID": 9}, {"TestID": 10, "Outcome": "0x80040362"})"));
    EXPECT_EQ(S_OK, RunAndStop(*agent, 9));
    EXPECT_EQ(vorl::gateway::Silent, RunAndStop(*agent, 10));
}

VormTestStatistics Poll(CScriptedAgent& agent, ULONG testId)
{
    VormTestStatistics statistics = {};
    EXPECT_EQ(S_OK, agent.GetDiagTestStatistics(kKey.Get(), testId, &statistics));
    return statistics;
}

TEST(ScriptedAgent, StatisticsFollowTheListAndStartAnewWithEachRun)
{
    const auto agent = StartedAgent(WithTests(
        R"({"TestID": 9, "Duration": 0, "Statistics": [{"Counter": [10], "Word": 1}, {"Counter": [20], "Word": 2}]})"));
    EXPECT_EQ(10u, Poll(*agent, 9).Counter[0]);
    EXPECT_EQ(20u, Poll(*agent, 9).Counter[0]);
    EXPECT_EQ(2u, Poll(*agent, 9).Word);
    EXPECT_EQ(S_OK, agent->RunDiagTest(kKey.Get(), 9));
    EXPECT_EQ(10u, Poll(*agent, 9).Counter[0]);
}

TEST(ScriptedAgent, StatisticsOfSenderAndResponderGrowByThemselves)
{
    const auto agent = StartedAgent(WithTests(R"({"TestID": 9}, {"TestID": 10}, {"TestID": 1})"));
    const VormTestStatistics first = Poll(*agent, 9);
    const VormTestStatistics second = Poll(*agent, 9);
    EXPECT_GT(first.Counter[0], 0u);
    EXPECT_GT(second.Counter[0], first.Counter[0]);
    EXPECT_EQ(1u, second.ByteA);
    EXPECT_EQ(2u, Poll(*agent, 10).ByteA);
    VormTestStatistics none = {};
    EXPECT_EQ(vorl::NoStatistics, agent->GetDiagTestStatistics(kKey.Get(), 1, &none));
    EXPECT_EQ(vorl::NoSuchTest, agent->GetDiagTestStatistics(kKey.Get(), 2, &none));
}

TEST(ScriptedAgent, FaultsOfTheNthCallOnly)
{
    const auto agent = StartedAgent(R"({
        "Faults": {"EnumAdapters": [{"Call": 2, "Result": "0x80004005"}, {"Call": 3, "Result": "0x80070005"}]},
        "Adapters": [{"Key": "a"}]})");
    std::vector<std::wstring> keys;
    EXPECT_EQ(S_OK, ListAdapters(*agent, keys));
    EXPECT_EQ(E_FAIL, ListAdapters(*agent, keys));
    EXPECT_TRUE(keys.empty());
    EXPECT_EQ(E_ACCESSDENIED, ListAdapters(*agent, keys));
    EXPECT_EQ(S_OK, ListAdapters(*agent, keys));
    EXPECT_EQ(1u, keys.size());
}

TEST(ScriptedAgent, TheMostParticularFaultWins)
{
    const auto agent = StartedAgent(R"({
        "Faults": {"RunDiagTest": {"Result": 1}, "EnumDiagTests": {"Result": 1}},
        "Adapters": [
            {"Key": "a", "Faults": {"RunDiagTest": {"Result": 2}, "EnumDiagTests": {"Result": 2}}, "Tests": [
                {"TestID": 1, "Faults": {"RunDiagTest": {"Call": 2, "Result": 3}}}]},
            {"Key": "b", "Tests": [{"TestID": 1}]}]})");
    std::vector<VormTestDescriptor> tests;
    EXPECT_EQ(2, ListTests(*agent, L"a", tests));
    EXPECT_EQ(1, ListTests(*agent, L"b", tests));
    EXPECT_EQ(2, agent->RunDiagTest(kKey.Get(), 1));
    EXPECT_EQ(3, agent->RunDiagTest(kKey.Get(), 1));
    EXPECT_EQ(1, agent->RunDiagTest(CBstr(L"b").Get(), 1));
}

TEST(ScriptedAgent, EveryCallCanFail)
{
    const auto agent = Agent(R"({"Faults": {
        "Initialize": {"Call": 1, "Result": "0x80040001"}, "EnumAdapters": {"Result": "0x80040002"},
        "EnumDiagTests": {"Result": "0x80040003"}, "RunDiagTest": {"Result": "0x80040004"},
        "StopTest": {"Result": "0x80040005"}, "GetDiagTestStatistics": {"Result": "0x80040006"}}})");
    std::vector<std::wstring> keys;
    std::vector<VormTestDescriptor> tests;
    VormTestStatistics statistics;
    EXPECT_EQ(vorl::AgentCode(1), agent->Initialize(0));
    EXPECT_EQ(S_OK, agent->Initialize(0));
    EXPECT_EQ(vorl::AgentCode(2), ListAdapters(*agent, keys));
    EXPECT_EQ(vorl::AgentCode(3), ListTests(*agent, L"a", tests));
    EXPECT_EQ(vorl::AgentCode(4), agent->RunDiagTest(kKey.Get(), 1));
    EXPECT_EQ(vorl::AgentCode(5), agent->StopTest(kKey.Get(), 1));
    EXPECT_EQ(vorl::AgentCode(6), agent->GetDiagTestStatistics(kKey.Get(), 1, &statistics));
}

TEST(ScriptedAgent, EveryCallCanThrow)
{
    auto agent = Agent(R"({"Faults": {
        "Initialize": {"Call": 1, "Throw": true}, "EnumAdapters": {"Throw": true},
        "EnumDiagTests": {"Throw": true}, "RunDiagTest": {"Throw": true}, "StopTest": {"Throw": true},
        "GetDiagTestStatistics": {"Throw": true}, "Release": {"Throw": true}}})");
    std::vector<std::wstring> keys;
    std::vector<VormTestDescriptor> tests;
    VormTestStatistics statistics;
    EXPECT_THROW(agent->Initialize(0), std::runtime_error);
    EXPECT_THROW(ListAdapters(*agent, keys), std::runtime_error);
    EXPECT_THROW(ListTests(*agent, L"a", tests), std::runtime_error);
    EXPECT_THROW(agent->RunDiagTest(kKey.Get(), 1), std::runtime_error);
    EXPECT_THROW(agent->StopTest(kKey.Get(), 1), std::runtime_error);
    EXPECT_THROW(agent->GetDiagTestStatistics(kKey.Get(), 1, &statistics), std::runtime_error);
    const long before = g_liveComObjects;
    CScriptedAgent* const last = agent.Detach();
    EXPECT_THROW(last->Release(), std::runtime_error);
    EXPECT_EQ(before - 1, g_liveComObjects) << "the object is gone although its release threw";
}

TEST(ScriptedAgent, CallHangsUntilItsEventAndThenGoesOn)
{
    const std::wstring name = L"ZebScriptedAgentTest" + std::to_wstring(GetCurrentProcessId());
    const CHandle event(CreateEventW(nullptr, TRUE, FALSE, name.c_str()));
    const auto agent =
        StartedAgent(R"({"Faults": {"EnumAdapters": {"HangUntil": ")" +
                     std::string(name.begin(), name.end()) + R"("}}, "Adapters": [{"Key": "a"}]})");
    std::vector<std::wstring> keys;
    auto call = std::async(std::launch::async, [&] { return ListAdapters(*agent, keys); });
    EXPECT_EQ(std::future_status::timeout, call.wait_for(std::chrono::milliseconds(50)));
    SetEvent(event.Get());
    EXPECT_EQ(S_OK, call.get());
    EXPECT_EQ(1u, keys.size());
}

TEST(ScriptedAgent, CountsItsCallsInTheFile)
{
    const CTempFolder folder;
    const std::string file = folder.File("counts.json");
    const auto counts = [&] { return nlohmann::json::parse(std::ifstream(file)); };
    nlohmann::json script = nlohmann::json::parse(WithTests(R"({"TestID": 10, "Duration": 0})"));
    script["CountsFile"] = file;
    auto agent = StartedAgent(script.dump());
    EXPECT_EQ(nlohmann::json({{"Initialize", 1}}), counts()["Calls"]);

    std::vector<VormTestDescriptor> tests;
    ListTests(*agent, L"A", tests);
    ListTests(*agent, L"nobody", tests);
    agent->RunDiagTest(kKey.Get(), 10);
    agent->RunDiagTest(kKey.Get(), 11);
    agent->StopTest(kKey.Get(), 10);
    const nlohmann::json now = counts();
    EXPECT_EQ(nlohmann::json({{"Initialize", 1}, {"EnumDiagTests", 2}, {"RunDiagTest", 2}, {"StopTest", 1}}),
              now["Calls"]);
    EXPECT_EQ(nlohmann::json({{"a", {{"EnumDiagTests", 1}, {"RunDiagTest", 2}, {"StopTest", 1}}}}),
              now["Adapters"]);
    EXPECT_EQ(nlohmann::json({{"A@a", {{"RunDiagTest", 1}, {"StopTest", 1}}}}), now["Tests"]);

    agent.Reset();
    EXPECT_EQ(1, counts()["Calls"]["Release"]);
}

TEST(ScriptedAgent, NullPointersAreRefused)
{
    const auto agent = StartedAgent("{}");
    ULONG count = 0;
    BSTR* keys = nullptr;
    VormTestDescriptor* tests = nullptr;
    EXPECT_EQ(E_POINTER, agent->EnumAdapters(nullptr, &keys));
    EXPECT_EQ(E_POINTER, agent->EnumAdapters(&count, nullptr));
    EXPECT_EQ(E_POINTER, agent->EnumDiagTests(kKey.Get(), nullptr, &tests));
    EXPECT_EQ(E_POINTER, agent->EnumDiagTests(kKey.Get(), &count, nullptr));
    EXPECT_EQ(E_POINTER, agent->GetDiagTestStatistics(kKey.Get(), 1, nullptr));
    EXPECT_EQ(vorl::NoSuchAdapter, agent->RunDiagTest(nullptr, 1));
}
} // namespace
