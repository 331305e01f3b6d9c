// While an object of this lives, its thread works as the process and not as the client whose request it
// serves: for what the server does on its own account. The thread that made it destroys it.
#pragma once

#include "Common/src/com/Owned.h"

class CProcessIdentity
{
  public:
    CProcessIdentity() noexcept
    {
        if (OpenThreadToken(GetCurrentThread(), TOKEN_IMPERSONATE, TRUE, m_client.Put()))
            SetThreadToken(nullptr, nullptr);
    }
    ~CProcessIdentity()
    {
        if (m_client)
            SetThreadToken(nullptr, m_client.Get());
    }
    CProcessIdentity(const CProcessIdentity&) = delete;
    CProcessIdentity& operator=(const CProcessIdentity&) = delete;

  private:
    CHandle m_client; // none if the thread worked as the process before
};
