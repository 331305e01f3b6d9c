// Which of the system's interfaces are physical wired Ethernet adapters.
#pragma once

#include "agent/host/AdapterFacts.h"

// What a host system below this one says of an interface. Windows runs on no other system; Wine does, and
// reports every interface of its host as hardware.
enum class HostKind
{
    NotTold,
    Device,  // a device stands behind it
    Virtual, // none does
    Wireless
};
HostKind AskHost(const wchar_t* interfaceName) noexcept;

// `hasGateway`: what connects a machine to its network counts as its wired adapter even where the host knows
// no device behind it, as in a container.
bool IsWiredAdapter(const MIB_IF_ROW2& row, HostKind host, bool hasGateway) noexcept;
