#include "CDM/src/classes/DiagTest.h"
#include "Common/src/com/Owned.h"
#include "tests/unit/classes/HandlerTest.h"

namespace
{
using Calls = std::vector<std::wstring>;

constexpr wchar_t kAdapterA[] = L"Tolva_EthernetAdapter.DeviceID=\"A\"";
constexpr wchar_t kAdapterB[] = L"Tolva_EthernetAdapter.DeviceID=\"B\"";
constexpr wchar_t kAdapterBFull[] = L"Tolva_EthernetAdapter.DeviceID=\"B\",CreationClassName=\"C\","
                                    L"SystemCreationClassName=\"S\",SystemName=\"N\"";
constexpr wchar_t kOrdinary[] = L"Tolva_DiagTest.Name=\"1@A\"";
constexpr wchar_t kSender[] = L"Tolva_DiagTest.Name=\"9@B\"";

class DiagTestMethodsTest : public HandlerTest
{
  protected:
    DiagTestMethodsTest() { m_manager.Tests[L"9@B"].Event = m_event.Get(); }

    // The parameters of the next call; a null text is a null value.
    void In(const wchar_t* name, const wchar_t* value)
    {
        CVariant given = value ? CVariant::FromText(value) : CVariant::Null();
        m_in.insert_or_assign(name, std::move(given));
    }
    HRESULT Call(const wchar_t* method, const wchar_t* path, bool cimKeyMode = true, bool withIn = true)
    {
        // What the method is in the schema, so that its name may be given in any letter case.
        CWomContext& context = Context(cimKeyMode);
        const ComPtr<IWbemClassObject> definition = MakeCom<CFailingClassObject>(
            ServedSchema().GetClass(kServedNamespace, L"Tolva_DiagTest"), m_plan);
        ComPtr<IWbemClassObject> in, out;
        const HRESULT known = definition->GetMethod(method, 0, nullptr, out.Put());
        CWomClassObject inParams(&context), outParams(&context);
        inParams.SetThrowing(false);
        outParams.SetThrowing(false);
        if (known == S_OK)
        {
            ComPtr<IWbemClassObject> signature;
            definition->GetMethod(method, 0, signature.Put(), nullptr);
            EXPECT_EQ(signature->SpawnInstance(0, in.Put()), S_OK);
            for (auto& [name, value] : m_in)
                EXPECT_EQ(in->Put(name.c_str(), 0, &value, 0), S_OK);
            m_out.Reset();
            EXPECT_EQ(out->SpawnInstance(0, m_out.Put()), S_OK);
            outParams.Wrap(m_out.Get());
            if (withIn)
                inParams.Wrap(m_fixedIn ? m_fixedIn.Get() : in.Get());
        }
        return Prepared(m_handler).ExecMethodAsync(Path(path), method, context, inParams, outParams, m_sink);
    }
    std::wstring Result() { return ReadText(m_out, L"Result"); }
    // What a reader of the out-parameters sees: VT_NULL for one that was not set.
    VARTYPE OutType(const wchar_t* name) { return Read(m_out, name).vt; }

    CHandle m_event{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    std::map<std::wstring, CVariant> m_in;
    ComPtr<IWbemClassObject> m_fixedIn; // instead of the method's own in-parameters
    ComPtr<IWbemClassObject> m_out;
    CTolva_DiagTest m_handler;
};

std::wstring ResultReference(const wchar_t* key, const wchar_t* adapter)
{
    return std::wstring(
               L"Tolva_DiagResult.DiagnosticCreationClassName=\"Tolva_DiagTest\",DiagnosticName=\"") +
           key + L"\",ExecutionID=\"" + adapter +
           L"\",DiagSystemCreationClassName=\"Win32_ComputerSystem\",DiagSystemName=\"" + ComputerName() +
           L"\"";
}

// RunTest

TEST_F(DiagTestMethodsTest, RunTestLocksRunsAndUnlocks)
{
    In(L"SystemElement", kAdapterA);
    EXPECT_EQ(Call(L"RunTest", kOrdinary), S_OK);
    EXPECT_EQ(m_manager.Calls, (Calls{L"LockTest 1@A", L"RunTest 1@A", L"UnlockTest 1@A"}));
    EXPECT_EQ(Result(), ResultReference(L"1@A", L"A"));
    EXPECT_EQ(Read(m_out, L"ReturnValue").lVal, 0);
    EXPECT_TRUE(m_sink->Indications().empty()) << "the provider sends the out-parameters";
}

TEST_F(DiagTestMethodsTest, MethodNamesHaveNoLetterCase)
{
    In(L"SystemElement", kAdapterA);
    EXPECT_EQ(Call(L"runtest", kOrdinary), S_OK);
    EXPECT_EQ(Call(L"CLEARRESULTS", kOrdinary), S_OK);
    EXPECT_EQ(Call(L"discontinueTest", kOrdinary), S_OK);
    EXPECT_EQ(m_manager.Calls, (Calls{L"LockTest 1@A", L"RunTest 1@A", L"UnlockTest 1@A", L"ClearResults 1@A",
                                      L"StopTest 1@A"}));
}

TEST_F(DiagTestMethodsTest, UnknownMethodsFail)
{
    const CTraceCapture trace;
    EXPECT_EQ(Call(L"Reboot", kOrdinary), E_FAIL);
    EXPECT_EQ(Call(L"", kOrdinary), E_FAIL);
    EXPECT_EQ(Call(nullptr, kOrdinary), E_FAIL);
    EXPECT_EQ(trace.Count("} <-- CTolva_DiagTest::ExecMethodAsync"), 3u);
    EXPECT_TRUE(m_manager.Calls.empty());
}

TEST_F(DiagTestMethodsTest, FailedMethodsAreTraced)
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

TEST_F(DiagTestMethodsTest, RunTestWithTheTestsOwnSetting)
{
    In(L"SystemElement", kAdapterB);
    In(L"Setting", L"Tolva_DiagSetting.SettingID=\"9@B\"");
    EXPECT_EQ(Call(L"RunTest", kSender), S_OK);
    EXPECT_EQ(m_manager.Calls, (Calls{L"LockTest 9@B", L"RunTest with setting 9@B", L"UnlockTest 9@B"}));
}

TEST_F(DiagTestMethodsTest, RunTestWithTheSettingOfAnotherTestPassesItOver)
{
    In(L"SystemElement", kAdapterB);
    In(L"Setting", L"Tolva_DiagSetting.SettingID=\"1@A\"");
    EXPECT_EQ(Call(L"RunTest", kSender), S_OK);
    EXPECT_EQ(m_manager.Calls, (Calls{L"LockTest 9@B", L"RunTest 9@B", L"UnlockTest 9@B"}));
    EXPECT_EQ(Result(), ResultReference(L"9@B", L"B"));
}

TEST_F(DiagTestMethodsTest, RunTestWithANullSettingDoesTheSame)
{
    In(L"SystemElement", kAdapterB);
    In(L"Setting", nullptr);
    EXPECT_EQ(Call(L"RunTest", kSender), S_OK);
    EXPECT_EQ(m_manager.Calls, (Calls{L"LockTest 9@B", L"RunTest 9@B", L"UnlockTest 9@B"}));
}

TEST_F(DiagTestMethodsTest, SettingOfTheSameTestOnAnotherAdapterCounts)
{
    AddTest(L"9@C", 9);
    In(L"SystemElement", kAdapterB);
    In(L"Setting", L"Tolva_DiagSetting.SettingID=\"9@C\"");
    EXPECT_EQ(Call(L"RunTest", kSender), S_OK);
    EXPECT_EQ(m_manager.Calls[1], L"RunTest with setting 9@B");
}

TEST_F(DiagTestMethodsTest, UnreadableSystemElementEndsWithAnEmptyResultAndSuccess)
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

TEST_F(DiagTestMethodsTest, NoInParametersAtAllEndLikewise)
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

class RefusedRunTest : public DiagTestMethodsTest, public testing::WithParamInterface<RefusedRun>
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

TEST_F(DiagTestMethodsTest, ReducedKeySetAcceptsThreeKeys)
{
    In(L"SystemElement", kThreeKeys);
    EXPECT_EQ(Call(L"RunTest", kSender), S_OK);
    EXPECT_EQ(m_manager.Calls.size(), 3u);
}

TEST_F(DiagTestMethodsTest, FullKeySetAcceptsFourKeys)
{
    In(L"SystemElement", kAdapterBFull);
    EXPECT_EQ(Call(L"RunTest", kSender, false), S_OK);
    EXPECT_EQ(m_manager.Calls.size(), 3u);
}

TEST_F(DiagTestMethodsTest, UnreadableSettingEndsWithAnEmptyResultAndSuccess)
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

TEST_F(DiagTestMethodsTest, TestThatCannotBeLocked)
{
    m_manager.Answers[L"LockTest"] = engine::NotFound;
    In(L"SystemElement", kAdapterA);
    const CTraceCapture trace;
    EXPECT_EQ(Call(L"RunTest", kOrdinary), engine::AlreadyLocked);
    EXPECT_EQ(trace.Count("CTolva_DiagTest::RunTest - Cannot lock Test"), 1u);
    EXPECT_EQ(m_manager.Calls, (Calls{L"LockTest 1@A"}));
    EXPECT_EQ(Result(), L"");
}

TEST_F(DiagTestMethodsTest, FailedRunStillGivesItsResult)
{
    m_manager.Answers[L"RunTest"] = E_ACCESSDENIED;
    m_manager.ResultKey = L"1@AA";
    In(L"SystemElement", kAdapterA);
    const CTraceCapture trace;
    EXPECT_EQ(Call(L"RunTest", kOrdinary), S_OK);
    EXPECT_EQ(trace.Count("CTolva_DiagTest::RunTest: RunTest failed hr = <80070005>"), 1u);
    EXPECT_EQ(m_manager.Calls, (Calls{L"LockTest 1@A", L"RunTest 1@A", L"UnlockTest 1@A"}));
    EXPECT_EQ(Result(), ResultReference(L"1@AA", L"AA"));
}

TEST_F(DiagTestMethodsTest, TestThatCannotBeUnlocked)
{
    m_manager.Answers[L"UnlockTest"] = engine::NotFound;
    In(L"SystemElement", kAdapterA);
    const CTraceCapture trace;
    EXPECT_EQ(Call(L"RunTest", kOrdinary), engine::NotLocked);
    EXPECT_EQ(trace.Count("CTolva_DiagTest::RunTest - Cannot unlock Test"), 1u);
    EXPECT_EQ(Result(), L"");
}

TEST_F(DiagTestMethodsTest, ResultThatCannotBeReferredTo)
{
    m_manager.ResultKey = L"without adapter";
    In(L"SystemElement", kAdapterA);
    const CTraceCapture trace;
    EXPECT_EQ(Call(L"RunTest", kOrdinary), wmi::OutOfMemory);
    EXPECT_EQ(trace.Count("CTolva_DiagTest::RunTest: CreateResultReference failed"), 1u);
    EXPECT_EQ(Result(), L"");
}

TEST_F(DiagTestMethodsTest, OutParametersThatCannotBeSet)
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

// DiscontinueTest

TEST_F(DiagTestMethodsTest, TestWithoutEventIsStoppedWhateverTheParameters)
{
    EXPECT_EQ(Call(L"DiscontinueTest", kOrdinary, false, false), S_OK);
    EXPECT_EQ(m_manager.Calls, (Calls{L"StopTest 1@A"}));
    EXPECT_EQ(Read(m_out, L"TestingStopped").boolVal, VARIANT_TRUE);
    EXPECT_EQ(Read(m_out, L"ReturnValue").lVal, 0);
}

TEST_F(DiagTestMethodsTest, StopThatFailsPassesThrough)
{
    m_manager.Answers[L"StopTest"] = engine::Stopped;
    const CTraceCapture trace;
    EXPECT_EQ(Call(L"DiscontinueTest", kOrdinary), engine::Stopped);
    EXPECT_EQ(trace.Count("CTolva_DiagTest::DiscontinueTest: StopTest failed hr = <80042002>"), 1u);
    EXPECT_EQ(OutType(L"TestingStopped"), VT_NULL);
}

TEST_F(DiagTestMethodsTest, StoppedTestWhoseOutParametersCannotBeSet)
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

TEST_F(DiagTestMethodsTest, UnknownTestIsNotStopped)
{
    const CTraceCapture trace;
    EXPECT_EQ(Call(L"DiscontinueTest", L"Tolva_DiagTest.Name=\"7@A\""), engine::NotFound);
    EXPECT_EQ(trace.Count("CTolva_DiagTest::DiscontinueTest: GetTestData failed, hr = <80042005>"), 1u);
    EXPECT_TRUE(m_manager.Calls.empty());
}

TEST_F(DiagTestMethodsTest, RunningTestWithEventIsSignalled)
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

TEST_F(DiagTestMethodsTest, SignalThatFailsIsOnlyTraced)
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

TEST_F(DiagTestMethodsTest, SignalledTestWhoseOutParametersCannotBeSetSucceeds)
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

class RefusedStopTest : public DiagTestMethodsTest, public testing::WithParamInterface<RefusedStop>
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

TEST_F(DiagTestMethodsTest, UnreadableParametersOfDiscontinueTestPassThrough)
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

// ClearResults

TEST_F(DiagTestMethodsTest, ClearResultsSetsNoResult)
{
    In(L"SystemElement", kAdapterA);
    EXPECT_EQ(Call(L"ClearResults", kOrdinary), S_OK);
    EXPECT_EQ(m_manager.Calls, (Calls{L"ClearResults 1@A"}));
    EXPECT_EQ(Read(m_out, L"ReturnValue").lVal, 0);
    CVariant value;
    EXPECT_EQ(m_out->Get(L"Result", 0, value.Put(), nullptr, nullptr), wmi::NotFound);
}

TEST_F(DiagTestMethodsTest, FailedClearingStillSetsTheReturnValue)
{
    m_manager.Answers[L"ClearResults"] = engine::ClearWhileRunning;
    In(L"SystemElement", kAdapterA);
    const CTraceCapture trace;
    EXPECT_EQ(Call(L"ClearResults", kOrdinary), engine::ClearWhileRunning);
    EXPECT_EQ(trace.Count("CTolva_DiagTest::ClearResults: ClearResults failed, hr = <80042003>"), 1u);
    EXPECT_EQ(Read(m_out, L"ReturnValue").lVal, 0);
}

TEST_F(DiagTestMethodsTest, ReturnValueThatCannotBeSetChangesNothing)
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

class RefusedClearingTest : public DiagTestMethodsTest, public testing::WithParamInterface<RefusedClearing>
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
                    RefusedClearing{"OtherAdapter", kOrdinary, kAdapterB, true, wmi::Failed,
                                    "CTolva_DiagTest::ClearResults: Parsing for DeviceID failed"}),
    [](const auto& info) { return info.param.name; });

TEST_F(DiagTestMethodsTest, UnreadableSystemElementOfClearResultsPassesThrough)
{
    const CTraceCapture trace;
    EXPECT_EQ(Call(L"ClearResults", kOrdinary, true, false), E_FAIL);
    EXPECT_EQ(
        trace.Count("CTolva_DiagTest::ClearResults: GetProperty for SystemElement failed, hr = <80004005>"),
        1u);
    EXPECT_TRUE(m_manager.Calls.empty());
}
} // namespace
