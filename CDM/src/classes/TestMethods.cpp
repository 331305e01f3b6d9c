#include "CDM/src/ZebTrace.h"
#include "CDM/src/classes/TestHandler.h"
#include "CDM/src/engine/DiagMgr.h"
#include "CDM/src/engine/EngineStatus.h"
#include "CDM/src/engine/naming/DiagKeys.h"
#include "CDM/src/engine/naming/InstancePath.h"
#include "Common/src/com/Text.h"
#include "Common/src/com/WmiStatus.h"

#include <utility>

namespace
{
// Success and failure reach the caller through the call's status alone.
constexpr long kReturnValue = 0;

// The trace lines of one method about its parameter "SystemElement".
struct CAdapterReferenceTexts
{
    const char* parseFailed;
    const char* tooFewKeys;
    const char* noDeviceId;
    const char* otherAdapter;
};

// The second and the fourth text differ by the full stop alone.
constexpr CAdapterReferenceTexts kRunTestAdapter = {
    "CTolva_DiagTest::RunTest: Parsing for SystemElement failed",
    "CTolva_DiagTest::RunTest: Invalid SystemElement",
    "CTolva_DiagTest::RunTest: GetKeyRef for DeviceID failed",
    "CTolva_DiagTest::RunTest: Invalid SystemElement.", // sic
};
constexpr CAdapterReferenceTexts kDiscontinueTestAdapter = {
    "CTolva_DiagTest::DiscontinueTest: Parsing for SystemElement failed",
    "CTolva_DiagTest::DiscontinueTest: Invalid SystemElement",
    "CTolva_DiagTest::DiscontinueTest: GetKeyRef for DeviceID failed",
    "CTolva_DiagTest::DiscontinueTest: Invalid SystemElement.", // sic
};
constexpr CAdapterReferenceTexts kClearResultsAdapter = {
    "CTolva_DiagTest::ClearResults: Parsing for SystemElement failed",
    "CTolva_DiagTest::ClearResults: Invalid SystemElement",
    "CTolva_DiagTest::ClearResults: GetKeyRef for DeviceID failed",
    "CTolva_DiagTest::ClearResults: Parsing for DeviceID failed", // sic
};

// How many keys a reference to an adapter carries under the full CIM key set.
constexpr size_t kFullKeySet = 4;

// Does "SystemElement" name the adapter of the test that the method was invoked on? S_OK; WBEM_E_FAILED for a
// reference that cannot be parsed or names another adapter (letter case counts); WBEM_E_INVALID_PARAMETER for
// one that lacks keys. Every failure has been traced.
HRESULT CheckAdapterReference(const CAdapterReferenceTexts& texts, const CBstr& systemElement,
                              const CBstr& testName, bool cimKeyMode)
{
    CParsedObjectPath reference;
    if (Failed(ParseObjectPath(systemElement.Text(), reference), texts.parseFailed))
        return wmi::Failed;
    if (!cimKeyMode && reference.Keys.size() < kFullKeySet)
        return TraceFailure(wmi::InvalidParameter, texts.tooFewKeys);
    const CBstr deviceId = ReadKey(reference, L"DeviceID", KeyForm::NamedOrSingle);
    if (!deviceId)
        return TraceFailure(wmi::InvalidParameter, texts.noDeviceId);
    const CBstr adapterKey = ParseForAdapterKey(testName.View());
    if (!adapterKey || adapterKey.View() != deviceId.View())
        return TraceFailure(wmi::Failed, texts.otherAdapter);
    return S_OK;
}

HRESULT SetReturnValue(CWomClassObject& out)
{
    const HRESULT hr = out.SetProperty(L"ReturnValue", kReturnValue);
    Failed(hr, "CTolva_DiagTest::SetOutParams: SetProperty (Return Value) failed hr = <%x>");
    return hr;
}

HRESULT SetTestingStopped(CWomClassObject& out)
{
    const HRESULT hr = out.SetPropertyBool(L"TestingStopped", TRUE);
    Failed(hr, "CTolva_DiagTest::SetOutParams: SetProperty (TestingStopped) failed hr = <%x>");
    return hr;
}

HRESULT SetOutParams(CWomClassObject& out, const wchar_t* resultReference)
{
    const HRESULT hr = out.SetProperty(L"Result", resultReference);
    if (Failed(hr, "CTolva_DiagTest::SetOutParams: SetProperty (Result)failed hr = <%x>")) // sic
        return hr;
    return SetReturnValue(out);
}

// Most failures of RunTest hand an empty result to the caller and return their own status. For a parameter
// that cannot be read, clients get success and the empty result.
HRESULT WithEmptyResult(CWomClassObject& out, HRESULT status)
{
    (void)SetOutParams(out, L"");
    return status;
}

HRESULT WithEmptyResult(CWomClassObject& out, HRESULT status, const char* traceLine)
{
    return WithEmptyResult(out, TraceFailure(status, traceLine));
}

CBstr ReadTestName(const CParsedObjectPath& path)
{
    return ReadKey(path, L"Name", KeyForm::NamedOrSingle);
}

// Whether a setting that the caller gave belongs to the test. S_OK with the answer in `ofThisTest`.
HRESULT CheckSetting(CDiagMgr& manager, const CBstr& setting, const CBstr& testId, CWomClassObject& out,
                     bool& ofThisTest)
{
    CParsedObjectPath reference;
    if (Failed(ParseObjectPath(setting.Text(), reference),
               "CTolva_DiagTest::RunTest: Parsing for SettingID failed"))
        return wmi::Failed;
    const CBstr settingId = ReadKey(reference, L"SettingID", KeyForm::NamedOrSingle);
    if (!settingId)
        return TraceFailure(wmi::InvalidParameter,
                            "CTolva_DiagTest::RunTest: GetKeyRef for SettingID failed");
    if (!manager.SettingExists(settingId.Get()))
        return WithEmptyResult(out, wmi::Failed, "CTolva_DiagTest::RunTest: Invalid Setting object.");
    const CBstr settingTestId = ParseForTestName(settingId.View());
    if (!settingTestId)
        return WithEmptyResult(out, wmi::Failed,
                               "CTolva_DiagTest::RunTest: Parsing for TestID from SettingID failed");
    ofThisTest = settingTestId.View() == testId.View();
    return S_OK;
}

// The lock of a test, given up on every way out.
class CTestLock
{
  public:
    CTestLock(CDiagMgr& manager, const CBstr& testName)
        : m_manager(manager), m_testName(testName), m_held(manager.LockTest(testName.Get()) == S_OK)
    {
    }
    ~CTestLock() { Unlock(); }
    CTestLock(const CTestLock&) = delete;
    CTestLock& operator=(const CTestLock&) = delete;

    bool Held() const noexcept { return m_held; }
    // False if the manager refuses; it is asked once.
    bool Unlock() { return std::exchange(m_held, false) && m_manager.UnlockTest(m_testName.Get()) == S_OK; }

  private:
    CDiagMgr& m_manager;
    const CBstr& m_testName;
    bool m_held;
};

// Locks the test, runs it and unlocks it. A failed run does not fail the method: its result says so.
HRESULT RunLocked(CDiagMgr& manager, const CBstr& givenName, bool useGivenSetting, CWomClassObject& out)
{
    // As the manager files it, so that unlocking needs no memory.
    const CBstr testName = FoldedKey(givenName.Get());
    CTestLock lock(manager, testName);
    if (!lock.Held())
        return WithEmptyResult(out, engine::AlreadyLocked, "CTolva_DiagTest::RunTest - Cannot lock Test");
    CBstr resultId = testName;
    const HRESULT hr = manager.RunTest(testName.Get(), resultId, useGivenSetting);
    if (Failed(hr, "CTolva_DiagTest::RunTest: RunTest failed hr = <%x>"))
        (void)SetOutParams(out, L"");
    if (!lock.Unlock())
        return WithEmptyResult(out, engine::NotLocked, "CTolva_DiagTest::RunTest - Cannot unlock Test");
    const CBstr reference = TryMakeText([&] { return CreateResultReference(resultId.View()); });
    if (!reference)
        return WithEmptyResult(out, wmi::OutOfMemory,
                               "CTolva_DiagTest::RunTest: CreateResultReference failed");
    return SetOutParams(out, reference.Text());
}
} // namespace

HRESULT CTolva_DiagTest::ExecMethodAsync(const CParsedObjectPath& path, const wchar_t* method,
                                         CWomContext& context, CWomClassObject& in, CWomClassObject& out,
                                         ComPtr<IWbemObjectSink>)
{
    using Method = HRESULT (CTolva_DiagTest::*)(CWomContext&, const CParsedObjectPath&, CWomClassObject&,
                                                CWomClassObject&);
    struct Row
    {
        const wchar_t* name;
        Method run;
        const char* failure;
    };
    static constexpr Row kMethods[] = {
        {L"RunTest", &CTolva_DiagTest::RunTest, "CTolva_DiagTest::ExecMethodAsync:RunTest failed hr = <%x>"},
        {L"DiscontinueTest", &CTolva_DiagTest::DiscontinueTest,
         "CTolva_DiagTest::ExecMethodAsync:DiscontinueTest failed, hr = <%x>"},
        {L"ClearResults", &CTolva_DiagTest::ClearResults,
         "CTolva_DiagTest::ExecMethodAsync:ClearResults failed, hr = <%x>"},
    };

    const CZebTrace trace("CTolva_DiagTest::ExecMethodAsync");
    HRESULT hr = E_FAIL;
    for (const Row& row : kMethods)
    {
        if (!method || !EqualNoCaseAscii(method, row.name))
            continue;
        hr = (this->*row.run)(context, path, in, out);
        Failed(hr, row.failure);
    }
    return hr;
}

HRESULT CTolva_DiagTest::RunTest(CWomContext& context, const CParsedObjectPath& path, CWomClassObject& in,
                                 CWomClassObject& out)
{
    const CZebTrace trace("CTolva_DiagTest::RunTest");
    CBstr systemElement;
    HRESULT hr = in.GetProperty(L"SystemElement", systemElement);
    if (Failed(hr, "CTolva_DiagTest::RunTest: GetProperty for SystemElement failed, hr = <%x>"))
        return SetOutParams(out, L"");
    const CBstr testName = ReadTestName(path);
    if (!testName)
        return TraceFailure(wmi::InvalidParameter, "CTolva_DiagTest::RunTest: GetKeyRef for TestName failed");
    const CBstr testId = ParseForTestName(testName.View());
    if (!testId)
        return WithEmptyResult(out, wmi::Failed,
                               "CTolva_DiagTest::RunTest: Parsing for TestID from TestName failed");
    hr = CheckAdapterReference(kRunTestAdapter, systemElement, testName, context.CimKeyMode());
    if (FAILED(hr))
        return hr;

    CBstr setting;
    bool noSetting = false;
    hr = in.GetProperty(L"Setting", setting, &noSetting);
    if (Failed(hr, "CTolva_DiagTest::RunTest: GetProperty for Setting failed hr = <%x>"))
        return SetOutParams(out, L"");
    // The setting of another test is passed over: the test then runs as without one.
    bool useGivenSetting = false;
    if (!noSetting)
    {
        hr = CheckSetting(DiagMgr(), setting, testId, out, useGivenSetting);
        if (FAILED(hr))
            return hr;
    }
    return RunLocked(DiagMgr(), testName, useGivenSetting, out);
}

HRESULT CTolva_DiagTest::DiscontinueTest(CWomContext& context, const CParsedObjectPath& path,
                                         CWomClassObject& in, CWomClassObject& out)
{
    const CZebTrace trace("CTolva_DiagTest::DiscontinueTest");
    const CBstr testName = ReadTestName(path);
    if (!testName)
        return TraceFailure(wmi::InvalidParameter,
                            "CTolva_DiagTest::DiscontinueTest: GetKeyRef for TestName failed");
    CTestData test;
    HRESULT hr = DiagMgr().GetTestData(testName.Get(), &test);
    if (Failed(hr, "CTolva_DiagTest::DiscontinueTest: GetTestData failed, hr = <%x>"))
        return hr;
    if (!test.Event)
    {
        // The agent is asked, whatever the parameters say.
        hr = DiagMgr().StopTest(testName.Get());
        if (Failed(hr, "CTolva_DiagTest::DiscontinueTest: StopTest failed hr = <%x>"))
            return WithEmptyResult(out, hr);
        hr = SetTestingStopped(out);
        return FAILED(hr) ? hr : SetReturnValue(out);
    }

    CBstr systemElement;
    hr = in.GetProperty(L"SystemElement", systemElement);
    if (Failed(hr, "CTolva_DiagTest::DiscontinueTest: GetProperty for SystemElement failed, hr = <%x>"))
        return hr;
    hr = CheckAdapterReference(kDiscontinueTestAdapter, systemElement, testName, context.CimKeyMode());
    if (FAILED(hr))
        return hr;

    CBstr result;
    bool noResult = false;
    hr = in.GetProperty(L"Result", result, &noResult);
    if (Failed(hr, "CTolva_DiagTest::DiscontinueTest: GetProperty for Result failed hr = <%x>"))
        return hr;
    if (!noResult)
    {
        CParsedObjectPath reference;
        if (Failed(ParseObjectPath(result.Text(), reference),
                   "CTolva_DiagTest::DiscontinueTest: Parsing for Result failed"))
            return wmi::Failed;
        const CBstr resultId = ReadKey(reference, L"DiagnosticName", KeyForm::Named);
        if (!DiagMgr().ResultExists(resultId.Get()))
            return TraceFailure(wmi::Failed, "CTolva_DiagTest::DiscontinueTest: Invalid Result object.");
    }
    // The manager checks whether the test runs and signals it in one step: since the record was read, that
    // run may have ended and another begun.
    hr = DiagMgr().SignalStop(test.Key.Get());
    if (hr == engine::Stopped)
        return TraceFailure(wmi::Failed,
                            "CTolva_DiagTest::DiscontinueTest: Cannot stop a test which is not running.");
    Failed(hr, "CTolva_DiagTest::DiscontinueTest:SetEvent failed");
    (void)SetTestingStopped(out);
    (void)SetReturnValue(out);
    return S_OK;
}

HRESULT CTolva_DiagTest::ClearResults(CWomContext& context, const CParsedObjectPath& path,
                                      CWomClassObject& in, CWomClassObject& out)
{
    const CZebTrace trace("CTolva_DiagTest::ClearResults");
    CBstr systemElement;
    HRESULT hr = in.GetProperty(L"SystemElement", systemElement);
    if (Failed(hr, "CTolva_DiagTest::ClearResults: GetProperty for SystemElement failed, hr = <%x>"))
        return hr;
    const CBstr testName = ReadTestName(path);
    if (!testName)
        return TraceFailure(wmi::InvalidParameter,
                            "CTolva_DiagTest::ClearResults: GetKeyRef for TestName failed");
    hr = CheckAdapterReference(kClearResultsAdapter, systemElement, testName, context.CimKeyMode());
    if (FAILED(hr))
        return hr;
    hr = DiagMgr().ClearResults(testName.Get());
    Failed(hr, "CTolva_DiagTest::ClearResults: ClearResults failed, hr = <%x>");
    (void)SetReturnValue(out);
    return hr;
}
