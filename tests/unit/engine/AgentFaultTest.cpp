// Each call that start-up and runs make of the agent fails, or throws, at its n-th time.
#include "tests/support/CaseName.h"
#include "tests/unit/engine/EngineFixture.h"

namespace
{
using Method = CFakeAgent::Method;
constexpr HRESULT kAgentFailure = static_cast<HRESULT>(0x80040123);

class AdapterFaultTest : public CEngineTest, public testing::WithParamInterface<std::tuple<int, bool>>
{
};

TEST_P(AdapterFaultTest, CostsOnlyTheTestsOfThatAdapter)
{
    const auto [n, throws] = GetParam();
    std::vector<std::wstring> expected;
    for (int i = 1; i <= 3; ++i)
    {
        const std::wstring adapter = L"{" + std::to_wstring(i) + L"}";
        agent->AddAdapter(adapter.c_str(), {1});
        if (i != n)
            expected.push_back(L"1@" + adapter);
    }
    if (throws)
        agent->Throw(Method::EnumDiagTests, n);
    else
        agent->Fail(Method::EnumDiagTests, n, kAgentFailure);
    EXPECT_EQ(S_OK, Start());
    EXPECT_EQ(expected, Tests());
    EXPECT_EQ(expected, Settings());
    EXPECT_TRUE(trace.Has(throws ? "CDiagMgr::Initialize:EnumDiagTests failed, hr = <8000ffff>"
                                 : "CDiagMgr::Initialize:EnumDiagTests failed, hr = <80040123>"));
}

INSTANTIATE_TEST_SUITE_P(Adapters, AdapterFaultTest,
                         testing::Combine(testing::Values(1, 2, 3), testing::Bool()));

// A sender/responder run of three polls: what becomes of it when a call of the agent goes wrong.
struct RunFault
{
    const char* name;
    Method method;
    int n;
    int times;
    HRESULT result;
    ULONG state;
    ULONG messages;
    const char* trace;
};

class RunFaultTest : public CEngineTest, public testing::WithParamInterface<std::tuple<RunFault, bool>>
{
};

TEST_P(RunFaultTest, EndsInACodeATraceAndNothingLeftBehind)
{
    const auto& [fault, throws] = GetParam();
    agent->AddAdapter(L"{aaa}", {9});
    agent->BlockRuns();
    registry.SetNumber(kDiagKey, "TimeoutSndRsp", 10);
    registry.SetNumber(kDiagKey, "CheckTime", 4);
    ASSERT_EQ(S_OK, Start());
    ASSERT_EQ(S_OK, Run(L"9@{aaa}"));
    const long live = g_liveComObjects;

    if (throws)
        agent->Throw(fault.method, fault.n, fault.times);
    else
        agent->Fail(fault.method, fault.n, kAgentFailure, fault.times);
    if (fault.method == Method::RunDiagTest)
        environment.Script({CFakeRunEnvironment::Wake::WorkerEnded});
    else
        environment.OnWait([&] { WaitForSingleObject(agent->Blocked(), INFINITE); });
    const HRESULT failure = throws ? E_UNEXPECTED : kAgentFailure;
    EXPECT_EQ(fault.result == S_OK ? S_OK : failure, Run(L"9@{aaa}"));
    const CResultData data = ResultData(L"9@{aaa}");
    EXPECT_EQ(fault.state, data.TestState);
    EXPECT_EQ(fault.messages, data.MessageCount);
    EXPECT_TRUE(trace.Has(std::string(fault.trace) + (throws ? "<8000ffff>" : "<80040123>")));
    EXPECT_EQ(live, g_liveComObjects);

    // The agent and the test serve on.
    environment.OnWait(nullptr);
    environment.Script({});
    EXPECT_EQ(S_OK, Run(L"9@{aaa}"));
    EXPECT_EQ(2u, ResultData(L"9@{aaa}").TestState);
    EXPECT_EQ(live, g_liveComObjects);
}

constexpr char kStatistics[] = "CDiagTest::StartTest:GetDiagTestStatistics failed hr = ";
constexpr char kStop[] = "CDiagTest::StopTest failed, hr = ";
const RunFault kFaults[] = {
    {"Run", Method::RunDiagTest, 1, 1, E_FAIL, 3, 2,
     "CDiagTest::StartTest:RunDiagTest failed, threadParameters.hrTestStatus = "},
    {"FirstPoll", Method::GetDiagTestStatistics, 1, 1, S_OK, 2, 11, kStatistics},
    {"SecondPoll", Method::GetDiagTestStatistics, 2, 1, S_OK, 2, 11, kStatistics},
    {"LastPoll", Method::GetDiagTestStatistics, 3, 1, S_OK, 2, 0, kStatistics},
    {"EveryPoll", Method::GetDiagTestStatistics, 1, 3, S_OK, 2, 0, kStatistics},
    {"OneStop", Method::StopTest, 1, 1, S_OK, 2, 11, kStop},
    {"ThreeStops", Method::StopTest, 1, 3, S_OK, 2, 11, kStop},
    {"EveryStop", Method::StopTest, 1, 4, E_FAIL, 3, 2, "CDiagMgr::RunTest:StopTest failed hr = "},
};
INSTANTIATE_TEST_SUITE_P(Calls, RunFaultTest, testing::Combine(testing::ValuesIn(kFaults), testing::Bool()),
                         [](const auto& info) {
                             return std::string(std::get<0>(info.param).name) +
                                    (std::get<1>(info.param) ? "Throws" : "Fails");
                         });
} // namespace
