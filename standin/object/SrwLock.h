// Scopes for a slim lock, which costs an object eight bytes and nothing to make. Not recursive.
#pragma once

#include <windows.h>

namespace standin
{
class CExclusive
{
  public:
    explicit CExclusive(SRWLOCK& lock) noexcept : m_lock(lock) { AcquireSRWLockExclusive(&m_lock); }
    CExclusive(const CExclusive&) = delete;
    CExclusive& operator=(const CExclusive&) = delete;
    ~CExclusive() { ReleaseSRWLockExclusive(&m_lock); }

  private:
    SRWLOCK& m_lock;
};

class CShared
{
  public:
    explicit CShared(SRWLOCK& lock) noexcept : m_lock(lock) { AcquireSRWLockShared(&m_lock); }
    CShared(const CShared&) = delete;
    CShared& operator=(const CShared&) = delete;
    ~CShared() { ReleaseSRWLockShared(&m_lock); }

  private:
    SRWLOCK& m_lock;
};
} // namespace standin
