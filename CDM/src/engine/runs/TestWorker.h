// The thread on which a sender/responder test runs. What the thread works with lives until both the starter
// and the thread have let go of it, however the run ends.
#pragma once

#include "CDM/src/engine/DiagAgent.h"
#include "CDM/src/engine/runs/RunEnvironment.h"
#include "Common/src/com/Bstr.h"

#include <atomic>
#include <memory>

class CTestWorker
{
  public:
    CTestWorker(std::shared_ptr<CDiagAgent> agent, CBstr adapterKey, ULONG testId) noexcept;

    // Starts the agent's run of the test. False if no thread could be started.
    static bool Start(const std::shared_ptr<CTestWorker>& worker, IRunEnvironment& environment);

    HANDLE Thread() const noexcept { return m_thread.Get(); }
    // The run's outcome once the thread has ended; E_FAIL until then.
    HRESULT Status() const noexcept { return m_status; }
    // Ends the thread by force. The agent is left in the middle of its call.
    void Terminate() noexcept;
    void CloseThread() noexcept { m_thread.Reset(); }

  private:
    static DWORD WINAPI Run(void* parameter) noexcept;

    const std::shared_ptr<CDiagAgent> m_agent;
    const CBstr m_adapterKey;
    const ULONG m_testId;
    std::atomic<HRESULT> m_status{E_FAIL};
    CHandle m_thread;
    std::shared_ptr<CTestWorker> m_threadsOwn; // the thread's reference; taken along when the thread ends
};
