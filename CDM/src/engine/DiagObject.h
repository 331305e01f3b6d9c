// What tests, settings and results have in common: the key under which the manager files them. Objects are
// shared: one that is removed from its map while a request reads it lives until that request lets go. Any
// thread may call anything; every record that is copied out is consistent in itself.
#pragma once

#include "CDM/src/ZebDebug.h"
#include "CDM/src/engine/SharedLock.h"
#include "Common/src/com/Bstr.h"

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
