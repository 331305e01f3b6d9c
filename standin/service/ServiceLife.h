// What keeps the service process up: clients and running requests. Any thread.
#pragma once

#include "Common/src/com/Owned.h"

#include <atomic>

namespace standin
{
class CServiceLife
{
  public:
    CServiceLife() : m_lastChange(GetTickCount64()), m_changed(CreateEventW(nullptr, FALSE, FALSE, nullptr))
    {
    }

    // Holds the process up until destroyed; may be moved.
    class CUse
    {
      public:
        CUse() noexcept = default;
        explicit CUse(CServiceLife& life) noexcept : m_life(&life) { ++life.m_uses; }
        CUse(CUse&& other) noexcept : m_life(other.m_life) { other.m_life = nullptr; }
        CUse& operator=(CUse&& other) noexcept
        {
            std::swap(m_life, other.m_life);
            return *this;
        }
        ~CUse()
        {
            if (m_life)
                m_life->Left();
        }

      private:
        CServiceLife* m_life = nullptr;
    };

    long Uses() const noexcept { return m_uses; }
    // Since when, in milliseconds of the system's uptime, nothing has come or gone.
    ULONGLONG LastChange() const noexcept { return m_lastChange; }
    // Set whenever a use has ended.
    HANDLE Changed() const noexcept { return m_changed.Get(); }

  private:
    void Left() noexcept
    {
        m_lastChange = GetTickCount64();
        --m_uses;
        SetEvent(m_changed.Get());
    }

    std::atomic<long> m_uses{0};
    std::atomic<ULONGLONG> m_lastChange;
    CHandle m_changed;
};
} // namespace standin
