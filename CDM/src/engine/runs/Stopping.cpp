#include "CDM/src/engine/runs/Stopping.h"

#include "CDM/src/ZebDebug.h"
#include "CDM/src/engine/runs/ActiveRuns.h"
#include "CDM/src/engine/runs/RunProgress.h"
#include "CDM/src/engine/runs/TestWorker.h"

#include <algorithm>
#include <map>

namespace
{
constexpr int kStopAttempts = 4;
constexpr DWORD kBetweenStops = 5000; // milliseconds

// At the end of all runs.
constexpr int kEndAttempts = 31;
constexpr DWORD kBetweenEnds = 1000; // milliseconds

// The worker that the test's last run left in the agent; null if it has come back. For when no run is going
// on.
std::shared_ptr<CTestWorker> LeftWorker(const CDiagTest& test)
{
    const std::shared_ptr<CTestWorker> worker = test.Worker();
    const bool atWork = worker && WaitForSingleObject(worker->Thread(), 0) == WAIT_TIMEOUT;
    return atWork ? worker : nullptr;
}

struct CRequest
{
    std::shared_ptr<CDiagTest> test;
    std::shared_ptr<CDiagAgent> agent;
    CBstr key;
};

DWORD WINAPI AskAgent(void* parameter) noexcept
{
    const std::unique_ptr<CRequest> request(static_cast<CRequest*>(parameter));
    request->test->StopTest(request->agent.get(), request->key.Get());
    return 0;
}

// The end of all runs. The agent is asked to stop each test on a thread of its own: there are agents that do
// not come back from it.
class CEndOfRuns
{
  public:
    CEndOfRuns(CActiveRuns& runs, const CDiagMap<CDiagTest>& tests, const std::shared_ptr<CDiagAgent>& agent,
               IRunEnvironment& environment)
        : m_runs(runs), m_tests(tests), m_agent(agent), m_environment(environment)
    {
    }

    // S_FALSE if something may still go on.
    HRESULT Try()
    {
        const auto running = m_runs.Running();
        std::shared_ptr<CTestWorker> left;
        for (const std::shared_ptr<CDiagTest>& test : m_tests.All())
        {
            const bool runs = std::find(running.begin(), running.end(), test) != running.end();
            const auto worker = runs ? nullptr : LeftWorker(*test);
            if (worker)
                left = worker;
            if (runs && test->Event())
                test->RequestStop();
            else if (runs || worker)
                Ask(test);
        }
        if (running.empty() && !left)
            return S_OK;
        m_environment.Wait(running.empty() ? left->Thread() : m_runs.Idle(), kBetweenEnds);
        return S_FALSE;
    }

  private:
    // A call that is still on its way is not repeated.
    void Ask(const std::shared_ptr<CDiagTest>& test)
    {
        CHandle& thread = m_threads[test.get()];
        if (thread && WaitForSingleObject(thread.Get(), 0) != WAIT_OBJECT_0)
            return;
        auto request = std::make_unique<CRequest>(CRequest{test, m_agent, test->Key()});
        thread = m_environment.StartThread(&AskAgent, request.get());
        if (thread)
            (void)request.release();
    }

    CActiveRuns& m_runs;
    const CDiagMap<CDiagTest>& m_tests;
    const std::shared_ptr<CDiagAgent>& m_agent;
    IRunEnvironment& m_environment;
    std::map<const CDiagTest*, CHandle> m_threads;
};
} // namespace

StopReason DecideStop(const CRunProgress& progress, bool enoughPackets, bool requested) noexcept
{
    if (requested)
        return StopReason::Requested;
    if (enoughPackets)
        return StopReason::EnoughPackets;
    return progress.IsTimeUp() ? StopReason::TimeIsUp : StopReason::None;
}

HRESULT CStopping::EndWorker(CTestWorker& worker)
{
    HRESULT hr = m_test.StopTest(&m_agent, m_testKey);
    for (int attempt = 1; FAILED(hr) && attempt < kStopAttempts; ++attempt)
    {
        m_environment.WaitForEither(m_test.Event(), worker.Thread(), kBetweenStops);
        hr = m_test.StopTest(&m_agent, m_testKey);
    }
    if (FAILED(hr))
        worker.Terminate();
    else if (m_environment.Wait(worker.Thread(), INFINITE) == WAIT_FAILED)
        ZebDebug().Write("CDiagMgr::RunTest:WaitForSingleObject failed"); // sic
    DropWorker();
    return hr;
}

bool CStopping::EndLeftWorker()
{
    std::shared_ptr<CTestWorker> left = LeftWorker(m_test);
    for (int attempt = 0; left && attempt < kStopAttempts; ++attempt)
    {
        m_test.StopTest(&m_agent, m_testKey);
        m_environment.Wait(left->Thread(), kBetweenStops);
        left = LeftWorker(m_test);
    }
    if (!left)
        DropWorker();
    return !left;
}

void CStopping::DropWorker()
{
    if (const std::shared_ptr<CTestWorker> worker = m_test.KeepWorker(nullptr))
        worker->CloseThread();
}

HRESULT StopAll(CActiveRuns& runs, const CDiagMap<CDiagTest>& tests, const std::shared_ptr<CDiagAgent>& agent,
                IRunEnvironment& environment)
{
    runs.Close();
    CEndOfRuns end(runs, tests, agent, environment);
    // The request is repeated, because a run may be about to enter the agent.
    HRESULT hr = S_FALSE;
    for (int attempt = 0; attempt < kEndAttempts && hr != S_OK; ++attempt)
        hr = WithinMemory([&] { return end.Try(); });
    return hr == S_OK ? S_OK : E_FAIL;
}
