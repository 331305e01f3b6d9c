// One sender or responder on one adapter, as those see it who ask from other threads: its record, and how its
// last run ended: from the moment on in which that is decided, which is earlier than the call that runs it
// returns. Free-threaded.
#pragma once

#include "agent/Vorl.h"

#include <mutex>

class CMeasurement
{
  public:
    void Begin() noexcept
    {
        const std::lock_guard lock(m_mutex);
        m_running = true;
        m_outcome = S_OK;
        m_record = {};
    }
    void Publish(const VormTestStatistics& record) noexcept
    {
        const std::lock_guard lock(m_mutex);
        m_record = record;
    }
    // Notes how the run has ended, and hands it on. The first outcome of a run stays.
    HRESULT Ended(HRESULT outcome) noexcept
    {
        const std::lock_guard lock(m_mutex);
        if (m_running)
            m_outcome = outcome;
        m_running = false;
        return outcome;
    }

    // False if no run is in progress.
    bool Read(VormTestStatistics& record) const noexcept
    {
        const std::lock_guard lock(m_mutex);
        record = m_running ? m_record : VormTestStatistics{};
        return m_running;
    }
    HRESULT Outcome() const noexcept
    {
        const std::lock_guard lock(m_mutex);
        return m_outcome;
    }

  private:
    mutable std::mutex m_mutex;
    bool m_running = false;
    HRESULT m_outcome = S_OK;
    VormTestStatistics m_record = {};
};
