#include "tools/zebdiag/TestRun.h"

#include "tools/zebdiag/Inventory.h"
#include "tools/zebdiag/MethodThread.h"
#include "tools/zebdiag/ObjectPath.h"
#include "tools/zebdiag/RunOutcome.h"
#include "tools/zebdiag/TemporarySetting.h"
#include "tools/zebdiag/WmiValue.h"
#include "tools/zebdiag/languages/Said.h"

namespace zebdiag
{
namespace
{
// How long a run may take to end after it was told to stop: longer than the provider itself keeps trying.
constexpr unsigned long long kStopPatience = 30000;

class CTestRun
{
  public:
    CTestRun(const CWmiSession& session, const std::wstring& computer, const CTest& test,
             const CRunOptions& options, const CRunControl& control, const CRunObserver& observer)
        : m_session(session), m_computer(computer), m_test(test), m_options(options), m_control(control),
          m_observer(observer)
    {
    }

    CRunOutcome Run()
    {
        // Looked at before anything is changed: another client's run must not be given this run's values.
        if (IsInUse())
            return Refused(ExitCode::Busy);
        CTemporarySetting setting(m_session, m_test, m_options.Setting);
        m_started = m_control.Now();
        const CMethodThread call(m_session, m_test.Path, kTestClass, L"RunTest",
                                 {{L"SystemElement", AdapterPath(m_test.AdapterKey, m_computer)},
                                  {L"Setting", SettingPath(m_test.Key)}});
        CRunOutcome outcome = Await(call);
        outcome.Seconds = Elapsed() / 1000;
        // A series has no time for another test, even if this one has just ended by itself.
        outcome.Interrupted = m_stop.Reason != StopReason::None || IsTimeOver();
        const Restored restored = setting.Restore();
        if (restored == Restored::Failed)
            m_observer.Say(Said(L"The setting could not be put back; see \"zebdiag settings\"."));
        else if (restored == Restored::NotAll)
            m_observer.Say(Said(L"The setting was changed while the test ran; the new values stay."));
        return outcome;
    }

  private:
    unsigned long long Elapsed() const { return m_control.Now() - m_started; }
    bool IsTimeOver() const { return m_options.Deadline && m_control.Now() >= *m_options.Deadline; }

    // A call that fails is an outcome like others, after which the setting is put back.
    CRunOutcome Await(const CMethodThread& call)
    {
        try
        {
            return WaitForEnd(call.Done()) ? Judge(call.Result()) : LeftToItself(m_stop);
        }
        catch (const CFailure& failure)
        {
            return OutcomeOf(failure);
        }
    }

    bool IsInUse() const
    {
        const std::optional<CTest> now = LoadTest(m_session, m_test);
        if (!now)
            throw FailureOf(WBEM_E_NOT_FOUND, Step::Call, m_session.Target(), kTestClass);
        return now->InUse;
    }

    // False where the run goes on by itself.
    bool WaitForEnd(HANDLE done)
    {
        for (;;)
        {
            // Once the stop has been asked for, its event has nothing more to say.
            const HANDLE handles[] = {done, m_control.Abandon, m_control.Stop};
            const DWORD count = m_stop.Reason == StopReason::None ? 3 : 2;
            const DWORD woken = WaitForMultipleObjects(count, handles, FALSE, m_control.PollMilliseconds);
            if (woken == WAIT_OBJECT_0)
                return true;
            if (woken == WAIT_OBJECT_0 + 1 || woken == WAIT_FAILED)
                return false;
            if (woken == WAIT_OBJECT_0 + 2)
                BeginStop(StopReason::Request);
            else if (m_stop.Reason == StopReason::None && IsTimeOver())
                BeginStop(StopReason::Timeout);
            if (m_stop.Reason != StopReason::None && !m_stop.Taken)
                m_stop.Taken = TryStop();
            if (m_stop.Reason != StopReason::None && m_control.Now() - m_stopSince >= kStopPatience)
                return false;
            m_observer.Progress(CurrentPercent(), Elapsed() / 1000);
        }
    }

    void BeginStop(StopReason reason)
    {
        m_stop.Reason = reason;
        m_stopSince = m_control.Now();
        m_observer.Stopping(reason);
    }

    // A stop that comes before the run has really begun is refused, so it is tried again at every look.
    bool TryStop() const
    {
        try
        {
            return RequestStop(m_session, m_computer, m_test);
        }
        catch (const CFailure&)
        {
            return false;
        }
    }

    // Known only while the provider shows this run, not the one before it.
    std::optional<long> CurrentPercent() const
    {
        try
        {
            const std::optional<CResult> result = LoadResult(m_session, m_test);
            // Ordinary tests are done in one step and stay at 0 until then.
            if (result && result->State == TestState::InProgress && m_test.SendsPackets())
                return result->Percent;
        }
        catch (const CFailure&)
        {
            // A reading that fails is made up for by the next one.
            return std::nullopt;
        }
        return std::nullopt;
    }

    // The call's own success says nothing; an empty reference says that there was no run, and otherwise the
    // outcome is what the result says.
    CRunOutcome Judge(const WmiObject& out) const
    {
        if (!out || ReadText(out.Get(), L"Result").value_or(L"").empty())
            return Refused(IsInUse() ? ExitCode::Busy : ExitCode::CouldNotRun);
        return OutcomeOf(LoadResult(m_session, m_test), m_stop);
    }

    const CWmiSession& m_session;
    const std::wstring& m_computer;
    const CTest& m_test;
    const CRunOptions& m_options;
    const CRunControl& m_control;
    const CRunObserver& m_observer;

    unsigned long long m_started = 0;
    CStop m_stop;
    unsigned long long m_stopSince = 0;
};
} // namespace

CRunOutcome RunOneTest(const CWmiSession& session, const std::wstring& computer, const CTest& test,
                       const CRunOptions& options, const CRunControl& control, const CRunObserver& observer)
{
    try
    {
        return CTestRun(session, computer, test, options, control, observer).Run();
    }
    catch (const CFailure& failure)
    {
        return OutcomeOf(failure);
    }
}

bool RequestStop(const CWmiSession& session, const std::wstring& computer, const CTest& test)
{
    const WmiObject out = session.Call(test.Path, kTestClass, L"DiscontinueTest",
                                       {{L"SystemElement", AdapterPath(test.AdapterKey, computer)}});
    return out && ReadFlag(out.Get(), L"TestingStopped").value_or(false);
}
} // namespace zebdiag
