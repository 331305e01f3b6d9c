// For development only, and not part of what ships: Wine reports every interface of its host as hardware, so
// this asks the host what stands behind it.
#pragma once

#include "agent/host/WiredAdapters.h"

enum class HostKind
{
    NotTold,
    Device,  // a device stands behind it
    Virtual, // none does
    Wireless
};
HostKind AskHost(const wchar_t* interfaceName) noexcept;

// What connects a machine to its network counts as its wired adapter even where the host knows no device
// behind it, as in a container.
bool IsWiredOnHost(const CInterface& candidate, HostKind host) noexcept;

// The rule of the agent for development.
bool IsWiredUnderWine(const CInterface& candidate) noexcept;
