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
    friend class CReadScope;
    friend class CWriteScope;
    SRWLOCK m_lock = SRWLOCK_INIT;
};

class CReadScope
{
  public:
    explicit CReadScope(CSharedLock& lock) noexcept : m_lock(lock.m_lock) { AcquireSRWLockShared(&m_lock); }
    ~CReadScope() { ReleaseSRWLockShared(&m_lock); }
    CReadScope(const CReadScope&) = delete;
    CReadScope& operator=(const CReadScope&) = delete;

  private:
    SRWLOCK& m_lock;
};

class CWriteScope
{
  public:
    explicit CWriteScope(CSharedLock& lock) noexcept : m_lock(lock.m_lock)
    {
        AcquireSRWLockExclusive(&m_lock);
    }
    ~CWriteScope() { ReleaseSRWLockExclusive(&m_lock); }
    CWriteScope(const CWriteScope&) = delete;
    CWriteScope& operator=(const CWriteScope&) = delete;

  private:
    SRWLOCK& m_lock;
};
