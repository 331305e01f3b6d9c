// The lock that keeps one object's fields or one map together while they are copied. It is held for a few
// instructions, never across a call to the agent, a file or another lock, so that no request can notice it.
#pragma once

#include <windows.h>

class CSharedLock
{
  public:
    CSharedLock() noexcept = default;
    CSharedLock(const CSharedLock&) = delete;
    CSharedLock& operator=(const CSharedLock&) = delete;

  private:
    template <auto Acquire, auto Release>
    friend class CSharedLockScope;
    SRWLOCK m_lock = SRWLOCK_INIT;
};

template <auto Acquire, auto Release>
class CSharedLockScope
{
  public:
    explicit CSharedLockScope(CSharedLock& lock) noexcept : m_lock(lock.m_lock) { Acquire(&m_lock); }
    ~CSharedLockScope() { Release(&m_lock); }
    CSharedLockScope(const CSharedLockScope&) = delete;
    CSharedLockScope& operator=(const CSharedLockScope&) = delete;

  private:
    SRWLOCK& m_lock;
};

using CReadScope = CSharedLockScope<&AcquireSRWLockShared, &ReleaseSRWLockShared>;
using CWriteScope = CSharedLockScope<&AcquireSRWLockExclusive, &ReleaseSRWLockExclusive>;
