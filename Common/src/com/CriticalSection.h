// A critical section that initialises and deletes itself, and the plain scope that holds it. If the trace has
// to show the locking, use CZebLock instead.
#pragma once

#include <windows.h>

class CCriticalSection
{
  public:
    CCriticalSection() noexcept { InitializeCriticalSection(&m_section); }
    ~CCriticalSection() { DeleteCriticalSection(&m_section); }
    CCriticalSection(const CCriticalSection&) = delete;
    CCriticalSection& operator=(const CCriticalSection&) = delete;

    void Enter() noexcept { EnterCriticalSection(&m_section); }
    void Leave() noexcept { LeaveCriticalSection(&m_section); }

  private:
    CRITICAL_SECTION m_section;
};

class CLockScope
{
  public:
    explicit CLockScope(CCriticalSection& section) noexcept : m_section(section) { m_section.Enter(); }
    ~CLockScope() { m_section.Leave(); }
    CLockScope(const CLockScope&) = delete;
    CLockScope& operator=(const CLockScope&) = delete;

  private:
    CCriticalSection& m_section;
};
