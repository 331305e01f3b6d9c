#include "agent/host/Addresses.h"

#include <algorithm>
#include <iterator>
#include <span>

namespace
{
std::span<const BYTE> Bytes(const SOCKADDR_INET& address) noexcept
{
    if (IsV4(address))
        return {reinterpret_cast<const BYTE*>(&address.Ipv4.sin_addr), 4};
    return {reinterpret_cast<const BYTE*>(&address.Ipv6.sin6_addr), 16};
}

// The host part of an address, as a number; for IPv4 and prefixes of 1 to 31 bits.
ULONG HostMask(BYTE prefixLength) noexcept
{
    return 0xFFFFFFFFu >> prefixLength;
}
} // namespace

bool IsV4(const SOCKADDR_INET& address) noexcept
{
    return address.si_family == AF_INET;
}

bool IsLinkLocal(const SOCKADDR_INET& address) noexcept
{
    const auto bytes = Bytes(address);
    if (IsV4(address))
        return bytes[0] == 169 && bytes[1] == 254;
    return bytes[0] == 0xFE && (bytes[1] & 0xC0) == 0x80;
}

bool IsPlaceholderDns(const SOCKADDR_INET& address) noexcept
{
    constexpr BYTE kPrefix[] = {0xFE, 0xC0, 0, 0, 0, 0, 0xFF, 0xFF};
    return !IsV4(address) && std::equal(std::begin(kPrefix), std::end(kPrefix), Bytes(address).begin());
}

bool InSamePrefix(const SOCKADDR_INET& a, const SOCKADDR_INET& b, BYTE prefixLength) noexcept
{
    if (a.si_family != b.si_family)
        return false;
    const auto left = Bytes(a);
    const auto right = Bytes(b);
    const size_t whole = std::min<size_t>(prefixLength / 8, left.size());
    if (!std::equal(left.begin(), left.begin() + static_cast<std::ptrdiff_t>(whole), right.begin()))
        return false;
    const int rest = prefixLength % 8;
    return whole == left.size() || rest == 0 || ((left[whole] ^ right[whole]) >> (8 - rest)) == 0;
}

bool IsNetworkOrBroadcast(const SOCKADDR_INET& address, BYTE prefixLength) noexcept
{
    if (!IsV4(address) || prefixLength < 1 || prefixLength > 30)
        return false;
    const ULONG host = ntohl(address.Ipv4.sin_addr.s_addr) & HostMask(prefixLength);
    return host == 0 || host == HostMask(prefixLength);
}

std::string ReverseName(const SOCKADDR_INET& address)
{
    constexpr char kDigits[] = "0123456789abcdef";
    const auto bytes = Bytes(address);
    std::string name;
    for (auto byte = bytes.rbegin(); byte != bytes.rend(); ++byte)
        if (IsV4(address))
            name += std::to_string(*byte) + ".";
        else
            name += {kDigits[*byte & 15], '.', kDigits[*byte >> 4], '.'};
    return name + (IsV4(address) ? "in-addr.arpa" : "ip6.arpa");
}

bool IsUsable(const COwnAddress& own) noexcept
{
    return !IsLinkLocal(own.Address) &&
           (own.Duplicates == IpDadStatePreferred || own.Duplicates == IpDadStateDeprecated);
}

std::optional<SOCKADDR_INET> SourceFor(const CAdapterFacts& adapter, const SOCKADDR_INET& target) noexcept
{
    for (const COwnAddress& own : adapter.Addresses)
        if (own.Address.si_family == target.si_family &&
            (IsLinkLocal(target) ? IsLinkLocal(own.Address) : IsUsable(own)))
            return own.Address;
    return std::nullopt;
}
