// What tests, settings and results have in common: the key under which the manager files them. Objects are
// shared: one that is removed from its map while a request reads it lives until that request lets go. Any
// thread may call anything; every record that is copied out is consistent in itself.
#pragma once

#include "CDM/src/ZebDebug.h"
#include "Common/src/com/Bstr.h"

#include <windows.h>

// The lock that keeps one object's fields or one map together while they are copied. It is held for a few
// instructions, never across a call to the agent, a file or another lock, so that no request can notice it.
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

class CDiagObject
{
  public:
    // Copies the key. A null key is accepted, and traced. Throws std::bad_alloc.
    explicit CDiagObject(BSTR key) : m_key(key)
    {
        if (!key)
            ZebDebug().Write("CDiagObject::CDiagObject:Null Key Value!!");
    }
    virtual ~CDiagObject() = default;
    CDiagObject(const CDiagObject&) = delete;
    CDiagObject& operator=(const CDiagObject&) = delete;

    CBstr Key() const
    {
        const CReadScope held(m_lock);
        return m_key;
    }
    void SetKey(CBstr key)
    {
        const CWriteScope held(m_lock);
        std::swap(m_key, key);
    }

  protected:
    // Holds the key and every changeable field of the derived classes together.
    CSharedLock& Lock() const noexcept { return m_lock; }
    const CBstr& LockedKey() const noexcept { return m_key; }

  private:
    mutable CSharedLock m_lock;
    CBstr m_key;
};
