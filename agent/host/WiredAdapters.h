// Which of the system's interfaces are physical wired Ethernet adapters, and what the tests have to know of
// them.
#pragma once

#include "agent/host/MachineFacts.h"

using WiredRule = bool (*)(const CInterface& candidate) noexcept;

// Adapters on PCI, USB and in docking stations count; loopback, Bluetooth, wireless, VPN, tunnel and other
// virtual interfaces do not, nor do teams, bridges and adapters on virtual switches.
bool IsWiredAdapter(const CInterface& candidate) noexcept;

// In the order of their LUIDs which, unlike indices and places in tables, outlive a restart. Throws
// std::bad_alloc only.
std::vector<CAdapterFacts> WiredAdapters(const CMachineFacts& machine, WiredRule isWired = IsWiredAdapter);
