// Security of the calls that go out to the adapter agent.
#pragma once

#include "Common/src/WomSecurity.h"

#include <unknwn.h>

class CVormRoot
{
  public:
    explicit CVormRoot(bool securityEnabled = true) noexcept : m_security(securityEnabled) {}

    // Lets calls through the proxy `agent` carry the caller's identity. An object in this process has no
    // proxy and a null pointer no object: both are left as they are.
    void SetInterfaceSecurity(IUnknown* agent) const noexcept;

  private:
    CWomSecurity m_security;
};
