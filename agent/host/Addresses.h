// Questions about IP addresses that more than one test asks.
#pragma once

#include "agent/host/AdapterFacts.h"

#include <optional>

bool IsV4(const SOCKADDR_INET& address) noexcept;
// 169.254.0.0/16 or fe80::/10: made up by the machine itself, good on its own link only.
bool IsLinkLocal(const SOCKADDR_INET& address) noexcept;
// fec0:0:0:ffff::1 to ::3, which stand for "no IPv6 DNS server is set".
bool IsPlaceholderDns(const SOCKADDR_INET& address) noexcept;
// Whether the first `prefixLength` bits agree. Addresses of different families never do.
bool InSamePrefix(const SOCKADDR_INET& a, const SOCKADDR_INET& b, BYTE prefixLength) noexcept;
// For IPv4 prefixes of up to 30 bits: the address of the network itself, or its broadcast address.
bool IsNetworkOrBroadcast(const SOCKADDR_INET& address, BYTE prefixLength) noexcept;
// The name under which DNS keeps the reverse entry, such as 1.2.0.192.in-addr.arpa.
std::string ReverseName(const SOCKADDR_INET& address);

// An address that other machines can reach: neither link-local nor a duplicate nor unconfirmed.
bool IsUsable(const COwnAddress& own) noexcept;
// The address from which to reach `target`: usable and of its family, or link-local where the target is too.
std::optional<SOCKADDR_INET> SourceFor(const CAdapterFacts& adapter, const SOCKADDR_INET& target) noexcept;
