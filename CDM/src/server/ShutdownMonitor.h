// Ends the server when no client has used it for some seconds. A thread of its own watches an event that the
// server signals whenever its last lock goes; it decides by the lock count and an activity flag, which it
// tests twice: before and after it has COM turn new clients away. With the second test it closes the server:
// COM's class objects can still be held by somebody, but nothing is made any more.
#pragma once

#include "Common/src/com/CriticalSection.h"
#include "Common/src/com/Owned.h"

#include <atomic>

// What the monitor does to the world around it; tests replace it.
class CMonitorActions
{
  public:
    virtual ~CMonitorActions() = default;
    virtual DWORD Wait(HANDLE event, DWORD milliseconds) noexcept;
    virtual void SuspendClassObjects() noexcept;
    virtual void PostQuit(DWORD mainThread) noexcept;
};

class CShutdownMonitor
{
  public:
    static constexpr DWORD kIdleMilliseconds = 5000;

    // Watches `lockCount`, which is changed with interlocked operations; both arguments outlive the monitor.
    CShutdownMonitor(const volatile LONG& lockCount, CMonitorActions& actions,
                     DWORD idleMilliseconds = kIdleMilliseconds) noexcept;
    CShutdownMonitor(const CShutdownMonitor&) = delete;
    CShutdownMonitor& operator=(const CShutdownMonitor&) = delete;

    // Creates event and thread. False if either cannot be created; there is no monitor then. When the monitor
    // finds the server idle, it closes both and posts WM_QUIT to `mainThread`.
    bool Start(DWORD mainThread) noexcept;
    // The last lock has gone; from any thread, at any time.
    void Signal() noexcept;

    // Runs `enter`, which takes a lock, unless the server is closed: a request is either in time for the
    // monitor's second test or refused.
    template <class Enter>
    bool Admit(Enter&& enter)
    {
        const CLockScope lock(m_gate);
        if (m_closed)
            return false;
        enter();
        return true;
    }
    void Open() noexcept;
    // Also for a server that ends without the monitor.
    void Close() noexcept;

  private:
    static DWORD WINAPI ThreadProcedure(void* monitor) noexcept;
    void Run() noexcept;
    bool Idle() const noexcept;
    bool CloseIfIdle() noexcept;
    void CloseHandles() noexcept;

    const volatile LONG& m_lockCount;
    CMonitorActions& m_actions;
    const DWORD m_idleMilliseconds;
    DWORD m_mainThread = 0;
    std::atomic<bool> m_activity{false};
    CCriticalSection m_gate;
    bool m_closed = false;
    CCriticalSection m_section; // a late Signal must not meet a handle that is being closed
    CHandle m_event;
    CHandle m_thread;
};
