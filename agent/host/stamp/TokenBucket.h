// A bound on a rate: so many a second on average, with as many at once.
#pragma once

#include "agent/host/stamp/StampTime.h"

#include <algorithm>

class CTokenBucket
{
  public:
    // Begins full.
    void Begin(uint64_t perSecond, uint64_t steady) noexcept
    {
        m_perSecond = perSecond;
        m_left = perSecond * kStampSecond;
        m_last = steady;
    }
    // `steady`: in 100 nanoseconds, from a clock that nobody sets.
    bool Take(uint64_t steady) noexcept
    {
        const uint64_t full = m_perSecond * kStampSecond;
        const uint64_t passed = std::min(steady - m_last, kStampSecond);
        m_last = steady;
        m_left = std::min(full, m_left + passed * m_perSecond);
        if (m_left < kStampSecond)
            return false;
        m_left -= kStampSecond;
        return true;
    }

  private:
    uint64_t m_perSecond = 0;
    uint64_t m_left = 0; // in parts of a token
    uint64_t m_last = 0;
};
