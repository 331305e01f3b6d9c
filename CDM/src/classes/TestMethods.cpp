#include "CDM/src/ZebDebug.h"
#include "CDM/src/ZebTrace.h"
#include "CDM/src/classes/AdapterReference.h"
#include "CDM/src/classes/ReadKey.h"
#include "CDM/src/classes/TestHandler.h"
#include "CDM/src/engine/DiagMgr.h"
#include "CDM/src/engine/EngineBoundary.h"
#include "CDM/src/engine/EngineStatus.h"
#include "CDM/src/engine/naming/DiagKeys.h"
#include "CDM/src/engine/naming/References.h"
#include "Common/src/com/Text.h"
#include "Common/src/com/WmiStatus.h"

#include <utility>

namespace
{
// Success and failure reach the caller through the call's status alone.
constexpr long kReturnValue = 0;

// The second and the fourth text differ by the full stop alone; support tells them apart by it.
constexpr CAdapterReferenceTexts kRunTestAdapter = {
    "CTolva_DiagTest::RunTest: Parsing for SystemElement failed",
    "CTolva_DiagTest::RunTest: Invalid SystemElement",
    "CTolva_DiagTest::RunTest: GetKeyRef for DeviceID failed",
    "CTolva_DiagTest::RunTest: Invalid SystemElement.",
};
constexpr CAdapterReferenceTexts kDiscontinueTestAdapter = {
    "CTolva_DiagTest::DiscontinueTest: Parsing for SystemElement failed",
    "CTolva_DiagTest::DiscontinueTest: Invalid SystemElement",
    "CTolva_DiagTest::DiscontinueTest: GetKeyRef for DeviceID failed",
    "CTolva_DiagTest::DiscontinueTest: Invalid SystemElement.",
};
// The last one speaks of parsing where the adapter is another; support knows the text as it is.
constexpr CAdapterReferenceTexts kClearResultsAdapter = {
    "CTolva_DiagTest::ClearResults: Parsing for SystemElement failed",
    "CTolva_DiagTest::ClearResults: Invalid SystemElement",
    "CTolva_DiagTest::ClearResults: GetKeyRef for DeviceID failed",
    "CTolva_DiagTest::ClearResults: Parsing for DeviceID failed",
};

HRESULT SetReturnValue(CWomClassObject& out)
{
    const HRESULT hr = out.SetProperty(L"ReturnValue", kReturnValue);
    if (FAILED(hr))
        ZebDebug().Write("CTolva_DiagTest::SetOutParams: SetProperty (Return Value) failed hr = <%x>", hr);
    return hr;
}

HRESULT SetTestingStopped(CWomClassObject& out)
{
    const HRESULT hr = out.SetPropertyBool(L"TestingStopped", TRUE);
    if (FAILED(hr))
        ZebDebug().Write("CTolva_DiagTest::SetOutParams: SetProperty (TestingStopped) failed hr = <%x>", hr);
    return hr;
}

HRESULT SetOutParams(CWomClassObject& out, const wchar_t* resultReference)
{
    const HRESULT hr = out.SetProperty(L"Result", resultReference);
    if (FAILED(hr))
    {
        // Without a blank before "failed": support knows it so.
        ZebDebug().Write("CTolva_DiagTest::SetOutParams: SetProperty (Result)failed hr = <%x>", hr);
        return hr;
    }
    return SetReturnValue(out);
}

// Most failures of RunTest hand an empty result to the caller and return their own status. A parameter that
// cannot be read is none of them: clients get success and the empty result.
HRESULT WithEmptyResult(CWomClassObject& out, HRESULT status)
{
    (void)SetOutParams(out, L"");
    return status;
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
    if (FAILED(ParseObjectPath(setting.Text(), reference)))
    {
        ZebDebug().Write("CTolva_DiagTest::RunTest: Parsing for SettingID failed");
        return wmi::Failed;
    }
    const CBstr settingId = ReadKey(reference, L"SettingID", KeyForm::NamedOrSingle);
    if (!settingId)
    {
        ZebDebug().Write("CTolva_DiagTest::RunTest: GetKeyRef for SettingID failed");
        return wmi::InvalidParameter;
    }
    if (!manager.SettingExists(settingId.Get()))
    {
        ZebDebug().Write("CTolva_DiagTest::RunTest: Invalid Setting object.");
        return WithEmptyResult(out, wmi::Failed);
    }
    const CBstr settingTestId = ParseForTestName(settingId.View());
    if (!settingTestId)
    {
        ZebDebug().Write("CTolva_DiagTest::RunTest: Parsing for TestID from SettingID failed");
        return WithEmptyResult(out, wmi::Failed);
    }
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
    // False where the manager refuses; it is asked once.
    bool Unlock() { return std::exchange(m_held, false) && m_manager.UnlockTest(m_testName.Get()) == S_OK; }

  private:
    CDiagMgr& m_manager;
    const CBstr& m_testName;
    bool m_held;
};

// Locks the test, runs it and unlocks it. A run that fails is no failure of the method: its result tells.
HRESULT RunLocked(CDiagMgr& manager, const CBstr& givenName, bool useGivenSetting, CWomClassObject& out)
{
    // As the manager files it, so that unlocking needs no memory.
    const CBstr testName = FoldedKey(givenName.Get());
    CTestLock lock(manager, testName);
    if (!lock.Held())
    {
        ZebDebug().Write("CTolva_DiagTest::RunTest - Cannot lock Test");
        return WithEmptyResult(out, engine::AlreadyLocked);
    }
    CBstr resultId = testName;
    const HRESULT hr = manager.RunTest(testName.Get(), resultId, useGivenSetting);
    if (FAILED(hr))
    {
        ZebDebug().Write("CTolva_DiagTest::RunTest: RunTest failed hr = <%x>", hr);
        (void)SetOutParams(out, L"");
    }
    if (!lock.Unlock())
    {
        ZebDebug().Write("CTolva_DiagTest::RunTest - Cannot unlock Test");
        return WithEmptyResult(out, engine::NotLocked);
    }
    const CBstr reference = TryMakeText([&] { return CreateResultReference(resultId.View()); });
    if (!reference)
    {
        ZebDebug().Write("CTolva_DiagTest::RunTest: CreateResultReference failed");
        return WithEmptyResult(out, wmi::OutOfMemory);
    }
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
        if (FAILED(hr))
            ZebDebug().Write(row.failure, hr);
    }
    return hr;
}

HRESULT CTolva_DiagTest::RunTest(CWomContext& context, const CParsedObjectPath& path, CWomClassObject& in,
                                 CWomClassObject& out)
{
    const CZebTrace trace("CTolva_DiagTest::RunTest");
    CBstr systemElement;
    HRESULT hr = in.GetProperty(L"SystemElement", systemElement);
    if (FAILED(hr))
    {
        ZebDebug().Write("CTolva_DiagTest::RunTest: GetProperty for SystemElement failed, hr = <%x>", hr);
        return SetOutParams(out, L"");
    }
    const CBstr testName = ReadTestName(path);
    if (!testName)
    {
        ZebDebug().Write("CTolva_DiagTest::RunTest: GetKeyRef for TestName failed");
        return wmi::InvalidParameter;
    }
    const CBstr testId = ParseForTestName(testName.View());
    if (!testId)
    {
        ZebDebug().Write("CTolva_DiagTest::RunTest: Parsing for TestID from TestName failed");
        return WithEmptyResult(out, wmi::Failed);
    }
    hr = CheckAdapterReference(kRunTestAdapter, systemElement, testName, context.CimKeyMode());
    if (FAILED(hr))
        return hr;

    CBstr setting;
    bool noSetting = false;
    hr = in.GetProperty(L"Setting", setting, &noSetting);
    if (FAILED(hr))
    {
        ZebDebug().Write("CTolva_DiagTest::RunTest: GetProperty for Setting failed hr = <%x>", hr);
        return SetOutParams(out, L"");
    }
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
    {
        ZebDebug().Write("CTolva_DiagTest::DiscontinueTest: GetKeyRef for TestName failed");
        return wmi::InvalidParameter;
    }
    CTestData test;
    HRESULT hr = DiagMgr().GetTestData(testName.Get(), &test);
    if (FAILED(hr))
    {
        ZebDebug().Write("CTolva_DiagTest::DiscontinueTest: GetTestData failed, hr = <%x>", hr);
        return hr;
    }
    if (!test.Event)
    {
        // The agent is asked, whatever the parameters say.
        hr = DiagMgr().StopTest(testName.Get());
        if (FAILED(hr))
        {
            ZebDebug().Write("CTolva_DiagTest::DiscontinueTest: StopTest failed hr = <%x>", hr);
            return WithEmptyResult(out, hr);
        }
        hr = SetTestingStopped(out);
        return FAILED(hr) ? hr : SetReturnValue(out);
    }

    CBstr systemElement;
    hr = in.GetProperty(L"SystemElement", systemElement);
    if (FAILED(hr))
    {
        ZebDebug().Write("CTolva_DiagTest::DiscontinueTest: GetProperty for SystemElement failed, hr = <%x>",
                         hr);
        return hr;
    }
    hr = CheckAdapterReference(kDiscontinueTestAdapter, systemElement, testName, context.CimKeyMode());
    if (FAILED(hr))
        return hr;

    CBstr result;
    bool noResult = false;
    hr = in.GetProperty(L"Result", result, &noResult);
    if (FAILED(hr))
    {
        ZebDebug().Write("CTolva_DiagTest::DiscontinueTest: GetProperty for Result failed hr = <%x>", hr);
        return hr;
    }
    if (!noResult)
    {
        CParsedObjectPath reference;
        if (FAILED(ParseObjectPath(result.Text(), reference)))
        {
            ZebDebug().Write("CTolva_DiagTest::DiscontinueTest: Parsing for Result failed");
            return wmi::Failed;
        }
        const CBstr resultId = ReadKey(reference, L"DiagnosticName", KeyForm::Named);
        if (!DiagMgr().ResultExists(resultId.Get()))
        {
            ZebDebug().Write("CTolva_DiagTest::DiscontinueTest: Invalid Result object.");
            return wmi::Failed;
        }
    }
    // The manager tells whether the test runs and signals in one step: the run may have ended since the
    // record was read, and another one begun.
    hr = DiagMgr().SignalStop(test.Key.Get());
    if (hr == engine::Stopped)
    {
        ZebDebug().Write("CTolva_DiagTest::DiscontinueTest: Cannot stop a test which is not running.");
        return wmi::Failed;
    }
    if (FAILED(hr))
        ZebDebug().Write("CTolva_DiagTest::DiscontinueTest:SetEvent failed");
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
    if (FAILED(hr))
    {
        ZebDebug().Write("CTolva_DiagTest::ClearResults: GetProperty for SystemElement failed, hr = <%x>",
                         hr);
        return hr;
    }
    const CBstr testName = ReadTestName(path);
    if (!testName)
    {
        ZebDebug().Write("CTolva_DiagTest::ClearResults: GetKeyRef for TestName failed");
        return wmi::InvalidParameter;
    }
    hr = CheckAdapterReference(kClearResultsAdapter, systemElement, testName, context.CimKeyMode());
    if (FAILED(hr))
        return hr;
    hr = DiagMgr().ClearResults(testName.Get());
    if (FAILED(hr))
        ZebDebug().Write("CTolva_DiagTest::ClearResults: ClearResults failed, hr = <%x>", hr);
    (void)SetReturnValue(out);
    return hr;
}
