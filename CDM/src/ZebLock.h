// The scope that holds a critical section and shows its steps in the trace.
#pragma once

#include "CDM/src/ZebDebug.h"
#include "Common/src/com/CriticalSection.h"

class CZebLock
{
  public:
    explicit CZebLock(CCriticalSection& section) noexcept : m_section(section)
    {
        ZebDebug().Write("Locking %p", &m_section);
        m_section.Enter();
        ZebDebug().Write("Entered");
    }
    ~CZebLock()
    {
        ZebDebug().Write("Unlocking %p", &m_section);
        m_section.Leave();
    }
    CZebLock(const CZebLock&) = delete;
    CZebLock& operator=(const CZebLock&) = delete;

  private:
    CCriticalSection& m_section;
};
