// The manager's runs of tests.
#include "CDM/src/ZebDebug.h"
#include "CDM/src/ZebTrace.h"
#include "CDM/src/engine/DiagMgrState.h"
#include "CDM/src/engine/EngineBoundary.h"
#include "CDM/src/engine/naming/DiagKeys.h"

#include <algorithm>
#include <limits>

namespace
{
// The strings of a failed run's two messages: the status, and which test has failed.
constexpr ULONG kStatusMessage = 0;
constexpr ULONG kFailedTestMessage = 3800;

// An agent may pass a test and have something to say: a success code of its own form (0x0004nnnn) names the
// text as a failure code does.
bool IsFinding(HRESULT status) noexcept
{
    return (static_cast<ULONG>(status) & 0xFFFF8000) == 0x00040000;
}
ULONG TextOf(HRESULT status) noexcept
{
    return (static_cast<ULONG>(status) & 0x7FFF) | 0x8000;
}

bool IsEmpty(BSTR key) noexcept
{
    return !key || !*key;
}

// How far a stopped run came. A run that went on for much longer than its planned length shows the most that
// the property holds: where a poll passes over such a value, a stop that a client asked for must not fail by
// it.
LONGLONG StoppedPercent(ULONGLONG elapsedMilliseconds, DWORD plannedSeconds) noexcept
{
    if (plannedSeconds == 0)
        return 0;
    const ULONGLONG percent = elapsedMilliseconds / 1000 * 100 / plannedSeconds;
    return static_cast<LONGLONG>(std::min<ULONGLONG>(percent, std::numeric_limits<BYTE>::max()));
}
} // namespace

HRESULT CDiagMgr::RunTest(BSTR testKey, CBstr& resultKey, ULONG mode)
{
    const CZebTrace trace("CDiagMgr::RunTest");
    if (IsEmpty(testKey) || IsEmpty(resultKey.Get()))
        return E_INVALIDARG;
    const std::shared_ptr<CState> state = m_state;
    return WithinMemory(
        [&]
        {
            resultKey = FoldedKey(resultKey.Get());
            return state->RunTest(FoldedKey(testKey).Get(), resultKey.Get(), mode);
        });
}

HRESULT CDiagMgr::CState::RunTest(BSTR testKey, BSTR resultKey, ULONG mode)
{
    std::shared_ptr<CDiagTest> test;
    HRESULT hr = tests.GetObj(testKey, test);
    if (FAILED(hr))
    {
        ZebDebug().Write("CDiagMgr::RunTest:GetObj for DiagTest failed, hr = <%x>", hr);
        return hr;
    }
    const CActiveRun run(runs, test);
    if (!run.Entered())
        return engine::Stopped;
    std::shared_ptr<CDiagResult> result;
    hr = PrepareResult(*test, resultKey, result);
    if (FAILED(hr))
        return hr;
    result->SetChanged();
    const ULONGLONG started = environment.ProcessMilliseconds();
    hr = BeginRun(testKey, *result);
    if (FAILED(hr))
        return hr;

    const HRESULT status =
        WithinMemory([&] { return test->StartTest(agent, *result, mode, testKey, environment); });

    FileAgain(resultKey, result);
    result->SetChanged();
    const bool failed = FAILED(status) && status != engine::Stopped;
    hr = failed ? FailRun(status, *test, *result)
                : EndRun(status, *test, *result, environment.ProcessMilliseconds() - started);
    StoreAfterRun(resultKey);
    if (SUCCEEDED(hr) && log.Enabled() && FAILED(WithinMemory([&] { return LogResults(resultKey); })))
        ZebDebug().Write("CDiagMgr::RunTest:LogResults failed.");
    return hr;
}

// The result that the run fills: the one that is there, or a new one.
HRESULT CDiagMgr::CState::PrepareResult(const CDiagTest& test, BSTR resultKey,
                                        std::shared_ptr<CDiagResult>& result)
{
    HRESULT hr = WithinMemory([&] { return results.GetObj(resultKey, result); });
    if (SUCCEEDED(hr))
    {
        // Those of a sender/responder test stay until its first poll replaces them.
        if (!test.SenderResponder())
            result->ClearMessages();
        return S_OK;
    }
    if (hr != engine::NotFound)
    {
        ZebDebug().Write("CDiagMgr::RunTest:GetObj for Result failed, hr = <%x>", hr);
        return hr;
    }
    result = std::make_shared<CDiagResult>(resultKey, test.NameStringID(), test.SenderResponder());
    hr = WithinMemory([&] { return results.AddObj(resultKey, result); });
    if (FAILED(hr))
        ZebDebug().Write("CDiagMgr::RunTest:AddObj for Result failed, hr = <%x>", hr);
    return hr;
}

// Somebody may have cleared the result in the moment before the run began. Where it cannot be filed any more,
// the run ends as it does all the same.
void CDiagMgr::CState::FileAgain(BSTR resultKey, const std::shared_ptr<CDiagResult>& result)
{
    (void)WithinMemory(
        [&]
        {
            std::shared_ptr<CDiagResult> filed;
            return FAILED(results.GetObj(resultKey, filed)) ? results.AddObj(resultKey, result) : S_OK;
        });
}

HRESULT CDiagMgr::CState::BeginRun(BSTR testKey, CDiagResult& result)
{
    const auto setting = TryMake<CSettingData>();
    if (!setting)
    {
        ZebDebug().Write("CDiagMgr::RunTest:Cannot allocate memory for SettingData");
        return wmi::OutOfMemory;
    }
    HRESULT hr = result.SetTestState(TestStateInProgress);
    if (FAILED(hr))
    {
        // The step that the text names is another one: support knows it so.
        ZebDebug().Write("CDiagMgr::RunTest:AddObj failed, hr = <%x>", hr);
        return hr;
    }
    result.SetStartTime(environment.LocalTime());
    result.RemoveCompletionTime();
    hr = result.SetPercentComplete(0);
    if (FAILED(hr))
    {
        ZebDebug().Write("CDiagMgr::RunTest:SetPercentComplete failed.");
        return hr;
    }
    hr = WithinMemory([&] { return GetSettingData(testKey, *setting); });
    if (FAILED(hr))
    {
        ZebDebug().Write("CDiagMgr::RunTest:GetSettingData failed, hr = <%x>", hr);
        return hr;
    }
    result.SetSettingValues(*setting);
    return S_OK;
}

// The end of a run that passed or was stopped.
HRESULT CDiagMgr::CState::EndRun(HRESULT status, const CDiagTest& test, CDiagResult& result,
                                 ULONGLONG elapsed)
{
    const SYSTEMTIME now = environment.LocalTime();
    result.SetCompletionTime(now);
    result.SetTimeStamp(now);
    if (status == engine::Stopped)
    {
        HRESULT hr = result.SetTestState(TestStateStopped);
        if (FAILED(hr))
        {
            ZebDebug().Write("CDiagMgr::RunTest:SetTestState(STOPPED) failed.");
            return hr;
        }
        hr = result.SetPercentComplete(StoppedPercent(elapsed, test.Timing().TimeoutSndRsp));
        if (FAILED(hr))
            ZebDebug().Write("CDiagMgr::RunTest:SetPercentComplete2 failed.");
        return hr;
    }
    if (IsFinding(status) && !test.SenderResponder())
    {
        CResultMessages messages;
        const HRESULT built = WithinMemory(
            [&]
            {
                messages.Add(TextOf(status), static_cast<ULONG>(status));
                return S_OK;
            });
        if (SUCCEEDED(built))
            result.SetMessages(std::move(messages));
    }
    HRESULT hr = result.SetPercentComplete(100);
    if (FAILED(hr))
    {
        ZebDebug().Write("CDiagMgr::RunTest:SetPercentComplete2 failed.");
        return hr;
    }
    hr = result.SetTestState(TestStatePassed);
    if (FAILED(hr))
        ZebDebug().Write("CDiagMgr::RunTest:SetTestState(PASSED) failed.");
    return hr;
}

// The end of a run that failed, or could not be made; `status` says why and is returned.
HRESULT CDiagMgr::CState::FailRun(HRESULT status, const CDiagTest& test, CDiagResult& result)
{
    ZebDebug().Write("CDiagMgr::RunTest:pDiagTestObj->StartTest failed, hrTestStatus = <%x>", status);
    CResultMessages messages;
    const HRESULT built = WithinMemory(
        [&]
        {
            messages.Add(kStatusMessage, status);
            messages.Add(kFailedTestMessage + test.TestID(), 0);
            return S_OK;
        });
    result.SetMessages(SUCCEEDED(built) ? std::move(messages) : CResultMessages());
    const HRESULT hr = result.SetTestState(TestStateFailed);
    if (FAILED(hr))
    {
        // The step that the text names is another one: support knows it so.
        ZebDebug().Write("CDiagMgr::RunTest:SetStatus failed.");
        return hr;
    }
    const SYSTEMTIME now = environment.LocalTime();
    result.SetCompletionTime(now);
    result.SetTimeStamp(now);
    if (FAILED(result.SetPercentComplete(0)))
        ZebDebug().Write("CDiagMgr::RunTest:SetPercentComplete2 failed.");
    return status;
}

HRESULT CDiagMgr::StopTest(BSTR testKey)
{
    const CZebTrace trace("CDiagMgr::StopTest");
    if (IsEmpty(testKey))
        return E_INVALIDARG;
    return WithinMemory(
        [&]
        {
            std::shared_ptr<CDiagTest> test;
            const HRESULT hr = m_state->tests.GetObj(testKey, test);
            if (FAILED(hr))
            {
                ZebDebug().Write("CDiagMgr::StopTest:GetObj failed, hr = <%x>", hr);
                return hr;
            }
            if (!test->Locked())
                return engine::Stopped;
            const std::shared_ptr<CDiagAgent> agent = m_state->agent;
            return test->StopTest(agent.get(), FoldedKey(testKey).Get());
        });
}

HRESULT CDiagMgr::SignalStop(BSTR testKey)
{
    return WithinMemory(
        [&]
        {
            std::shared_ptr<CDiagTest> test;
            const HRESULT hr = m_state->tests.GetObj(testKey, test);
            return test ? test->RequestStop() : hr;
        });
}

HRESULT CDiagMgr::LogResults(BSTR resultKey)
{
    return WithinMemory([&] { return m_state->LogResults(resultKey); });
}

HRESULT CDiagMgr::CState::LogResults(BSTR resultKey)
{
    CResultData data;
    const HRESULT hr = GetResultData(resultKey, data);
    if (FAILED(hr))
    {
        ZebDebug().Write("CDiagMgr::LogResults:GetResultData failed <%x>", hr);
        return hr;
    }
    return log.Append(data);
}
