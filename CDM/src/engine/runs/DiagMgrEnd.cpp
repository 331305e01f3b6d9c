// The end of what is still under way when the manager goes. Nothing here waits for the agent itself.
#include "CDM/src/engine/DiagMgrState.h"
#include "CDM/src/engine/EngineBoundary.h"
#include "CDM/src/engine/runs/TestWorker.h"

#include <algorithm>
#include <map>

namespace
{
constexpr int kAttempts = 30;
constexpr DWORD kPatience = 1000; // milliseconds

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
} // namespace

// The tests that the agent was asked to stop, each on a thread of its own: there are agents that do not come
// back from it.
class CDiagMgr::CState::CStopCalls
{
  public:
    explicit CStopCalls(CState& state) : m_state(state) {}

    // A call that is still on its way is not repeated.
    void Make(const std::shared_ptr<CDiagTest>& test)
    {
        CHandle& thread = m_threads[test.get()];
        if (thread && WaitForSingleObject(thread.Get(), 0) != WAIT_OBJECT_0)
            return;
        auto request = std::make_unique<CRequest>(CRequest{test, m_state.agent, test->Key()});
        thread = m_state.environment.StartThread(&AskAgent, request.get());
        if (thread)
            (void)request.release();
    }

  private:
    CState& m_state;
    std::map<const CDiagTest*, CHandle> m_threads;
};

// Lets no run begin any more and stops those that are going on, and what an earlier run has left in the
// agent. The request is repeated, because a run may be about to enter the agent. What the agent does not end
// goes on without the manager.
HRESULT CDiagMgr::CState::EndRuns()
{
    runs.Close();
    CStopCalls stops(*this);
    HRESULT hr = S_FALSE;
    for (int attempt = 0; attempt <= kAttempts && hr != S_OK; ++attempt)
        hr = WithinMemory([&] { return TryEndRuns(stops); });
    return hr == S_OK ? S_OK : E_FAIL;
}

// S_FALSE where something may still go on.
HRESULT CDiagMgr::CState::TryEndRuns(CStopCalls& stops)
{
    const auto running = runs.Running();
    std::shared_ptr<CTestWorker> left;
    for (const std::shared_ptr<CDiagTest>& test : tests.All())
    {
        const bool runs = std::find(running.begin(), running.end(), test) != running.end();
        const auto worker = runs ? nullptr : test->LeftWorker();
        if (worker)
            left = worker;
        if (runs && test->Event())
            test->RequestStop();
        else if (runs || worker)
            stops.Make(test);
    }
    if (running.empty() && !left)
        return S_OK;
    environment.Wait(running.empty() ? left->Thread() : runs.Idle(), kPatience);
    return S_FALSE;
}
