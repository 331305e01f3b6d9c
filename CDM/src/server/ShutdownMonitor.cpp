#include "CDM/src/server/ShutdownMonitor.h"

#include <objbase.h>

DWORD CMonitorActions::Wait(HANDLE event, DWORD milliseconds) noexcept
{
    return WaitForSingleObject(event, milliseconds);
}

void CMonitorActions::SuspendClassObjects() noexcept
{
    CoSuspendClassObjects();
}

void CMonitorActions::PostQuit(DWORD mainThread) noexcept
{
    PostThreadMessageA(mainThread, WM_QUIT, 0, 0);
}

CShutdownMonitor::CShutdownMonitor(const volatile LONG& lockCount, CMonitorActions& actions,
                                   DWORD idleMilliseconds) noexcept
    : m_lockCount(lockCount), m_actions(actions), m_idleMilliseconds(idleMilliseconds)
{
}

bool CShutdownMonitor::Start(DWORD mainThread) noexcept
{
    const CLockScope lock(m_section);
    m_mainThread = mainThread;
    m_event.Reset(CreateEventA(nullptr, FALSE, FALSE, nullptr));
    if (!m_event)
        return false;
    m_thread.Reset(CreateThread(nullptr, 0, &ThreadProcedure, this, 0, nullptr));
    return static_cast<bool>(m_thread);
}

void CShutdownMonitor::Signal() noexcept
{
    m_activity = true;
    const CLockScope lock(m_section);
    if (m_event)
        SetEvent(m_event.Get());
}

DWORD WINAPI CShutdownMonitor::ThreadProcedure(void* monitor) noexcept
{
    static_cast<CShutdownMonitor*>(monitor)->Run();
    return 0;
}

void CShutdownMonitor::Run() noexcept
{
    const HANDLE event = m_event.Get();
    for (;;)
    {
        m_actions.Wait(event, INFINITE);
        do
            m_activity = false;
        while (m_actions.Wait(event, m_idleMilliseconds) == WAIT_OBJECT_0);

        if (!Idle())
            continue;
        m_actions.SuspendClassObjects();
        // A client may have come in just before the door was closed.
        if (CloseIfIdle())
            break;
    }
    const DWORD mainThread = m_mainThread;
    CMonitorActions& actions = m_actions;
    CloseHandles();
    actions.PostQuit(mainThread); // the main thread may destroy the monitor from here on
}

bool CShutdownMonitor::Idle() const noexcept
{
    return !m_activity && m_lockCount == 0;
}

bool CShutdownMonitor::CloseIfIdle() noexcept
{
    const CLockScope lock(m_gate);
    m_closed = Idle();
    return m_closed;
}

void CShutdownMonitor::Open() noexcept
{
    const CLockScope lock(m_gate);
    m_closed = false;
}

void CShutdownMonitor::Close() noexcept
{
    const CLockScope lock(m_gate);
    m_closed = true;
}

void CShutdownMonitor::CloseHandles() noexcept
{
    const CLockScope lock(m_section);
    m_event.Reset();
    m_thread.Reset();
}
