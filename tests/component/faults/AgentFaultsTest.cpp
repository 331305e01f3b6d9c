// Every call of the agent fails, or throws, at its n-th time in every operation, once or from then on.
#include "Common/src/WomClassCache.h"
#include "tests/component/faults/FaultFixture.h"

namespace
{
using Method = CFakeAgent::Method;
using Operation = FaultFixture::COperation;

constexpr HRESULT kAgentFailure = static_cast<HRESULT>(0x80040123);
constexpr int kOnce = 1;
constexpr int kFromThenOn = 1000;

constexpr Method kMethods[] = {Method::QueryDiagnostics,     Method::Initialize,  Method::EnumAdapters,
                               Method::EnumDiagTests,        Method::RunDiagTest, Method::StopTest,
                               Method::GetDiagTestStatistics};

constexpr LONG kPassed = 2;
constexpr LONG kFailed = 3;
constexpr LONG kStopped = 5;

// What a failure of the agent comes to. The client's call succeeds in every case: the result tells.
struct CAgentRow
{
    const char* operation;
    Method method;
    int n;
    int times;
    const wchar_t* test; // whose result is looked at
    LONG state;
    size_t lines; // of the result
    std::vector<const char*> traces;
    bool stopped = true; // for a request to stop: whether the client is told so
};

const CAgentRow kRows[] = {
    {"RunOrdinary",
     Method::RunDiagTest,
     1,
     kOnce,
     L"1@A",
     kFailed,
     2,
     {"CDiagTest::StartTest:RunTest failed, hr = <%x>",
      "CDiagMgr::RunTest:pDiagTestObj->StartTest failed, hrTestStatus = <%x>",
      "CTolva_DiagTest::RunTest: RunTest failed hr = <%x>"}},
    {"RunByOtherCase",
     Method::RunDiagTest,
     1,
     kOnce,
     L"2@A",
     kFailed,
     2,
     {"CDiagTest::StartTest:RunTest failed, hr = <%x>",
      "CTolva_DiagTest::RunTest: RunTest failed hr = <%x>"}},
    {"RunSender",
     Method::RunDiagTest,
     1,
     kOnce,
     L"9@B",
     kFailed,
     2,
     {"CDiagTest::StartTest:RunDiagTest failed, threadParameters.hrTestStatus = <%x>.",
      "CTolva_DiagTest::RunTest: RunTest failed hr = <%x>"}},
    {"RunSender",
     Method::GetDiagTestStatistics,
     1,
     kOnce,
     L"9@B",
     kPassed,
     11,
     {"CDiagTest::StartTest:GetDiagTestStatistics failed hr = <%x>"}},
    {"RunSender",
     Method::GetDiagTestStatistics,
     2,
     kOnce,
     L"9@B",
     kPassed,
     11,
     {"CDiagTest::StartTest:GetDiagTestStatistics failed hr = <%x>"}},
    {"RunSender",
     Method::GetDiagTestStatistics,
     3,
     kOnce,
     L"9@B",
     kPassed,
     0,
     {"CDiagTest::StartTest:GetDiagTestStatistics failed hr = <%x>"}},
    {"RunSender", Method::StopTest, 1, kOnce, L"9@B", kPassed, 11, {"CDiagTest::StopTest failed, hr = <%x>"}},
    {"RunSender",
     Method::StopTest,
     1,
     kFromThenOn,
     L"9@B",
     kFailed,
     2,
     {"CDiagTest::StopTest failed, hr = <%x>", "CDiagMgr::RunTest:StopTest failed hr = <%x>",
      "CTolva_DiagTest::RunTest: RunTest failed hr = <%x>"}},
    {"StopOrdinary",
     Method::StopTest,
     1,
     kOnce,
     L"1@A",
     kPassed,
     0,
     {"CDiagTest::StopTest failed, hr = <%x>", "CTolva_DiagTest::DiscontinueTest: StopTest failed hr = <%x>",
      "CTolva_DiagTest::ExecMethodAsync:DiscontinueTest failed, hr = <%x>"},
     false},
    {"StopSender",
     Method::GetDiagTestStatistics,
     1,
     kOnce,
     L"9@B",
     kStopped,
     0,
     {"CDiagTest::StartTest:GetDiagTestStatistics failed hr = <%x>"}},
    {"StopSender",
     Method::StopTest,
     1,
     kOnce,
     L"9@B",
     kStopped,
     11,
     {"CDiagTest::StopTest failed, hr = <%x>"}},
    {"StopSender",
     Method::StopTest,
     1,
     kFromThenOn,
     L"9@B",
     kFailed,
     2,
     {"CDiagTest::StopTest failed, hr = <%x>", "CDiagMgr::RunTest:StopTest failed hr = <%x>"}},
};

const CAgentRow* FindRow(const Operation& operation, Method method, int n, int times)
{
    for (const CAgentRow& row : kRows)
        if (row.operation == std::string(operation.name) && row.method == method && row.n == n &&
            row.times == times)
            return &row;
    return nullptr;
}

class AgentFaultsTest : public FaultFixture, public testing::WithParamInterface<Operation>
{
  protected:
    void Plan(Method method, int n, int times, bool throws)
    {
        if (throws)
            m_host.Agent->Throw(method, n, times);
        else
            m_host.Agent->Fail(method, n, kAgentFailure, times);
    }
    // Whether the planned failure came.
    bool FailOnce(Method method, int n, int times, bool throws)
    {
        const CAgentRow* const row = FindRow(GetParam(), method, n, times);
        bool failed = false;
        PerformWithFault(
            GetParam(), [&] { Plan(method, n, times, throws); },
            [&](const CAnswer& answer, const CTraceCapture& trace)
            {
                failed = m_host.Agent->Failed();
                m_host.Agent->Fail(method, 0, S_OK);
                EXPECT_EQ(answer.Returned, RightAnswer().Returned);
                EXPECT_EQ(answer.Status, RightAnswer().Status);
                EXPECT_FALSE(answer.StatusObject);
                EXPECT_EQ(answer.Objects.size(), RightAnswer().Objects.size());
                EXPECT_TRUE(row || !failed || times != kOnce) << "a call that the table does not know";
                if (failed && row)
                    ExpectRow(*row, answer, trace, throws ? E_UNEXPECTED : kAgentFailure);
            });
        return failed;
    }
    void ExpectRow(const CAgentRow& row, const CAnswer& answer, const CTraceCapture& trace, HRESULT failure)
    {
        for (const char* text : row.traces)
            EXPECT_TRUE(trace.Has(TraceLine(text, failure))) << TraceLine(text, failure);
        const Instance result = ResultOf(row.test);
        EXPECT_EQ(Number(result, L"TestState"), row.state);
        EXPECT_EQ(Texts(result, L"TestResults").size(), row.lines);
        if (strncmp(row.operation, "Stop", 4) == 0)
            EXPECT_EQ(Read(answer.Objects.at(0), L"TestingStopped").vt, row.stopped ? VT_BOOL : VT_NULL);
        else
            EXPECT_NE(Text(answer.Objects.at(0), L"Result"), L"");
    }
};

TEST_P(AgentFaultsTest, TheResultTellsAndTheProviderServesOn)
{
    StartWithStoredResults();
    LearnTheAnswer(GetParam());
    int rows = 0;
    for (const bool throws : {false, true})
        for (const Method method : kMethods)
            for (const int times : {kOnce, kFromThenOn})
                for (int n = 1; n == 1 || times == kOnce; ++n)
                {
                    SCOPED_TRACE(testing::Message() << "method " << static_cast<int>(method) << ", call " << n
                                                    << ", times " << times << ", throws " << throws);
                    if (!FailOnce(method, n, times, throws))
                        break;
                    rows += FindRow(GetParam(), method, n, times) != nullptr;
                }
    const auto expected =
        std::count_if(std::begin(kRows), std::end(kRows),
                      [](const CAgentRow& row) { return row.operation == std::string(GetParam().name); });
    EXPECT_EQ(rows, 2 * expected) << "every row came true, by failing and by throwing";
    RestartClean();
    ExpectStoredResult();
}

INSTANTIATE_TEST_SUITE_P(Operations, AgentFaultsTest, testing::ValuesIn(FaultFixture::Operations()),
                         [](const auto& info) { return info.param.name; });

using AgentEndTest = FaultFixture;

// Start-up: what the initialisation reports, and what the provider serves then.
struct CStartRow
{
    const char* name;
    Method method;
    int n;
    int times;
    HRESULT reported;
    size_t tests;
    std::vector<const char*> traces;

    friend void PrintTo(const CStartRow& row, std::ostream* out) { *out << row.name; }
};

const CStartRow kStarts[] = {
    {"Initialize",
     Method::Initialize,
     1,
     kOnce,
     wmi::Failed,
     0,
     {"Vorl Initialize returned 0x%x", "CProviderImp::ClassesInit:Vorl initialize failed hr = <%x>",
      "Sending FAILED"}},
    {"QueryDiagnostics",
     Method::QueryDiagnostics,
     1,
     kOnce,
     wmi::Failed,
     0,
     {"CDiagMgr::Initialize:Vorl QueryInterface failed, hr = <%x>",
      "CProviderImp::ClassesInit:DiagMgr initialize failed hr = <80004002>", "Sending FAILED"}},
    {"EnumAdapters",
     Method::EnumAdapters,
     1,
     kOnce,
     wmi::Failed,
     0,
     {"CDiagMgr::Initialize:EnumAdapters failed, hr = <%x>",
      "CProviderImp::ClassesInit:DiagMgr initialize failed hr = <%x>", "Sending FAILED"}},
    {"FirstEnumDiagTests",
     Method::EnumDiagTests,
     1,
     kOnce,
     WBEM_S_INITIALIZED,
     2,
     {"CDiagMgr::Initialize:EnumDiagTests failed, hr = <%x>", "Sending INITIALIZED"}},
    {"SecondEnumDiagTests",
     Method::EnumDiagTests,
     2,
     kOnce,
     WBEM_S_INITIALIZED,
     2,
     {"CDiagMgr::Initialize:EnumDiagTests failed, hr = <%x>", "Sending INITIALIZED"}},
    {"EveryEnumDiagTests",
     Method::EnumDiagTests,
     1,
     kFromThenOn,
     wmi::Failed,
     0,
     {"CDiagMgr::Initialize:EnumDiagTests failed, hr = <%x>", "CDiagMgr::Initialize:Not a single test found.",
      "CProviderImp::ClassesInit:DiagMgr initialize failed hr = <80041001>", "Sending FAILED"}},
};

class AgentStartTest : public FaultFixture, public testing::WithParamInterface<std::tuple<CStartRow, bool>>
{
};

TEST_P(AgentStartTest, ReportsAndLosesNothing)
{
    const auto& [row, throws] = GetParam();
    StartWithStoredResults();
    m_host.Release();
    WomClassCache::Drop();
    const CUsage before = Usage();
    for (int time = 0; time < 2; ++time)
    {
        const CTraceCapture trace;
        m_host.Restart();
        if (throws)
            m_host.Agent->Throw(row.method, row.n, row.times);
        else
            m_host.Agent->Fail(row.method, row.n, kAgentFailure, row.times);
        EXPECT_EQ(m_host.Initialize(), row.reported);
        EXPECT_TRUE(m_host.Agent->Failed());
        m_host.Agent->Fail(row.method, 0, S_OK);
        for (const char* text : row.traces)
        {
            const std::string line = TraceLine(text, throws ? E_UNEXPECTED : kAgentFailure);
            EXPECT_TRUE(trace.Has(line)) << line;
        }
        const CAnswer tests = Enumerate(L"Tolva_DiagTest");
        EXPECT_EQ(tests.Objects.size(), row.tests);
        EXPECT_EQ(tests.Returned, row.tests ? S_OK : wmi::Failed);
        EXPECT_EQ(tests.Status.has_value(), row.tests != 0) << "a class that nobody serves has no status";
    }
    m_host.Release();
    WomClassCache::Drop();
    EXPECT_EQ(Usage().Objects, before.Objects);
    EXPECT_EQ(Usage().AgentReferences, before.AgentReferences);

    RestartClean();
    EXPECT_EQ(Enumerate(L"Tolva_DiagResult").Objects.size(), 3u);
    ExpectStoredResult();
}

INSTANTIATE_TEST_SUITE_P(Calls, AgentStartTest, testing::Combine(testing::ValuesIn(kStarts), testing::Bool()),
                         [](const auto& info) {
                             return std::string(std::get<0>(info.param).name) +
                                    (std::get<1>(info.param) ? "Throws" : "Fails");
                         });

TEST_F(AgentEndTest, AgentThatThrowsWhileItIsReleasedCostsNoResult)
{
    StartWithStoredResults();
    m_host.Agent->SetOutcomes(1, {E_FAIL});
    EXPECT_EQ(RunTest(L"1@A").Status, S_OK);
    const CTraceCapture trace;
    m_host.Agent->ThrowWhenReleased();
    m_host.Release();
    EXPECT_TRUE(trace.Has("CDiagAgent::~CDiagAgent: the agent failed in Release"));
    RestartClean();
    EXPECT_EQ(Number(ResultOf(L"1@A"), L"TestState"), kFailed);
    ExpectStoredResult();
}
} // namespace
