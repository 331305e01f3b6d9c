// What tests, settings and results have in common: the key under which the manager files them. Objects are
// shared: one that is removed from its map while a request reads it lives until that request lets go. Any
// thread may call anything; every record that is copied out is consistent in itself.
#pragma once

#include "CDM/src/engine/SharedLock.h"
#include "Common/src/com/Bstr.h"

class CDiagObject
{
  public:
    // Copies the key. A null key is accepted, and traced. Throws std::bad_alloc.
    explicit CDiagObject(BSTR key);
    virtual ~CDiagObject() = default;
    CDiagObject(const CDiagObject&) = delete;
    CDiagObject& operator=(const CDiagObject&) = delete;

    CBstr Key() const;
    void SetKey(CBstr key);

  protected:
    // Holds the key and every changeable field of the derived classes together.
    CSharedLock& Lock() const noexcept { return m_lock; }
    const CBstr& LockedKey() const noexcept { return m_key; }

  private:
    mutable CSharedLock m_lock;
    CBstr m_key;
};
