#include "CDM/src/engine/runs/TestWorker.h"

namespace
{
constexpr DWORD kEndsWithin = 1000; // milliseconds
} // namespace

CTestWorker::CTestWorker(std::shared_ptr<CDiagAgent> agent, CBstr adapterKey, ULONG testId) noexcept
    : m_agent(std::move(agent)), m_adapterKey(std::move(adapterKey)), m_testId(testId)
{
}

bool CTestWorker::Start(const std::shared_ptr<CTestWorker>& worker, IRunEnvironment& environment)
{
    worker->m_threadsOwn = worker;
    worker->m_thread = environment.StartThread(&CTestWorker::Run, worker.get());
    if (!worker->m_thread)
        worker->m_threadsOwn.reset();
    return static_cast<bool>(worker->m_thread);
}

DWORD WINAPI CTestWorker::Run(void* parameter) noexcept
{
    CTestWorker* const worker = static_cast<CTestWorker*>(parameter);
    worker->m_status = worker->m_agent->RunDiagTest(worker->m_adapterKey.Get(), worker->m_testId);
    const std::shared_ptr<CTestWorker> own = std::move(worker->m_threadsOwn);
    return 0;
}

void CTestWorker::Terminate() noexcept
{
    TerminateThread(m_thread.Get(), 0);
    // Only when its handle says that the thread is gone is its reference given back here. One that hangs in
    // the system keeps what it works with.
    if (WaitForSingleObject(m_thread.Get(), kEndsWithin) == WAIT_OBJECT_0)
        m_threadsOwn.reset();
}
