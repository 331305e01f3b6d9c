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

void DropWorker(CDiagTest& test)
{
    if (const std::shared_ptr<CTestWorker> worker = test.KeepWorker(nullptr))
        worker->CloseThread();
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
struct CEndOfRuns
{
    // S_FALSE if something may still go on.
    HRESULT Try()
    {
        const auto running = Runs.Running();
        std::shared_ptr<CTestWorker> left;
        for (const std::shared_ptr<CDiagTest>& test : Tests.All())
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
        Environment.Wait(running.empty() ? left->Thread() : Runs.Idle(), kBetweenEnds);
        return S_FALSE;
    }

    // A call that is still on its way is not repeated.
    void Ask(const std::shared_ptr<CDiagTest>& test)
    {
        CHandle& thread = Threads[test.get()];
        if (thread && WaitForSingleObject(thread.Get(), 0) != WAIT_OBJECT_0)
            return;
        auto request = std::make_unique<CRequest>(CRequest{test, Agent, test->Key()});
        thread = Environment.StartThread(&AskAgent, request.get());
        if (thread)
            (void)request.release();
    }

    CActiveRuns& Runs;
    const CDiagMap<CDiagTest>& Tests;
    const std::shared_ptr<CDiagAgent>& Agent;
    IRunEnvironment& Environment;
    std::map<const CDiagTest*, CHandle> Threads = {};
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

HRESULT EndWorker(CDiagTest& test, CTestWorker& worker, CDiagAgent& agent, BSTR testKey,
                  IRunEnvironment& environment)
{
    HRESULT hr = test.StopTest(&agent, testKey);
    for (int attempt = 1; FAILED(hr) && attempt < kStopAttempts; ++attempt)
    {
        environment.WaitForEither(test.Event(), worker.Thread(), kBetweenStops);
        hr = test.StopTest(&agent, testKey);
    }
    if (FAILED(hr))
        worker.Terminate();
    else if (environment.Wait(worker.Thread(), INFINITE) == WAIT_FAILED)
        ZebDebug().Write("CDiagMgr::RunTest:WaitForSingleObject failed"); // sic
    DropWorker(test);
    return hr;
}

bool EndLeftWorker(CDiagTest& test, CDiagAgent& agent, BSTR testKey, IRunEnvironment& environment)
{
    std::shared_ptr<CTestWorker> left = LeftWorker(test);
    for (int attempt = 0; left && attempt < kStopAttempts; ++attempt)
    {
        test.StopTest(&agent, testKey);
        environment.Wait(left->Thread(), kBetweenStops);
        left = LeftWorker(test);
    }
    if (!left)
        DropWorker(test);
    return !left;
}

HRESULT StopAll(CActiveRuns& runs, const CDiagMap<CDiagTest>& tests, const std::shared_ptr<CDiagAgent>& agent,
                IRunEnvironment& environment)
{
    runs.Close();
    CEndOfRuns end{runs, tests, agent, environment};
    // The request is repeated, because a run may be about to enter the agent.
    HRESULT hr = S_FALSE;
    for (int attempt = 0; attempt < kEndAttempts && hr != S_OK; ++attempt)
        hr = WithinMemory([&] { return end.Try(); });
    return hr == S_OK ? S_OK : E_FAIL;
}
