// The probes of the real agent that Windows has functions for. Free-threaded. They throw std::bad_alloc only.
#pragma once

#include "agent/host/NetworkFacts.h"

// Asks the adapter's driver; absent where it does not tell.
std::optional<bool> QueryFullDuplex(const std::wstring& adapterKey);
// Waits a second for the answer.
Reply SendEcho(const SOCKADDR_INET& target, const SOCKADDR_INET& source) noexcept;
// IPv4 only: Reply::Unsupported for IPv6.
Reply SendArpRequest(const SOCKADDR_INET& target, const SOCKADDR_INET& source) noexcept;
