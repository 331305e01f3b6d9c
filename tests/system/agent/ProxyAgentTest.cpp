// The proxy agent as the provider uses it: in a process of its own, every call marshalled.
#include "Common/src/com/ComPtr.h"
#include "Common/src/com/Text.h"
#include "agent/AgentCodes.h"
#include "agent/VorlIds.h"
#include "tests/support/AgentLists.h"
#include "tests/system/support/Process.h"
#include "tests/system/support/ProviderMachine.h"

#include <chrono>
#include <future>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <thread>

namespace
{
constexpr wchar_t kImage[] = L"VorlProxy.exe";

HRESULT Activate(ComPtr<IVormRoot>& root)
{
    ComPtr<IUnknown> agent;
    const HRESULT hr =
        CoCreateInstance(kClsidVorl, nullptr, CLSCTX_LOCAL_SERVER, __uuidof(IUnknown), agent.PutVoid());
    return FAILED(hr) ? hr : agent.As(root);
}

// An agent that performs the script.
ComPtr<IVormDiag> StartAgent(const CProviderMachine& machine, const std::string& script)
{
    machine.SetScript(script);
    ComPtr<IVormRoot> root;
    ComPtr<IVormDiag> diag;
    HRESULT hr = Activate(root);
    if (SUCCEEDED(hr))
        hr = root->Initialize(0);
    if (SUCCEEDED(hr))
        hr = root.As(diag);
    if (FAILED(hr))
        throw std::runtime_error("the agent did not start: " + std::to_string(hr));
    return diag;
}

void Register()
{
    const std::wstring bin = BinFolder();
    ASSERT_EQ(0u, RunProgram(L"regsvr32.exe /s \"" + bin + L"VorlPS.dll\"").ExitCode);
    ASSERT_EQ(0u, RunProgram(L"\"" + bin + kImage + L"\" /RegServer").ExitCode);
}

TEST(ProxyAgentProcess, IsOneOfItsOwnAndEndsByItself)
{
    const CProviderMachine machine{CProviderMachine::Agent::Proxy};
    Register();
    ComPtr<IVormDiag> agent = StartAgent(machine, "{}");
    EXPECT_EQ(1u, ProcessesOf(kImage).size());
    agent.Reset();
    EXPECT_TRUE(WaitForNoProcess(kImage));
}

// One process serves all cases: each starts an agent of its own, and one that does nothing keeps the process.
class ProxyAgent : public testing::Test
{
  public:
    static void SetUpTestSuite()
    {
        BecomeFirstClientOfCom();
        Register();
        s_machine.emplace(CProviderMachine::Agent::Proxy);
        ASSERT_EQ(S_OK, Activate(s_keeper));
    }
    static void TearDownTestSuite()
    {
        s_keeper.Reset();
        EXPECT_TRUE(WaitForNoProcess(kImage));
        s_machine.reset();
    }

  protected:
    static ComPtr<IVormDiag> Start(const std::string& script) { return StartAgent(*s_machine, script); }

    static inline std::optional<const CProviderMachine> s_machine;
    const CBstr m_key{L"A"};

  private:
    static inline ComPtr<IVormRoot> s_keeper;
};

TEST_F(ProxyAgent, ListsAreMarshalledAndBelongToTheClient)
{
    const std::string longKey(10000, 'x');
    const ComPtr<IVormDiag> agent = Start(R"({"Adapters": [
        {"Key": "a", "Tests": [{"TestID": 1, "NameStringID": 7, "Reserved": 8}, {"TestID": 4294967295}]},
        {"Key": "Größe 日本"}, {"Key": ")" +
                                          longKey + R"("}]})");
    std::vector<std::wstring> keys;
    std::vector<VormTestDescriptor> tests;
    EXPECT_EQ(S_OK, ListAdapters(*agent.Get(), keys));
    EXPECT_EQ((std::vector<std::wstring>{L"a", L"Gr\u00F6\u00DFe \u65E5\u672C",
                                         std::wstring(longKey.begin(), longKey.end())}),
              keys);
    EXPECT_EQ(S_OK, ListTests(*agent.Get(), L"A", tests));
    ASSERT_EQ((std::vector<ULONG>{1, 4294967295}), Ids(tests));
    EXPECT_EQ(7u, tests[0].NameStringID);
    EXPECT_EQ(8u, tests[0].Reserved);
}

TEST_F(ProxyAgent, EmptyListsAreMarshalled)
{
    std::vector<std::wstring> keys;
    std::vector<VormTestDescriptor> tests;
    const ComPtr<IVormDiag> agent = Start("{}");
    EXPECT_EQ(S_OK, ListAdapters(*agent.Get(), keys));
    EXPECT_TRUE(keys.empty());
    EXPECT_EQ(vorl::NoSuchAdapter, ListTests(*agent.Get(), L"a", tests));
    EXPECT_TRUE(tests.empty());
}

TEST_F(ProxyAgent, OutcomesAndStatisticsCross)
{
    const ComPtr<IVormDiag> agent = Start(R"({"Adapters": [{"Key": "a", "Tests": [
        {"TestID": 1, "Outcome": ["passed", "0x80040311"]},
        {"TestID": 9, "Statistics": [{"Counter": [1, 2, 3, 4, 5, 6, 7, 8], "Word": 9, "ByteA": 10, "ByteB": 11}]}]}]})");
    EXPECT_EQ(S_OK, agent->RunDiagTest(m_key.Get(), 1));
    EXPECT_EQ(vorl::link::Down, agent->RunDiagTest(m_key.Get(), 1));
    VormTestStatistics statistics = {};
    EXPECT_EQ(S_OK, agent->GetDiagTestStatistics(m_key.Get(), 9, &statistics));
    EXPECT_EQ(1u, statistics.Counter[0]);
    EXPECT_EQ(8u, statistics.Counter[7]);
    EXPECT_EQ(9u, statistics.Word);
    EXPECT_EQ(10u, statistics.ByteA);
    EXPECT_EQ(11u, statistics.ByteB);
}

TEST_F(ProxyAgent, StopReachesARunThatBlocks)
{
    const ComPtr<IVormDiag> agent = Start(R"({"Adapters": [{"Key": "a", "Tests": [{"TestID": 10}]}]})");
    auto run = std::async(std::launch::async,
                          [&]
                          {
                              CoInitializeEx(nullptr, COINIT_MULTITHREADED);
                              const HRESULT hr = agent->RunDiagTest(m_key.Get(), 10);
                              CoUninitialize();
                              return hr;
                          });
    while (agent->StopTest(m_key.Get(), 10) == vorl::NotRunning &&
           run.wait_for(std::chrono::seconds(0)) == std::future_status::timeout)
        std::this_thread::yield();
    EXPECT_EQ(S_OK, run.get());
}

TEST_F(ProxyAgent, TwoClientsHaveAnAgentEach)
{
    const ComPtr<IVormDiag> one = Start(R"({"Adapters": [{"Key": "one"}]})");
    const ComPtr<IVormDiag> two = Start(R"({"Adapters": [{"Key": "two"}]})");
    EXPECT_EQ(1u, ProcessesOf(kImage).size());
    std::vector<std::wstring> keys;
    EXPECT_EQ(S_OK, ListAdapters(*one.Get(), keys));
    EXPECT_EQ(std::vector<std::wstring>{L"one"}, keys);
    EXPECT_EQ(S_OK, ListAdapters(*two.Get(), keys));
    EXPECT_EQ(std::vector<std::wstring>{L"two"}, keys);
}

TEST_F(ProxyAgent, BadScriptRefusesToInitialize)
{
    s_machine->SetScript("{");
    ComPtr<IVormRoot> root;
    ASSERT_EQ(S_OK, Activate(root));
    EXPECT_EQ(vorl::script::NotJson, root->Initialize(0));
}

TEST_F(ProxyAgent, ThrowReachesTheClientAsServerFault)
{
    const ComPtr<IVormDiag> agent = Start(R"({"Adapters": [{"Key": "a"}],
        "Faults": {"EnumAdapters": {"Call": 1, "Throw": true}, "Release": {"Throw": true}}})");
    std::vector<std::wstring> keys;
    EXPECT_EQ(RPC_E_SERVERFAULT, ListAdapters(*agent.Get(), keys));
    EXPECT_TRUE(keys.empty());
    EXPECT_EQ(S_OK, ListAdapters(*agent.Get(), keys));
    EXPECT_EQ(1u, keys.size());
}

TEST_F(ProxyAgent, CountsCanBeReadFromAnotherProcess)
{
    nlohmann::json script = {{"CountsFile", std::string()}};
    const std::wstring file = s_machine->Folder() + L"counts.json";
    script["CountsFile"] = std::string(file.begin(), file.end());
    ComPtr<IVormDiag> agent = Start(script.dump());
    std::vector<std::wstring> keys;
    ListAdapters(*agent.Get(), keys);
    ListAdapters(*agent.Get(), keys);
    agent.Reset();
    const nlohmann::json expected = {{"Initialize", 1}, {"EnumAdapters", 2}, {"Release", 1}};
    EXPECT_TRUE(s_machine->WaitForFile(L"counts.json",
                                       [&](const std::string& text)
                                       {
                                           const auto counts = nlohmann::json::parse(text, nullptr, false);
                                           return !counts.is_discarded() && counts["Calls"] == expected;
                                       }))
        << s_machine->ReadFileBytes(L"counts.json");
}

TEST(ProxyAgentProgram, RefusesAnythingButItsSwitches)
{
    const std::wstring program = L"\"" + BinFolder() + kImage + L"\"";
    for (const wchar_t* arguments : {L"", L" RegServer", L" /Nothing", L" /RegServer /UnregServer"})
        EXPECT_EQ(2u, RunProgram(program + arguments).ExitCode) << NarrowText(arguments);
}
} // namespace
