// Everything that clients do, at once and often, against one provider object. Nobody knows who comes first;
// every answer must be one of those that its operation can have, and the provider must be whole afterwards.
#include "CDM/src/ZebRegistry.h"
#include "CDM/src/engine/runs/RunEnvironment.h"
#include "Common/src/com/Text.h"
#include "tests/component/provider/ComponentTest.h"
#include "tests/component/provider/StressAgent.h"
#include "tests/support/Answers.h"
#include "tests/support/TraceMarks.h"

#include <gmock/gmock.h>
#include <thread>

namespace
{
constexpr int kRounds = 300; // of every client
constexpr LONG kPassed = 2;
constexpr LONG kFailed = 3;
constexpr LONG kInProgress = 4;
constexpr LONG kStopped = 5;

constexpr HRESULT kNotFound = static_cast<HRESULT>(0x80042005); // the engine's own

// Time passes a thousand times as fast between the polls of a sender/responder run.
class CHurriedEnvironment final : public IRunEnvironment
{
  public:
    SYSTEMTIME LocalTime() override { return SystemRunEnvironment().LocalTime(); }
    ULONGLONG ProcessMilliseconds() override { return SystemRunEnvironment().ProcessMilliseconds() * 1000; }
    CHandle StartThread(LPTHREAD_START_ROUTINE procedure, void* parameter) override
    {
        return SystemRunEnvironment().StartThread(procedure, parameter);
    }
    DWORD WaitForEither(HANDLE event, HANDLE worker, DWORD milliseconds) override
    {
        return SystemRunEnvironment().WaitForEither(event, worker, milliseconds / 1000);
    }
    DWORD Wait(HANDLE object, DWORD milliseconds) override
    {
        return SystemRunEnvironment().Wait(object, milliseconds);
    }
};

struct CRow
{
    const wchar_t* key;
    std::set<LONG> states; // that a run can end in
    LONG undisturbed;      // where nobody stops it
};

const CRow kRows[] = {
    {L"1@A", {kPassed}, kPassed},           {L"2@A", {kFailed}, kFailed},
    {L"3@A", {kPassed, kStopped}, kPassed}, {L"9@A", {kPassed, kStopped}, kPassed},
    {L"1@B", {kPassed}, kPassed},           {L"A@B", {kPassed, kStopped}, kPassed},
};

struct CStressWorld
{
    CStressTest m_tests[6] = {
        {L"A", 1, 0, S_OK}, {L"A", 2, 0, vorl::speed::NoLink}, {L"A", 3, 2, S_OK}, {L"A", 9, INFINITE, S_OK},
        {L"B", 1, 0, S_OK}, {L"B", 10, INFINITE, S_OK},
    };
    ComPtr<CStressAgent> m_agent = MakeCom<CStressAgent>(m_tests);
    CHurriedEnvironment m_environment;
};

class ConcurrencyTest : private CStressWorld, public ComponentTest
{
  public:
    ConcurrencyTest() : ComponentTest(static_cast<IVormRoot*>(m_agent.Get()), {&m_environment, nullptr})
    {
        m_host.Registry.SetNumber(kZebDiagKey, "TimeoutSndRsp", 10);
        m_host.Registry.SetNumber(kZebDiagKey, "CheckTime", 2);
        m_host.Registry.SetNumber(kZebDiagKey, "Enable", 1);
    }

    std::span<CStressTest> Tests() { return m_tests; }
    // No status at all is no answer that any of them can have.
    void Note(const char* operation, const CAnswer& answer)
    {
        m_answers.Add(operation, answer.Status.value_or(E_PENDING));
    }
    static const CRow& RowOf(int number) { return kRows[static_cast<size_t>(number) % std::size(kRows)]; }
    static std::wstring AdapterOf(const CRow& row) { return AdapterPath(wcschr(row.key, L'@') + 1); }

    void Run(int round)
    {
        const CRow& row = RowOf(round * 5 + 1);
        std::map<std::wstring, std::wstring> in = {{L"SystemElement", AdapterOf(row)}};
        if (round % 2)
            in[L"Setting"] = SettingPath(row.key);
        const CAnswer answer = Invoke(TestPath(row.key), L"RunTest", in);
        Note("RunTest", answer);
        if (answer.Objects.size() != 1)
            m_answers.AddFault("a run without out-parameters");
    }
    void Stop(int round)
    {
        const CRow& row = RowOf(round);
        Note("DiscontinueTest",
             Invoke(TestPath(row.key), L"DiscontinueTest", {{L"SystemElement", AdapterOf(row)}}));
    }
    void Clear(int round)
    {
        const CRow& row = RowOf(round);
        Note("ClearResults",
             Invoke(TestPath(row.key), L"ClearResults", {{L"SystemElement", AdapterOf(row)}}));
    }
    void Write(int round)
    {
        const Instance setting =
            standin::MakeInstance(ServedSchema().GetDefinition(kServedNamespace, L"Tolva_DiagSetting"));
        const auto put = [&](const wchar_t* name, CVariant value) { setting->Put(name, 0, &value, 0); };
        put(L"SettingID", CVariant::FromText(RowOf(round).key));
        for (const wchar_t* name :
             {L"HaltOnError", L"ReportSoftErrors", L"ReportStatusMessages", L"QuickMode"})
            put(name, CVariant::FromBool(round % 2 == 0));
        put(L"TestWarningLevel", CVariant::FromLong(round));
        put(L"PercentOfTestCoverage", CVariant::FromByte(static_cast<BYTE>(50 + round % 50)));
        Note("Put", Put(setting));
    }
    void List(int)
    {
        for (const wchar_t* className :
             {L"Tolva_DiagTest", L"Tolva_DiagSetting", L"Tolva_DiagTestForMSE", L"Tolva_DiagSettingForTest"})
        {
            const CAnswer answer = Enumerate(className);
            Note("EnumerateFixed", answer);
            if (answer.Objects.size() != std::size(kRows))
                m_answers.AddFault("an enumeration that lacks a test");
        }
        for (const wchar_t* className : {L"Tolva_DiagResultForMSE", L"Tolva_DiagResultForTest"})
            Note("EnumerateResultAssociations", Enumerate(className));
        const CAnswer results = Enumerate(L"Tolva_DiagResult");
        Note("EnumerateResults", results);
        for (const Instance& result : results.Objects)
            Look(result);
    }
    void Fetch(int round)
    {
        const CRow& row = RowOf(round);
        Note("GetTest", Get(TestPath(row.key)));
        Note("GetSetting", Get(SettingPath(row.key)));
        const CAnswer result = Get(ResultPath(row.key));
        Note("GetResult", result);
        for (const Instance& object : result.Objects)
            Look(object);
        Note("GetResultAssociation", Get(L"Tolva_DiagResultForMSE.Result=" + Quoted(ResultPath(row.key)) +
                                         L",SystemElement=" + Quoted(AdapterOf(row))));
    }
    // A result as a client finds it, whatever happens to it meanwhile.
    void Look(const Instance& result)
    {
        const std::wstring key = Text(result, L"DiagnosticName");
        const auto row = std::find_if(std::begin(kRows), std::end(kRows),
                                      [&](const CRow& candidate) { return key == candidate.key; });
        const LONG state = Number(result, L"TestState");
        const size_t lines = Texts(result, L"TestResults").size();
        if (row == std::end(kRows))
            m_answers.AddFault("a result of no test");
        else if (state != 0 && state != kInProgress && !row->states.contains(state))
            m_answers.AddFault("no run of this test can end so: " + NarrowText(key) + " " +
                               std::to_string(state));
        if (state == kPassed && Number(result, L"PercentComplete") != 100)
            m_answers.AddFault("a passed run that is not complete");
        if (state == kFailed && lines != 0 && lines != 2)
            m_answers.AddFault("a failed run with half a reason");
        if (lines != 0 && lines != 2 && lines != 11)
            m_answers.AddFault("half a list of messages");
    }

    using Client = void (ConcurrencyTest::*)(int round);
    // Each in a thread of its own.
    void RunClients(const std::vector<Client>& clients)
    {
        std::vector<std::thread> threads;
        for (size_t i = 0; i < clients.size(); ++i)
            threads.emplace_back(
                [this, client = clients[i], offset = static_cast<int>(i)]
                {
                    for (int round = 0; round < kRounds; ++round)
                        (this->*client)(round + offset);
                });
        for (std::thread& thread : threads)
            thread.join();
    }

    CAnswers m_answers;
};

// The statuses with which a method's handler has failed, as the trace tells them: the client's call succeeds.
std::set<HRESULT> Traced(const std::vector<std::string>& lines, const std::string& text)
{
    std::set<HRESULT> codes;
    for (const std::string& line : lines)
        if (const size_t at = line.find(text); at != std::string::npos)
            codes.insert(static_cast<HRESULT>(std::stoul(line.substr(at + text.size()), nullptr, 16)));
    return codes;
}

TEST_F(ConcurrencyTest, EverythingAtOnceLeavesAWholeProvider)
{
    Start();
    for (const CRow& row : kRows)
        EXPECT_EQ(RunTest(row.key).Status, S_OK);
    List(0);
    const long objects = g_liveComObjects;

    const CTraceCapture trace;
    RunClients({&ConcurrencyTest::Run, &ConcurrencyTest::Run, &ConcurrencyTest::Run, &ConcurrencyTest::Stop,
                &ConcurrencyTest::Stop, &ConcurrencyTest::Clear, &ConcurrencyTest::Clear,
                &ConcurrencyTest::Write, &ConcurrencyTest::Write, &ConcurrencyTest::List,
                &ConcurrencyTest::List, &ConcurrencyTest::Fetch, &ConcurrencyTest::Fetch});

    const std::map<std::string, std::set<HRESULT>> possible = {
        {"RunTest", {S_OK}},
        {"DiscontinueTest", {S_OK}},
        {"ClearResults", {S_OK}},
        {"Put", {S_OK}},
        {"EnumerateFixed", {S_OK}},
        {"EnumerateResultAssociations", {S_OK}},
        {"EnumerateResults", {S_OK, kNotFound}}, // cleared meanwhile
        {"GetTest", {S_OK}},
        {"GetSetting", {S_OK}},
        {"GetResult", {S_OK, wmi::NotFound}},
        {"GetResultAssociation", {S_OK, wmi::NotFound}},
    };
    for (const auto& [operation, statuses] : m_answers.All())
        EXPECT_THAT(statuses, testing::IsSubsetOf(possible.at(operation))) << operation;
    EXPECT_EQ(m_answers.All().size(), possible.size());
    EXPECT_THAT(m_answers.Faults(), testing::IsEmpty());

    const std::vector<std::string> lines = trace.Lines();
    EXPECT_THAT(Traced(lines, "CTolva_DiagTest::ExecMethodAsync:RunTest failed hr = <"),
                testing::IsSubsetOf({static_cast<HRESULT>(0x80042000)}));
    EXPECT_THAT(Traced(lines, "CTolva_DiagTest::RunTest: RunTest failed hr = <"),
                testing::IsSubsetOf({vorl::speed::NoLink}));
    EXPECT_THAT(Traced(lines, "CTolva_DiagTest::ExecMethodAsync:DiscontinueTest failed, hr = <"),
                testing::IsSubsetOf({static_cast<HRESULT>(0x80042002), wmi::Failed}));
    EXPECT_THAT(Traced(lines, "CTolva_DiagTest::ExecMethodAsync:ClearResults failed, hr = <"),
                testing::IsSubsetOf({static_cast<HRESULT>(0x80042003), wmi::NotFound, kNotFound}));
    const CTraceFindings findings = CheckTrace(trace.Text());
    EXPECT_GT(findings.Marks, 1000u);
    EXPECT_THAT(findings.Faults, testing::IsEmpty());
    EXPECT_EQ(g_liveComObjects, objects);

    // Whoever asked last to stop may have come too late; what the tests do alone is theirs again.
    for (CStressTest& test : Tests())
        ResetEvent(test.stop.Get());
    const CHandle stop(CreateEventW(nullptr, TRUE, FALSE, L"SenderResponderEvent"));
    ResetEvent(stop.Get());
    for (const CRow& row : kRows)
    {
        EXPECT_EQ(Number(Get(TestPath(row.key)).Objects.at(0), L"IsInUse"), VARIANT_FALSE);
        EXPECT_EQ(RunTest(row.key).Status, S_OK);
        EXPECT_EQ(Number(Get(ResultPath(row.key)).Objects.at(0), L"TestState"), row.undisturbed);
    }
    const CAnswer before = Enumerate(L"Tolva_DiagResult");
    Restart();
    const CAnswer after = Enumerate(L"Tolva_DiagResult");
    ASSERT_EQ(after.Objects.size(), before.Objects.size());
    for (size_t i = 0; i < after.Objects.size(); ++i)
        EXPECT_EQ(after.Objects[i]->CompareTo(0, before.Objects[i].Get()), WBEM_S_NO_ERROR);
}
} // namespace
