#include "tests/unit/classes/MethodsTest.h"

namespace
{
class DiscontinueTestTest : public MethodsTest
{
};

TEST_F(DiscontinueTestTest, TestWithoutEventIsStoppedWhateverTheParameters)
{
    EXPECT_EQ(Call(L"DiscontinueTest", kOrdinary, false, false), S_OK);
    EXPECT_EQ(m_manager.Calls, (Calls{L"StopTest 1@A"}));
    EXPECT_EQ(Read(m_out, L"TestingStopped").boolVal, VARIANT_TRUE);
    EXPECT_EQ(Read(m_out, L"ReturnValue").lVal, 0);
}

TEST_F(DiscontinueTestTest, StopThatFailsPassesThrough)
{
    m_manager.Answers[L"StopTest"] = engine::Stopped;
    const CTraceCapture trace;
    EXPECT_EQ(Call(L"DiscontinueTest", kOrdinary), engine::Stopped);
    EXPECT_EQ(trace.Count("CTolva_DiagTest::DiscontinueTest: StopTest failed hr = <80042002>"), 1u);
    EXPECT_EQ(OutType(L"TestingStopped"), VT_NULL);
}

TEST_F(DiscontinueTestTest, StopThatFailsLeavesAnEmptyResult)
{
    m_manager.Answers[L"StopTest"] = engine::Stopped;
    TakeAnyOutParameter();
    EXPECT_EQ(Call(L"DiscontinueTest", kOrdinary), engine::Stopped);
    EXPECT_EQ(Result(), L"");
    EXPECT_EQ(OutType(L"ReturnValue"), VT_I4);
    EXPECT_EQ(OutType(L"TestingStopped"), VT_NULL);
    // The method's own out-parameters have no place for it.
    m_fixedOut.Reset();
    const CTraceCapture trace;
    EXPECT_EQ(Call(L"DiscontinueTest", kOrdinary), engine::Stopped);
    EXPECT_EQ(trace.Count("CTolva_DiagTest::SetOutParams: SetProperty (Result)failed hr = <80041002>"), 1u);
}

TEST_F(DiscontinueTestTest, StoppedTestWhoseOutParametersCannotBeSet)
{
    const CTraceCapture trace;
    m_plan->Fail(CCallPlan::Call::Put, 1, wmi::TypeMismatch);
    EXPECT_EQ(Call(L"DiscontinueTest", kOrdinary), wmi::TypeMismatch);
    EXPECT_EQ(
        trace.Count("CTolva_DiagTest::SetOutParams: SetProperty (TestingStopped) failed hr = <80041005>"),
        1u);
    EXPECT_EQ(OutType(L"ReturnValue"), VT_NULL);
    m_plan->Fail(CCallPlan::Call::Put, 2, wmi::TypeMismatch);
    EXPECT_EQ(Call(L"DiscontinueTest", kOrdinary), wmi::TypeMismatch);
    EXPECT_EQ(trace.Count("CTolva_DiagTest::SetOutParams: SetProperty (Return Value) failed hr = <80041005>"),
              1u);
}

TEST_F(DiscontinueTestTest, UnknownTestIsNotStopped)
{
    const CTraceCapture trace;
    EXPECT_EQ(Call(L"DiscontinueTest", L"Tolva_DiagTest.Name=\"7@A\""), engine::NotFound);
    EXPECT_EQ(trace.Count("CTolva_DiagTest::DiscontinueTest: GetTestData failed, hr = <80042005>"), 1u);
    EXPECT_TRUE(m_manager.Calls.empty());
}

TEST_F(DiscontinueTestTest, PathWithoutANameStopsNothing)
{
    const CTraceCapture trace;
    EXPECT_EQ(Call(L"DiscontinueTest", L"Tolva_DiagTest.Caption=\"x\""), wmi::InvalidParameter);
    EXPECT_EQ(trace.Count("CTolva_DiagTest::DiscontinueTest: GetKeyRef for TestName failed"), 1u);
    EXPECT_FALSE(trace.Has("GetTestData failed"));
    EXPECT_TRUE(m_manager.Calls.empty());
    EXPECT_EQ(OutType(L"TestingStopped"), VT_NULL);
}

TEST_F(DiscontinueTestTest, RunningTestWithEventIsSignalled)
{
    m_manager.Tests[L"9@B"].Locked = 1;
    In(L"SystemElement", kAdapterB);
    In(L"Result", L"Tolva_DiagResult.DiagnosticName=\"9@B\"");
    EXPECT_EQ(Call(L"DiscontinueTest", kSender), S_OK);
    EXPECT_EQ(WaitForSingleObject(m_event.Get(), 0), WAIT_OBJECT_0);
    EXPECT_EQ(Read(m_out, L"TestingStopped").boolVal, VARIANT_TRUE);
    EXPECT_EQ(Read(m_out, L"ReturnValue").lVal, 0);
    EXPECT_TRUE(m_manager.Calls.empty()) << "the agent is not asked";
}

TEST_F(DiscontinueTestTest, SignalThatFailsIsOnlyTraced)
{
    CTestData& test = m_manager.Tests[L"9@B"];
    test.Locked = 1;
    test.Event = GetCurrentProcess(); // no event
    In(L"SystemElement", kAdapterB);
    const CTraceCapture trace;
    EXPECT_EQ(Call(L"DiscontinueTest", kSender), S_OK);
    EXPECT_EQ(trace.Count("CTolva_DiagTest::DiscontinueTest:SetEvent failed"), 1u);
    EXPECT_EQ(Read(m_out, L"TestingStopped").boolVal, VARIANT_TRUE);
}

TEST_F(DiscontinueTestTest, SignalledTestWhoseOutParametersCannotBeSetSucceeds)
{
    m_manager.Tests[L"9@B"].Locked = 1;
    In(L"SystemElement", kAdapterB);
    const CTraceCapture trace;
    m_plan->Fail(CCallPlan::Call::Put, 1, wmi::TypeMismatch);
    EXPECT_EQ(Call(L"DiscontinueTest", kSender), S_OK);
    EXPECT_EQ(
        trace.Count("CTolva_DiagTest::SetOutParams: SetProperty (TestingStopped) failed hr = <80041005>"),
        1u);
    EXPECT_EQ(Read(m_out, L"ReturnValue").lVal, 0);
    m_plan->Fail(CCallPlan::Call::Put, 2, wmi::TypeMismatch);
    EXPECT_EQ(Call(L"DiscontinueTest", kSender), S_OK);
    EXPECT_EQ(trace.Count("CTolva_DiagTest::SetOutParams: SetProperty (Return Value) failed hr = <80041005>"),
              1u);
}

struct RefusedStop
{
    const char* name;
    const wchar_t* systemElement;
    const wchar_t* result;
    bool cimKeyMode;
    bool running;
    HRESULT status;
    const char* line;
};

class RefusedStopTest : public DiscontinueTestTest, public testing::WithParamInterface<RefusedStop>
{
};

TEST_P(RefusedStopTest, StopsNothing)
{
    const RefusedStop& row = GetParam();
    m_manager.Tests[L"9@B"].Locked = row.running;
    In(L"SystemElement", row.systemElement);
    if (row.result)
        In(L"Result", row.result);
    const CTraceCapture trace;
    EXPECT_EQ(Call(L"DiscontinueTest", kSender, row.cimKeyMode), row.status);
    const std::vector<std::string> lines = trace.Lines();
    EXPECT_EQ(std::count(lines.begin(), lines.end(), row.line), 1) << row.line;
    EXPECT_EQ(WaitForSingleObject(m_event.Get(), 0), static_cast<DWORD>(WAIT_TIMEOUT));
    EXPECT_TRUE(m_manager.Calls.empty());
    EXPECT_EQ(OutType(L"TestingStopped"), VT_NULL);
    EXPECT_EQ(OutType(L"ReturnValue"), VT_NULL);
}

INSTANTIATE_TEST_SUITE_P(
    Stops, RefusedStopTest,
    testing::Values(
        RefusedStop{"NotRunning", kAdapterB, nullptr, true, false, wmi::Failed,
                    "CTolva_DiagTest::DiscontinueTest: Cannot stop a test which is not running."},
        // The parameters of a test that is not running are looked at all the same, and first.
        RefusedStop{"NotRunningUnparsableSystemElement", L"?", nullptr, true, false, wmi::Failed,
                    "CTolva_DiagTest::DiscontinueTest: Parsing for SystemElement failed"},
        RefusedStop{"NotRunningOtherAdapter", kAdapterA, nullptr, true, false, wmi::Failed,
                    "CTolva_DiagTest::DiscontinueTest: Invalid SystemElement."},
        RefusedStop{"NotRunningUnparsableResult", kAdapterB, L"Tolva_DiagResult.", true, false, wmi::Failed,
                    "CTolva_DiagTest::DiscontinueTest: Parsing for Result failed"},
        RefusedStop{"NotRunningUnknownResult", kAdapterB, L"Tolva_DiagResult.DiagnosticName=\"7@B\"", true,
                    false, wmi::Failed, "CTolva_DiagTest::DiscontinueTest: Invalid Result object."},
        RefusedStop{"OneKeyThatIsNotTheDeviceId", L"Tolva_EthernetAdapter.Name=\"B\"", nullptr, false, true,
                    wmi::InvalidParameter, "CTolva_DiagTest::DiscontinueTest: Invalid SystemElement"},
        RefusedStop{"UnparsableSystemElement", L"?", nullptr, true, true, wmi::Failed,
                    "CTolva_DiagTest::DiscontinueTest: Parsing for SystemElement failed"},
        RefusedStop{"OneOfTheFullKeys", kAdapterB, nullptr, false, true, wmi::InvalidParameter,
                    "CTolva_DiagTest::DiscontinueTest: Invalid SystemElement"},
        RefusedStop{"NoDeviceId", L"Tolva_EthernetAdapter.Name=\"B\"", nullptr, true, true,
                    wmi::InvalidParameter, "CTolva_DiagTest::DiscontinueTest: GetKeyRef for DeviceID failed"},
        RefusedStop{"OtherAdapter", kAdapterA, nullptr, true, true, wmi::Failed,
                    "CTolva_DiagTest::DiscontinueTest: Invalid SystemElement."},
        RefusedStop{"UnparsableResult", kAdapterB, L"Tolva_DiagResult.", true, true, wmi::Failed,
                    "CTolva_DiagTest::DiscontinueTest: Parsing for Result failed"},
        RefusedStop{"UnknownResult", kAdapterB, L"Tolva_DiagResult.DiagnosticName=\"7@B\"", true, true,
                    wmi::Failed, "CTolva_DiagTest::DiscontinueTest: Invalid Result object."},
        RefusedStop{"ResultWithoutName", kAdapterB, L"Tolva_DiagResult.ExecutionID=\"B\"", true, true,
                    wmi::Failed, "CTolva_DiagTest::DiscontinueTest: Invalid Result object."}),
    [](const auto& info) { return info.param.name; });

TEST_F(DiscontinueTestTest, UnreadableParametersOfDiscontinueTestPassThrough)
{
    m_manager.Tests[L"9@B"].Locked = 1;
    const CTraceCapture trace;
    EXPECT_EQ(Call(L"DiscontinueTest", kSender, true, false), E_FAIL);
    EXPECT_EQ(trace.Count(
                  "CTolva_DiagTest::DiscontinueTest: GetProperty for SystemElement failed, hr = <80004005>"),
              1u);
    auto definition = std::make_shared<standin::CClassDefinition>(L"__PARAMETERS");
    standin::CPropertyDefinition property;
    property.Name = L"SystemElement";
    definition->SetProperty(property);
    m_fixedIn = standin::MakeInstance(definition);
    CVariant adapter = CVariant::FromText(kAdapterB);
    m_fixedIn->Put(L"SystemElement", 0, &adapter, 0);
    EXPECT_EQ(Call(L"DiscontinueTest", kSender), wmi::NotFound);
    EXPECT_EQ(trace.Count("CTolva_DiagTest::DiscontinueTest: GetProperty for Result failed hr = <80041002>"),
              1u);
}
} // namespace
