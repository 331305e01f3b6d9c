#include "tests/unit/classes/MethodsTest.h"
#include "tests/unit/classes/TextFault.h"

namespace
{
class RunTestTest : public MethodsTest
{
};

TEST_F(RunTestTest, RunTestLocksRunsAndUnlocks)
{
    In(L"SystemElement", kAdapterA);
    EXPECT_EQ(Call(L"RunTest", kOrdinary), S_OK);
    EXPECT_EQ(m_manager.Calls, (Calls{L"LockTest 1@A", L"RunTest 1@A", L"UnlockTest 1@A"}));
    EXPECT_EQ(Result(), ResultReference(L"1@A", L"A"));
    EXPECT_EQ(Read(m_out, L"ReturnValue").lVal, 0);
    EXPECT_TRUE(m_sink->Indications().empty()) << "the provider sends the out-parameters";
}

TEST_F(RunTestTest, MethodNamesHaveNoLetterCase)
{
    In(L"SystemElement", kAdapterA);
    EXPECT_EQ(Call(L"runtest", kOrdinary), S_OK);
    EXPECT_EQ(Call(L"CLEARRESULTS", kOrdinary), S_OK);
    EXPECT_EQ(Call(L"discontinueTest", kOrdinary), S_OK);
    EXPECT_EQ(m_manager.Calls, (Calls{L"LockTest 1@A", L"RunTest 1@A", L"UnlockTest 1@A", L"ClearResults 1@A",
                                      L"StopTest 1@A"}));
}

TEST_F(RunTestTest, UnknownMethodsFail)
{
    const CTraceCapture trace;
    EXPECT_EQ(Call(L"Reboot", kOrdinary), E_FAIL);
    EXPECT_EQ(Call(L"", kOrdinary), E_FAIL);
    EXPECT_EQ(Call(nullptr, kOrdinary), E_FAIL);
    EXPECT_EQ(trace.Count("} <-- CTolva_DiagTest::ExecMethodAsync"), 3u);
    EXPECT_TRUE(m_manager.Calls.empty());
}

TEST_F(RunTestTest, FailedMethodsAreTraced)
{
    const CTraceCapture trace;
    In(L"SystemElement", kAdapterB);
    EXPECT_EQ(Call(L"RunTest", kOrdinary), wmi::Failed);
    EXPECT_EQ(trace.Count("CTolva_DiagTest::ExecMethodAsync:RunTest failed hr = <80041001>"), 1u);
    EXPECT_EQ(Call(L"ClearResults", kOrdinary), wmi::Failed);
    EXPECT_EQ(trace.Count("CTolva_DiagTest::ExecMethodAsync:ClearResults failed, hr = <80041001>"), 1u);
    EXPECT_EQ(Call(L"DiscontinueTest", L"Tolva_DiagTest.Name=\"7@A\""), engine::NotFound);
    EXPECT_EQ(trace.Count("CTolva_DiagTest::ExecMethodAsync:DiscontinueTest failed, hr = <80042005>"), 1u);
}

TEST_F(RunTestTest, RunTestWithTheTestsOwnSetting)
{
    In(L"SystemElement", kAdapterB);
    In(L"Setting", L"Tolva_DiagSetting.SettingID=\"9@B\"");
    EXPECT_EQ(Call(L"RunTest", kSender), S_OK);
    EXPECT_EQ(m_manager.Calls, (Calls{L"LockTest 9@B", L"RunTest with setting 9@B", L"UnlockTest 9@B"}));
}

TEST_F(RunTestTest, RunTestWithTheSettingOfAnotherTestPassesItOver)
{
    In(L"SystemElement", kAdapterB);
    In(L"Setting", L"Tolva_DiagSetting.SettingID=\"1@A\"");
    EXPECT_EQ(Call(L"RunTest", kSender), S_OK);
    EXPECT_EQ(m_manager.Calls, (Calls{L"LockTest 9@B", L"RunTest 9@B", L"UnlockTest 9@B"}));
    EXPECT_EQ(Result(), ResultReference(L"9@B", L"B"));
}

TEST_F(RunTestTest, RunTestWithANullSettingDoesTheSame)
{
    In(L"SystemElement", kAdapterB);
    In(L"Setting", nullptr);
    EXPECT_EQ(Call(L"RunTest", kSender), S_OK);
    EXPECT_EQ(m_manager.Calls, (Calls{L"LockTest 9@B", L"RunTest 9@B", L"UnlockTest 9@B"}));
}

TEST_F(RunTestTest, SettingOfTheSameTestOnAnotherAdapterCounts)
{
    AddTest(L"9@C", 9);
    In(L"SystemElement", kAdapterB);
    In(L"Setting", L"Tolva_DiagSetting.SettingID=\"9@C\"");
    EXPECT_EQ(Call(L"RunTest", kSender), S_OK);
    EXPECT_EQ(m_manager.Calls[1], L"RunTest with setting 9@B");
}

TEST_F(RunTestTest, SettingOfATestThatDiffersInCaseIsPassedOver)
{
    AddTest(L"F@B", 15);
    AddTest(L"f@B", 15);
    In(L"SystemElement", kAdapterB);
    In(L"Setting", L"Tolva_DiagSetting.SettingID=\"f@B\"");
    EXPECT_EQ(Call(L"RunTest", L"Tolva_DiagTest.Name=\"F@B\""), S_OK);
    EXPECT_EQ(m_manager.Calls, (Calls{L"LockTest F@B", L"RunTest F@B", L"UnlockTest F@B"}));
}

TEST_F(RunTestTest, UnreadableSystemElementEndsWithAnEmptyResultAndSuccess)
{
    const CTraceCapture trace;
    m_plan->Fail(CCallPlan::Call::Get, 1, E_OUTOFMEMORY);
    m_fixedIn = MakeCom<CFailingClassObject>(
        standin::MakeInstance(ServedSchema().GetDefinition(kServedNamespace, L"Tolva_DiagTest")), m_plan);
    EXPECT_EQ(Call(L"RunTest", kOrdinary), S_OK);
    EXPECT_EQ(trace.Count("CTolva_DiagTest::RunTest: GetProperty for SystemElement failed, hr = <8007000e>"),
              1u);
    EXPECT_EQ(Result(), L"");
    EXPECT_EQ(Read(m_out, L"ReturnValue").lVal, 0);
    EXPECT_TRUE(m_manager.Calls.empty());
}

TEST_F(RunTestTest, NoInParametersAtAllEndLikewise)
{
    const CTraceCapture trace;
    EXPECT_EQ(Call(L"RunTest", kOrdinary, true, false), S_OK);
    EXPECT_EQ(trace.Count("CTolva_DiagTest::RunTest: GetProperty for SystemElement failed, hr = <80004005>"),
              1u);
    EXPECT_EQ(Result(), L"");
}

// What RunTest refuses, and what it then leaves in its out-parameters.
struct RefusedRun
{
    const char* name;
    const wchar_t* path;
    const wchar_t* systemElement;
    const wchar_t* setting;
    bool cimKeyMode;
    HRESULT status;
    const char* line;
    bool emptyResult; // else the out-parameters stay unset
};

class RefusedRunTest : public RunTestTest, public testing::WithParamInterface<RefusedRun>
{
};

TEST_P(RefusedRunTest, RunsNothing)
{
    const RefusedRun& row = GetParam();
    In(L"SystemElement", row.systemElement);
    if (row.setting)
        In(L"Setting", row.setting);
    m_manager.Settings[L"none"].Key = CBstr(L"none");
    const CTraceCapture trace;
    EXPECT_EQ(Call(L"RunTest", row.path, row.cimKeyMode), row.status);
    const std::vector<std::string> lines = trace.Lines();
    EXPECT_EQ(std::count(lines.begin(), lines.end(), row.line), 1) << row.line;
    EXPECT_EQ(trace.Count("} <-- CTolva_DiagTest::RunTest"), 1u);
    EXPECT_TRUE(m_manager.Calls.empty());
    EXPECT_EQ(OutType(L"Result"), row.emptyResult ? VT_BSTR : VT_NULL);
    if (row.emptyResult)
    {
        EXPECT_EQ(Result(), L"");
    }
}

constexpr wchar_t kThreeKeys[] =
    L"Tolva_EthernetAdapter.DeviceID=\"B\",CreationClassName=\"C\",SystemName=\"N\"";

INSTANTIATE_TEST_SUITE_P(
    Runs, RefusedRunTest,
    testing::Values(
        RefusedRun{"NoName", L"Tolva_DiagTest.Caption=\"x\"", kAdapterB, nullptr, true, wmi::InvalidParameter,
                   "CTolva_DiagTest::RunTest: GetKeyRef for TestName failed", false},
        RefusedRun{"NameWithoutTest", L"Tolva_DiagTest.Name=\"9\"", kAdapterB, nullptr, true, wmi::Failed,
                   "CTolva_DiagTest::RunTest: Parsing for TestID from TestName failed", true},
        RefusedRun{"NullSystemElement", kSender, nullptr, nullptr, true, wmi::Failed,
                   "CTolva_DiagTest::RunTest: Parsing for SystemElement failed", false},
        RefusedRun{"UnparsableSystemElement", kSender, L"Tolva_EthernetAdapter.DeviceID=B", nullptr, true,
                   wmi::Failed, "CTolva_DiagTest::RunTest: Parsing for SystemElement failed", false},
        RefusedRun{"ThreeOfTheFullKeys", kSender, kThreeKeys, nullptr, false, wmi::InvalidParameter,
                   "CTolva_DiagTest::RunTest: Invalid SystemElement", false},
        RefusedRun{"ThreeKeysWithoutDeviceId", kSender,
                   L"Tolva_EthernetAdapter.Name=\"B\",CreationClassName=\"C\",SystemName=\"N\"", nullptr,
                   false, wmi::InvalidParameter, "CTolva_DiagTest::RunTest: Invalid SystemElement", false},
        RefusedRun{"FourKeysWithoutDeviceId", kSender,
                   L"Tolva_EthernetAdapter.Name=\"B\",CreationClassName=\"C\",SystemCreationClassName=\"S\","
                   L"SystemName=\"N\"",
                   nullptr, false, wmi::InvalidParameter,
                   "CTolva_DiagTest::RunTest: GetKeyRef for DeviceID failed", false},
        RefusedRun{"NoDeviceId", kSender, L"Tolva_EthernetAdapter.Name=\"B\"", nullptr, true,
                   wmi::InvalidParameter, "CTolva_DiagTest::RunTest: GetKeyRef for DeviceID failed", false},
        RefusedRun{"OtherAdapter", kSender, kAdapterA, nullptr, true, wmi::Failed,
                   "CTolva_DiagTest::RunTest: Invalid SystemElement.", false},
        RefusedRun{"AdapterInOtherCase", kSender, L"Tolva_EthernetAdapter.DeviceID=\"b\"", nullptr, true,
                   wmi::Failed, "CTolva_DiagTest::RunTest: Invalid SystemElement.", false},
        RefusedRun{"NumberAsSettingId", kSender, kAdapterB, L"Tolva_DiagSetting.SettingID=9", true,
                   wmi::Failed, "CTolva_DiagTest::RunTest: Invalid Setting object.", true},
        RefusedRun{"BrokenSetting", kSender, kAdapterB, L"Tolva_DiagSetting.SettingID=", true, wmi::Failed,
                   "CTolva_DiagTest::RunTest: Parsing for SettingID failed", false},
        RefusedRun{"EmptySetting", kSender, kAdapterB, L"", true, wmi::Failed,
                   "CTolva_DiagTest::RunTest: Parsing for SettingID failed", false},
        RefusedRun{"SettingWithoutId", kSender, kAdapterB, L"Tolva_DiagSetting.Name=\"9@B\"", true,
                   wmi::InvalidParameter, "CTolva_DiagTest::RunTest: GetKeyRef for SettingID failed", false},
        RefusedRun{"UnknownSetting", kSender, kAdapterB, L"Tolva_DiagSetting.SettingID=\"7@B\"", true,
                   wmi::Failed, "CTolva_DiagTest::RunTest: Invalid Setting object.", true},
        RefusedRun{"SettingWithoutTest", kSender, kAdapterB, L"Tolva_DiagSetting.SettingID=\"none\"", true,
                   wmi::Failed, "CTolva_DiagTest::RunTest: Parsing for TestID from SettingID failed", true}),
    [](const auto& info) { return info.param.name; });

TEST_F(RunTestTest, ReducedKeySetAcceptsThreeKeys)
{
    In(L"SystemElement", kThreeKeys);
    EXPECT_EQ(Call(L"RunTest", kSender), S_OK);
    EXPECT_EQ(m_manager.Calls.size(), 3u);
}

TEST_F(RunTestTest, FullKeySetAcceptsFourKeys)
{
    In(L"SystemElement", kAdapterBFull);
    EXPECT_EQ(Call(L"RunTest", kSender, false), S_OK);
    EXPECT_EQ(m_manager.Calls.size(), 3u);
}

TEST_F(RunTestTest, UnreadableSettingEndsWithAnEmptyResultAndSuccess)
{
    // The class has a SystemElement to read, but no Setting.
    auto definition = std::make_shared<standin::CClassDefinition>(L"__PARAMETERS");
    standin::CPropertyDefinition property;
    property.Name = L"SystemElement";
    definition->SetProperty(property);
    m_fixedIn = standin::MakeInstance(definition);
    CVariant adapter = CVariant::FromText(kAdapterA);
    m_fixedIn->Put(L"SystemElement", 0, &adapter, 0);
    const CTraceCapture trace;
    EXPECT_EQ(Call(L"RunTest", kOrdinary), S_OK);
    EXPECT_EQ(trace.Count("CTolva_DiagTest::RunTest: GetProperty for Setting failed hr = <80041002>"), 1u);
    EXPECT_EQ(Result(), L"");
    EXPECT_TRUE(m_manager.Calls.empty());
}

TEST_F(RunTestTest, TestThatCannotBeLocked)
{
    m_manager.Answers[L"LockTest"] = engine::NotFound;
    In(L"SystemElement", kAdapterA);
    const CTraceCapture trace;
    EXPECT_EQ(Call(L"RunTest", kOrdinary), engine::AlreadyLocked);
    EXPECT_EQ(trace.Count("CTolva_DiagTest::RunTest - Cannot lock Test"), 1u);
    EXPECT_EQ(m_manager.Calls, (Calls{L"LockTest 1@A"}));
    EXPECT_EQ(Result(), L"");
}

TEST_F(RunTestTest, FailedRunStillGivesItsResult)
{
    m_manager.Answers[L"RunTest"] = E_ACCESSDENIED;
    m_manager.ResultKey = L"1@AA";
    In(L"SystemElement", kAdapterA);
    // What the out-parameters hold when the test is unlocked: the empty result, which the reference replaces.
    std::wstring resultAtUnlock = L"none";
    VARTYPE valueAtUnlock = VT_EMPTY;
    m_manager.OnCall = [&](const std::wstring& call)
    {
        if (call != L"UnlockTest 1@A")
            return;
        resultAtUnlock = Result();
        valueAtUnlock = OutType(L"ReturnValue");
    };
    const CTraceCapture trace;
    EXPECT_EQ(Call(L"RunTest", kOrdinary), S_OK);
    EXPECT_EQ(resultAtUnlock, L"");
    EXPECT_EQ(valueAtUnlock, VT_I4);
    EXPECT_EQ(trace.Count("CTolva_DiagTest::RunTest: RunTest failed hr = <80070005>"), 1u);
    EXPECT_EQ(m_manager.Calls, (Calls{L"LockTest 1@A", L"RunTest 1@A", L"UnlockTest 1@A"}));
    EXPECT_EQ(Result(), ResultReference(L"1@AA", L"AA"));
}

TEST_F(RunTestTest, TestThatCannotBeUnlocked)
{
    m_manager.Answers[L"UnlockTest"] = engine::NotFound;
    In(L"SystemElement", kAdapterA);
    const CTraceCapture trace;
    EXPECT_EQ(Call(L"RunTest", kOrdinary), engine::NotLocked);
    EXPECT_EQ(trace.Count("CTolva_DiagTest::RunTest - Cannot unlock Test"), 1u);
    EXPECT_EQ(Result(), L"");
}

TEST_F(RunTestTest, ResultThatCannotBeReferredTo)
{
    m_manager.ResultKey = L"without adapter";
    In(L"SystemElement", kAdapterA);
    const CTraceCapture trace;
    EXPECT_EQ(Call(L"RunTest", kOrdinary), wmi::OutOfMemory);
    EXPECT_EQ(trace.Count("CTolva_DiagTest::RunTest: CreateResultReference failed"), 1u);
    EXPECT_EQ(Result(), L"");
}

TEST_F(RunTestTest, WhereverMemoryRunsOutTheTestIsUnlocked)
{
    In(L"SystemElement", kAdapterA);
    const CTraceCapture trace;
    bool happened = true;
    bool unbuilt = false;
    for (int n = 1; happened; ++n)
    {
        std::optional<CTextFault> fault;
        m_manager.OnCall = [&](const std::wstring& call)
        {
            if (call == L"LockTest 1@A")
                fault.emplace(n);
        };
        m_manager.Calls.clear();
        HRESULT hr = S_OK;
        try
        {
            hr = Call(L"RunTest", kOrdinary);
        }
        catch (const std::bad_alloc&)
        {
            hr = E_OUTOFMEMORY; // the provider's own barrier has a code for it
        }
        ASSERT_TRUE(fault) << n;
        happened = fault->Happened();
        fault.reset();
        EXPECT_EQ(m_manager.Calls.front(), L"LockTest 1@A") << n;
        EXPECT_EQ(m_manager.Calls.back(), L"UnlockTest 1@A") << n;
        if (hr == wmi::OutOfMemory)
        {
            unbuilt = true;
            EXPECT_EQ(Result(), L"") << n;
        }
    }
    EXPECT_TRUE(unbuilt);
    EXPECT_TRUE(trace.Has("CTolva_DiagTest::RunTest: CreateResultReference failed"));
    EXPECT_EQ(Result(), ResultReference(L"1@A", L"A"));
}

TEST_F(RunTestTest, OutParametersThatCannotBeSet)
{
    In(L"SystemElement", kAdapterA);
    const CTraceCapture trace;
    m_plan->Fail(CCallPlan::Call::Put, 1, wmi::TypeMismatch);
    EXPECT_EQ(Call(L"RunTest", kOrdinary), wmi::TypeMismatch);
    EXPECT_EQ(trace.Count("CTolva_DiagTest::SetOutParams: SetProperty (Result)failed hr = <80041005>"), 1u);
    EXPECT_EQ(OutType(L"ReturnValue"), VT_NULL);
    m_plan->Fail(CCallPlan::Call::Put, 2, wmi::TypeMismatch);
    EXPECT_EQ(Call(L"RunTest", kOrdinary), wmi::TypeMismatch);
    EXPECT_EQ(trace.Count("CTolva_DiagTest::SetOutParams: SetProperty (Return Value) failed hr = <80041005>"),
              1u);
    EXPECT_EQ(Result(), ResultReference(L"1@A", L"A"));
}
} // namespace
