#include "CDM/src/engine/runs/RunOutcome.h"

#include "CDM/src/ZebTrace.h"
#include "CDM/src/engine/EngineStatus.h"
#include "CDM/src/engine/catalogue/DiagTest.h"
#include "CDM/src/engine/results/DiagResult.h"
#include "CDM/src/engine/runs/RunEnvironment.h"
#include "CDM/src/engine/runs/RunProgress.h"

namespace
{
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

// One operator for each way in which a run ends.
struct CCompletion
{
    HRESULT operator()(const CPassedRun& passed) const
    {
        StampEnd();
        if (passed.Finding)
            ShowFinding(*passed.Finding);
        HRESULT hr = Result.SetPercentComplete(100);
        if (Failed(hr, "CDiagMgr::RunTest:SetPercentComplete2 failed."))
            return hr;
        hr = Result.SetTestState(TestStatePassed);
        Failed(hr, "CDiagMgr::RunTest:SetTestState(PASSED) failed.");
        return hr;
    }
    HRESULT operator()(const CStoppedRun&) const
    {
        StampEnd();
        HRESULT hr = Result.SetTestState(TestStateStopped);
        if (Failed(hr, "CDiagMgr::RunTest:SetTestState(STOPPED) failed."))
            return hr;
        hr = Result.SetPercentComplete(
            StoppedPercentComplete(ElapsedMilliseconds, Test.Timing().TimeoutSndRsp));
        Failed(hr, "CDiagMgr::RunTest:SetPercentComplete2 failed.");
        return hr;
    }
    HRESULT operator()(const CFailedRun& failed) const
    {
        Failed(failed.Code, "CDiagMgr::RunTest:pDiagTestObj->StartTest failed, hrTestStatus = <%x>");
        ShowFailure(failed.Code);
        const HRESULT hr = Result.SetTestState(TestStateFailed);
        if (Failed(hr, "CDiagMgr::RunTest:SetStatus failed.")) // sic
            return hr;
        StampEnd();
        Failed(Result.SetPercentComplete(0), "CDiagMgr::RunTest:SetPercentComplete2 failed.");
        return failed.Code;
    }

    void StampEnd() const
    {
        const SYSTEMTIME now = Environment.LocalTime();
        Result.SetCompletionTime(now);
        Result.SetTimeStamp(now);
    }
    // Without memory for it, a run that passed goes without its finding.
    void ShowFinding(HRESULT finding) const
    {
        (void)WithinMemory(
            [&]
            {
                CResultMessages messages;
                messages.Add(TextOf(finding), static_cast<ULONG>(finding));
                Result.SetMessages(std::move(messages));
                return S_OK;
            });
    }
    // The messages of an earlier poll say nothing about a failure: without memory there are none.
    void ShowFailure(HRESULT code) const
    {
        CResultMessages messages;
        const HRESULT built = WithinMemory(
            [&]
            {
                messages.Add(strings::Status, code);
                messages.Add(strings::FailedTest + Test.TestID(), 0);
                return S_OK;
            });
        Result.SetMessages(SUCCEEDED(built) ? std::move(messages) : CResultMessages());
    }

    const CDiagTest& Test;
    const ULONGLONG ElapsedMilliseconds;
    IRunEnvironment& Environment;
    CDiagResult& Result;
};
} // namespace

CRunOutcome OutcomeOf(HRESULT status, const CDiagTest& test) noexcept
{
    if (status == engine::Stopped)
        return CStoppedRun();
    if (FAILED(status))
        return CFailedRun{status};
    CPassedRun passed;
    if (IsFinding(status) && !test.SenderResponder())
        passed.Finding = status;
    return passed;
}

HRESULT CompleteResult(const CRunOutcome& outcome, const CDiagTest& test, ULONGLONG elapsedMilliseconds,
                       IRunEnvironment& environment, CDiagResult& result)
{
    return std::visit(CCompletion{test, elapsedMilliseconds, environment, result}, outcome);
}
