// The registry entries of an agent's class, under HKEY_LOCAL_MACHINE\SOFTWARE\Classes\CLSID.
#pragma once

#include "agent/server/AgentClass.h"

enum class ServerKind
{
    InProcess, // InprocServer32 with ThreadingModel "Both"
    Local      // LocalServer32
};

// Registers the module that contains this code. A failure is the registry's code as HRESULT.
HRESULT RegisterAgent(const CAgentClass& agent, ServerKind kind);
// Removes the server's own entry, and the class once no other kind of server is left under it. Nothing to
// remove is a success.
HRESULT UnregisterAgent(const CAgentClass& agent, ServerKind kind);
