// Loads the adapter agent for one provider object and releases it when that goes. Which agent is loaded is an
// administrator's choice (registry value TestVorl). Initialised before the first request and destroyed after
// the last one, so no lock guards it; the agent itself is called from many threads.
#pragma once

#include "Common/src/WomSecurity.h"
#include "Common/src/com/ComPtr.h"
#include "agent/Vorl.h"

// Security of the calls that go out to the agent.
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

class CVormAgentMgr
{
  public:
    CVormAgentMgr() noexcept = default;
    // Takes a reference on an agent that is loaded already.
    explicit CVormAgentMgr(IVormRoot* loaded) noexcept : m_root(loaded) {}
    CVormAgentMgr(const CVormAgentMgr&) = delete;
    CVormAgentMgr& operator=(const CVormAgentMgr&) = delete;
    // Survives an agent that throws while it is released.
    ~CVormAgentMgr();

    // Loads the agent and initialises it with `flags`. Fails with COM's code if it could not be loaded, else
    // with the agent's own; an agent that refused to initialise is kept until destruction.
    HRESULT Initialize(ULONG flags, const CLSID& agentClass);
    // Null until an agent is loaded. The reference stays the manager's.
    IVormRoot* Root() const noexcept { return m_root.Get(); }

  private:
    ComPtr<IVormRoot> m_root;
};
