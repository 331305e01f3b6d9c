// What the server of an agent serves: one class. Each server defines ServedAgent(); everything else that a
// COM server needs stands here once for all of them.
#pragma once

#include <unknwn.h>

struct CAgentClass
{
    CLSID Id;
    const wchar_t* Description;
    // Makes an agent and asks it for an interface. May throw.
    HRESULT (*Create)(REFIID riid, void** out);
};

const CAgentClass& ServedAgent() noexcept;

// The class factory of an agent; free-threaded.
HRESULT GetAgentFactory(const CAgentClass& agent, REFIID riid, void** out) noexcept;
