// Whether a test is in use, the event that asks its run to stop, and for whom a request is meant. In use,
// requested and given up are told apart under one lock of the whole process, so that a request ends the run
// that it was made for, or none.
//
// The event has one name: every sender/responder test of the session shares it. Requests that are made here
// are noted for their run; it is left signalled until the last of them is taken. A signal that is not
// noted comes from another program and ends whichever run sees it first. If no run takes it, it ends the next
// one at its first wait, unless it came while the last run was still in use.
#pragma once

#include "Common/src/com/Owned.h"

#include <atomic>

class CStopSignal
{
  public:
    enum class Seen
    {
        Ours,   // taken
        Others, // another run's, which will take it
        Gone    // another run has taken it meanwhile
    };

    CStopSignal() noexcept = default;
    CStopSignal(const CStopSignal&) = delete;
    CStopSignal& operator=(const CStopSignal&) = delete;
    ~CStopSignal() { Unlock(); }

    // Without the event there is only the lock. False if the event cannot be had.
    bool Create() noexcept;
    HANDLE Event() const noexcept { return m_event.Get(); }

    bool Locked() const noexcept { return m_locked; }
    // Exactly one of two concurrent callers succeeds.
    bool Lock() noexcept;
    // A request that no run has taken goes with the lock.
    bool Unlock() noexcept;

    // engine::Stopped if nothing is in use; E_FAIL if the event cannot be signalled.
    HRESULT Request() noexcept;
    // For a run that a signal has woken.
    Seen Take() noexcept;

  private:
    void Forget() noexcept;

    CHandle m_event;
    std::atomic<bool> m_locked{false}; // written under the lock
    bool m_requested = false;
};
