// Many clients in several processes at once: consoles, and programs that hold connections for long. Nobody
// knows who comes first; every answer must be one of those that its operation can have, the provider must end
// by itself afterwards, and what it stored must be what was seen last.
#include "tests/system/provider/ProviderFixture.h"

#include "Common/src/com/Text.h"
#include "Common/src/com/Variant.h"
#include "Common/src/com/WmiStatus.h"
#include "tests/support/Answers.h"
#include "tests/support/TraceMarks.h"

#include <atomic>
#include <functional>
#include <future>
#include <gmock/gmock.h>
#include <thread>

namespace
{
constexpr int kRounds = 24;  // of every client that holds a connection
constexpr int kPrograms = 3; // that every console client starts, one after the other

constexpr DWORD kNotReachable = 6; // the exit code of a console that did not get through
constexpr HRESULT kNotFound = static_cast<HRESULT>(0x80042005); // the engine's own

constexpr wchar_t kCountsFile[] = L"counts.json";
const char kScriptBehindCountsFile[] = R"(,
  "Adapters": [
    { "Key": "ALPHA", "Tests": [ { "TestID": 1 }, { "TestID": 2, "Outcome": "0x80040321" },
                                 { "TestID": 3, "Duration": 30 }, { "TestID": 9 } ] },
    { "Key": "BETA", "Tests": [ { "TestID": 1 }, { "TestID": 15 } ] }
  ]
})";

// An ordinary test and the states that its runs can end in, as text.
struct CRow
{
    const wchar_t* key;
    const wchar_t* adapter;
    std::set<std::wstring> states;
};

// A stop may reach any of them while it runs, however short that is.
const CRow kOrdinary[] = {
    {L"1@ALPHA", L"ALPHA", {L"2", L"5"}}, {L"2@ALPHA", L"ALPHA", {L"3", L"5"}},
    {L"3@ALPHA", L"ALPHA", {L"2", L"5"}}, {L"1@BETA", L"BETA", {L"2", L"5"}},
    {L"F@BETA", L"BETA", {L"2", L"5"}},
};
const CRow kSender = {L"9@ALPHA", L"ALPHA", {L"2", L"5"}};
constexpr size_t kTests = std::size(kOrdinary) + 1;

const CRow& RowOf(int number)
{
    return kOrdinary[static_cast<size_t>(number) % std::size(kOrdinary)];
}

std::wstring ResultPath(const CRow& row)
{
    return L"Tolva_DiagResult.DiagnosticName=\"" + EscapedKey(row.key) +
           L"\",DiagnosticCreationClassName=\"Tolva_DiagTest\",ExecutionID=\"" + EscapedKey(row.adapter) +
           L"\"";
}

struct CSetAtEnd
{
    std::atomic<bool>& Flag;
    ~CSetAtEnd() { Flag = true; }
};

class Concurrency : public testing::Test
{
  public:
    Concurrency()
    {
        // The agent counts its calls in a file.
        const std::string counts = nlohmann::json(NarrowText(m_machine.Folder() + kCountsFile)).dump();
        m_machine.SetScript("{ \"CountsFile\": " + counts + kScriptBehindCountsFile);
        // A whole run of the sender in three polls.
        m_machine.SetNumber(L"ZebDiag", L"CheckTime", 1);
        m_machine.SetNumber(L"ZebDiag", L"TimeoutSndRsp", 3);
        m_machine.SetNumber(L"ZebDiag", L"MaxPktsRcvd", 1000000);
    }

    static HRESULT Exec(const CWmiClient& client, const CRow& row, const wchar_t* method)
    {
        ComPtr<IWbemClassObject> out;
        return client.Exec(TestPath(row.key), method, {{L"SystemElement", AdapterPath(row.adapter)}}, out);
    }
    // The state of the result, which no client may see in one that its test cannot have.
    std::wstring Look(const CWmiClient& client, const CRow& row)
    {
        ComPtr<IWbemClassObject> result;
        const HRESULT hr = client.Get(ResultPath(row), result);
        m_answers.Add("Get", hr);
        if (!result)
            return L"";
        const std::wstring state = PropertyText(result.Get(), L"TestState").value_or(L"none");
        if (state != L"0" && state != L"4" && !row.states.contains(state))
            m_answers.AddFault(NarrowText(row.key) + " in state " + NarrowText(state));
        if (state == L"2" && PropertyText(result.Get(), L"PercentComplete") != L"100")
            m_answers.AddFault(NarrowText(row.key) + " passed and not complete");
        return state;
    }

    void Run(const CWmiClient& client, int round)
    {
        m_answers.Add("RunTest", Exec(client, RowOf(round), L"RunTest"));
        Look(client, RowOf(round));
    }
    void Stop(const CWmiClient& client, int round)
    {
        m_answers.Add("DiscontinueTest", Exec(client, RowOf(round), L"DiscontinueTest"));
    }
    void Clear(const CWmiClient& client, int round)
    {
        m_answers.Add("ClearResults", Exec(client, RowOf(round), L"ClearResults"));
    }
    void List(const CWmiClient& client, int)
    {
        HRESULT status = S_OK;
        for (const wchar_t* className :
             {L"Tolva_DiagTest", L"Tolva_DiagSetting", L"Tolva_DiagTestForMSE", L"Tolva_DiagSettingForTest"})
        {
            const size_t count = client.Instances(className, &status).size();
            m_answers.Add("EnumerateFixed", status);
            if (count != kTests)
                m_answers.AddFault("an enumeration of " + std::to_string(count));
        }
        for (const wchar_t* className : {L"Tolva_DiagResultForMSE", L"Tolva_DiagResultForTest"})
        {
            client.Instances(className, &status);
            m_answers.Add("EnumerateResultAssociations", status);
        }
        client.Instances(L"Tolva_DiagResult", &status);
        m_answers.Add("EnumerateResults", status);
    }
    void Query(const CWmiClient& client, int)
    {
        HRESULT status = S_OK;
        client.Query(L"SELECT * FROM Tolva_DiagResult WHERE TestState = 2", &status);
        m_answers.Add("QueryResults", status);
        if (client.Query(L"SELECT Name FROM Tolva_DiagTest", &status).size() != kTests)
            m_answers.AddFault("a query that lacks a test");
        m_answers.Add("QueryTests", status);
    }
    void Write(const CWmiClient& client, int round)
    {
        ComPtr<IWbemClassObject> setting;
        const std::wstring path = L"Tolva_DiagSetting.SettingID=\"" + EscapedKey(RowOf(round).key) + L"\"";
        m_answers.Add("Get", client.Get(path, setting));
        if (!setting)
            return;
        CVariant coverage = CVariant::FromByte(static_cast<BYTE>(50 + round));
        setting->Put(L"PercentOfTestCoverage", 0, &coverage, 0);
        m_answers.Add("Put",
                      client.Services()->PutInstance(setting.Get(), WBEM_FLAG_UPDATE_ONLY, nullptr, nullptr));
    }

    using Client = void (Concurrency::*)(const CWmiClient& client, int round);
    // A client with a connection of its own, in a thread of its own.
    void Begin(Client work)
    {
        const int offset = static_cast<int>(m_threads.size());
        BeginThread(
            [this, work, offset]
            {
                const CWmiClient client;
                for (int round = 0; round < kRounds; ++round)
                    (this->*work)(client, round + offset);
            });
    }
    // Consoles, one after the other.
    void BeginPrograms(const char* name, const wchar_t* arguments)
    {
        BeginThread(
            [this, name, arguments]
            {
                for (int i = 0; i < kPrograms; ++i)
                {
                    const CRunResult program = Zebdiag(arguments);
                    m_answers.Add(name, static_cast<HRESULT>(program.ExitCode));
                    if (program.ExitCode >= kNotReachable)
                        m_answers.AddFault(program.Output);
                }
            });
    }
    void BeginThread(std::function<void()> work)
    {
        m_threads.emplace_back(
            [this, work = std::move(work)]
            {
                try
                {
                    work();
                }
                catch (const std::exception& failure)
                {
                    m_answers.AddFault(failure.what());
                }
            });
    }
    // Runs the sender twice; another client stops the second run, which is longer, when it has come
    // somewhere.
    void BeginSender()
    {
        BeginThread(
            [this]
            {
                const CWmiClient client;
                m_answers.Add("RunTest", Exec(client, kSender, L"RunTest"));
                if (Look(client, kSender) != L"2")
                    m_answers.AddFault("a run that nobody stopped has not passed");
                m_machine.SetNumber(L"ZebDiag", L"TimeoutSndRsp", 100);
                std::atomic<bool> over{false};
                {
                    const auto stopper = std::async(std::launch::async, [&] { StopSender(over); });
                    const CSetAtEnd end{over};
                    m_answers.Add("RunTest", Exec(client, kSender, L"RunTest"));
                }
                if (Look(client, kSender) != L"5")
                    m_answers.AddFault("a run that was stopped is not shown so");
            });
    }
    void StopSender(const std::atomic<bool>& over)
    {
        try
        {
            const CWmiClient other;
            while (Progress(other) <= 0 && !over)
                SwitchToThread();
            m_answers.Add("DiscontinueTest", Exec(other, kSender, L"DiscontinueTest"));
        }
        catch (const std::exception& failure)
        {
            m_answers.AddFault(failure.what());
        }
    }
    // How far the sender's run has come; -1 where none is going on.
    int Progress(const CWmiClient& client)
    {
        ComPtr<IWbemClassObject> result;
        if (client.Get(ResultPath(kSender), result) != S_OK ||
            PropertyText(result.Get(), L"TestState") != L"4")
            return -1;
        return std::stoi(PropertyText(result.Get(), L"PercentComplete").value_or(L"0"));
    }
    void Join()
    {
        for (std::thread& thread : m_threads)
            thread.join();
        m_threads.clear();
    }
    // No mark of the trace is without its partner and no line torn.
    void ExpectWholeTrace()
    {
        const CTraceFindings findings = CheckTrace(m_machine.ReadFileBytes(L"ZebDiagDbg.log"));
        EXPECT_GT(findings.Marks, 200u);
        EXPECT_THAT(findings.Faults, testing::IsEmpty());
    }
    // Nobody held the agent when the provider ended.
    void ExpectAgentReleased()
    {
        const nlohmann::json counts = nlohmann::json::parse(m_machine.ReadFileBytes(kCountsFile));
        EXPECT_EQ(counts.at("Calls").at("Initialize"), 1);
        EXPECT_EQ(counts.at("Calls").value("Release", 0), 1);
    }

    const CProviderMachine m_machine;
    CAnswers m_answers;
    std::vector<std::thread> m_threads;
};

TEST_F(Concurrency, ManyClientsGetPossibleAnswersAndTheProviderEndsByItself)
{
    m_machine.SetIdleTime(600000); // one provider for all of them
    BeginSender();
    for (const Client work :
         {&Concurrency::Run, &Concurrency::Run, &Concurrency::Stop, &Concurrency::Clear, &Concurrency::List,
          &Concurrency::List, &Concurrency::Query, &Concurrency::Write})
        Begin(work);
    BeginPrograms("zebdiag list", L"list");
    BeginPrograms("zebdiag run", L"run --adapter BETA --test 1");
    BeginPrograms("zebdiag set", L"set --adapter ALPHA --test 9 --coverage 100");
    Join();

    const std::map<std::string, std::set<HRESULT>> possible = {
        {"RunTest", {S_OK}},
        {"DiscontinueTest", {S_OK}},
        {"ClearResults", {S_OK}},
        {"Put", {S_OK}},
        {"Get", {S_OK, wmi::NotFound}}, // cleared meanwhile
        {"EnumerateFixed", {S_OK}},
        {"EnumerateResultAssociations", {S_OK}},
        {"EnumerateResults", {S_OK, kNotFound}},
        {"QueryResults", {S_OK, kNotFound}},
        {"QueryTests", {S_OK}},
        // Exit codes: done or passed; stopped; the result was cleared before it could be read; busy.
        {"zebdiag list", {0}},
        {"zebdiag run", {0, 2, 3, 5}},
        {"zebdiag set", {0}},
    };
    for (const auto& [operation, statuses] : m_answers.All())
        EXPECT_THAT(statuses, testing::IsSubsetOf(possible.at(operation))) << operation;
    EXPECT_EQ(m_answers.All().size(), possible.size());
    EXPECT_THAT(m_answers.Faults(), testing::IsEmpty());
    EXPECT_EQ(ProcessesOf(L"Drevok.EXE").size(), 1u);

    const nlohmann::json last = ZebdiagJson(L"results");
    m_machine.SetIdleTime(0);
    ASSERT_TRUE(m_machine.WaitUntilAllEnded());
    ExpectWholeTrace();
    ExpectAgentReleased();
    EXPECT_EQ(last, ZebdiagJson(L"results"));
}

TEST_F(Concurrency, ClientsThatAllVanishLeaveRunsThatEndAndAreStored)
{
    m_machine.SetIdleTime(100);
    {
        std::vector<std::unique_ptr<CRunningProgram>> consoles;
        for (const wchar_t* arguments : {L"run --adapter ALPHA --test 9", L"list", L"results"})
            consoles.push_back(std::make_unique<CRunningProgram>(ZebdiagCommand(arguments)));
        ASSERT_TRUE(WaitForCalls(m_machine, "9@ALPHA", "RunDiagTest", 1));
        for (const auto& console : consoles)
            KillProcess(console->Id());
    }
    ASSERT_TRUE(m_machine.WaitUntilAllEnded());
    ExpectWholeTrace();
    ExpectAgentReleased();
    const nlohmann::json results = ZebdiagJson(L"results").at("results");
    ASSERT_EQ(results.size(), 1u);
    EXPECT_EQ(results[0].at("state"), "passed");
}
} // namespace
