#include "tests/unit/classes/MethodsTest.h"

namespace
{
class ClearResultsTest : public MethodsTest
{
};

TEST_F(ClearResultsTest, ClearResultsSetsNoResult)
{
    TakeAnyOutParameter();
    In(L"SystemElement", kAdapterA);
    EXPECT_EQ(Call(L"ClearResults", kOrdinary), S_OK);
    EXPECT_EQ(m_manager.Calls, (Calls{L"ClearResults 1@A"}));
    EXPECT_EQ(OutType(L"ReturnValue"), VT_I4);
    EXPECT_EQ(Read(m_out, L"ReturnValue").lVal, 0);
    EXPECT_EQ(OutType(L"Result"), VT_NULL);
    EXPECT_EQ(OutType(L"TestingStopped"), VT_NULL);
}

TEST_F(ClearResultsTest, FailedClearingStillSetsTheReturnValue)
{
    m_manager.Answers[L"ClearResults"] = engine::ClearWhileRunning;
    In(L"SystemElement", kAdapterA);
    const CTraceCapture trace;
    EXPECT_EQ(Call(L"ClearResults", kOrdinary), engine::ClearWhileRunning);
    EXPECT_EQ(trace.Count("CTolva_DiagTest::ClearResults: ClearResults failed, hr = <80042003>"), 1u);
    EXPECT_EQ(Read(m_out, L"ReturnValue").lVal, 0);
}

TEST_F(ClearResultsTest, ReturnValueThatCannotBeSetChangesNothing)
{
    In(L"SystemElement", kAdapterA);
    m_plan->Fail(CCallPlan::Call::Put, 1, wmi::TypeMismatch);
    const CTraceCapture trace;
    EXPECT_EQ(Call(L"ClearResults", kOrdinary), S_OK);
    EXPECT_EQ(trace.Count("CTolva_DiagTest::SetOutParams: SetProperty (Return Value) failed hr = <80041005>"),
              1u);
}

struct RefusedClearing
{
    const char* name;
    const wchar_t* path;
    const wchar_t* systemElement;
    bool cimKeyMode;
    HRESULT status;
    const char* line;
};

class RefusedClearingTest : public ClearResultsTest, public testing::WithParamInterface<RefusedClearing>
{
};

TEST_P(RefusedClearingTest, ClearsNothing)
{
    const RefusedClearing& row = GetParam();
    In(L"SystemElement", row.systemElement);
    const CTraceCapture trace;
    EXPECT_EQ(Call(L"ClearResults", row.path, row.cimKeyMode), row.status);
    const std::vector<std::string> lines = trace.Lines();
    EXPECT_EQ(std::count(lines.begin(), lines.end(), row.line), 1) << row.line;
    EXPECT_TRUE(m_manager.Calls.empty());
    EXPECT_EQ(OutType(L"ReturnValue"), VT_NULL);
}

INSTANTIATE_TEST_SUITE_P(
    Clearings, RefusedClearingTest,
    testing::Values(RefusedClearing{"NoName", L"Tolva_DiagTest.Caption=\"x\"", kAdapterA, true,
                                    wmi::InvalidParameter,
                                    "CTolva_DiagTest::ClearResults: GetKeyRef for TestName failed"},
                    RefusedClearing{"ReferenceWithoutKeys", kOrdinary, L"A", true, wmi::InvalidParameter,
                                    "CTolva_DiagTest::ClearResults: GetKeyRef for DeviceID failed"},
                    RefusedClearing{"NullSystemElement", kOrdinary, nullptr, true, wmi::Failed,
                                    "CTolva_DiagTest::ClearResults: Parsing for SystemElement failed"},
                    RefusedClearing{"OneOfTheFullKeys", kOrdinary, kAdapterA, false, wmi::InvalidParameter,
                                    "CTolva_DiagTest::ClearResults: Invalid SystemElement"},
                    RefusedClearing{"OneKeyThatIsNotTheDeviceId", kOrdinary,
                                    L"Tolva_EthernetAdapter.Name=\"A\"", false, wmi::InvalidParameter,
                                    "CTolva_DiagTest::ClearResults: Invalid SystemElement"},
                    RefusedClearing{"OtherAdapter", kOrdinary, kAdapterB, true, wmi::Failed,
                                    "CTolva_DiagTest::ClearResults: Parsing for DeviceID failed"}),
    [](const auto& info) { return info.param.name; });

TEST_F(ClearResultsTest, UnreadableSystemElementOfClearResultsPassesThrough)
{
    const CTraceCapture trace;
    EXPECT_EQ(Call(L"ClearResults", kOrdinary, true, false), E_FAIL);
    EXPECT_EQ(
        trace.Count("CTolva_DiagTest::ClearResults: GetProperty for SystemElement failed, hr = <80004005>"),
        1u);
    EXPECT_TRUE(m_manager.Calls.empty());
}
} // namespace
