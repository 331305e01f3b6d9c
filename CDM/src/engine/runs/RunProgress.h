// How long a run is meant to take, and its percent complete.
#pragma once

#include "CDM/src/engine/catalogue/DiagTest.h"

struct CRunParameters
{
    bool Report = true;  // statistics become messages of the result
    BYTE Coverage = 100; // percent of the whole length
    bool Quick = true;   // enough packets end the run
};

// Of a sender/responder run, from poll to poll.
class CRunProgress
{
  public:
    // Whether the run can be computed with: nothing divides by zero, nothing leaves 32 bits.
    static bool IsUsable(const CRunTiming& timing, const CRunParameters& parameters) noexcept;

    // `timing` must be usable.
    CRunProgress(const CRunTiming& timing, const CRunParameters& parameters) noexcept;

    DWORD PollMilliseconds() const noexcept { return static_cast<DWORD>(m_checkTime * 1000); }
    // A poll counts as a whole interval, even if a signal has cut that short.
    void CountPoll() noexcept { m_elapsed += m_checkTime; }
    bool IsTimeUp() const noexcept { return m_elapsed >= m_total; }
    // Can pass 100 at the last poll.
    LONG PercentComplete() const noexcept { return m_elapsed * 100 / m_total; }

  private:
    const LONG m_checkTime; // these in seconds
    const LONG m_total;
    LONG m_elapsed = 0;
};

// How far a stopped run came, at most what the property holds: a stop that a client asked for must not fail
// because the run went on for long.
BYTE StoppedPercentComplete(ULONGLONG elapsedMilliseconds, DWORD plannedSeconds) noexcept;
