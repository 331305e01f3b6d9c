// Test 5: is the adapter's address configuration one that can work?
#include "agent/AgentCodes.h"
#include "agent/host/AddressCarrier.h"
#include "agent/host/Addresses.h"
#include "agent/host/HostTest.h"

#include <algorithm>

namespace
{
// A subnet larger than the largest class of network is a typing error; 0 means that none was set.
bool IsSane(const COwnAddress& own) noexcept
{
    if (!IsV4(own.Address))
        return own.PrefixLength >= 1 && own.PrefixLength <= 128;
    return own.PrefixLength >= 8 && own.PrefixLength <= 32 &&
           !IsNetworkOrBroadcast(own.Address, own.PrefixLength);
}

// Routers announce themselves with link-local IPv6 addresses. Point-to-point prefixes (/31, /32) have
// gateways outside by design.
bool IsReachable(const SOCKADDR_INET& gateway, const std::vector<COwnAddress>& addresses)
{
    return IsLinkLocal(gateway) ||
           std::any_of(addresses.begin(), addresses.end(),
                       [&](const COwnAddress& own)
                       {
                           const bool pointToPoint =
                               IsV4(own.Address) && own.PrefixLength >= 31 && IsV4(gateway);
                           return pointToPoint || InSamePrefix(gateway, own.Address, own.PrefixLength);
                       });
}

HRESULT Judge(const CAdapterFacts& adapter)
{
    const auto& own = adapter.Addresses;
    if (own.empty())
        return vorl::address::None;
    if (std::any_of(own.begin(), own.end(),
                    [](const COwnAddress& a) { return a.Duplicates == IpDadStateDuplicate; }))
        return vorl::address::Duplicate;
    if (std::all_of(own.begin(), own.end(), [](const COwnAddress& a) { return IsLinkLocal(a.Address); }))
        return vorl::address::SelfAssigned;
    if (std::none_of(own.begin(), own.end(), IsUsable))
        return vorl::address::Unconfirmed;
    if (!std::all_of(own.begin(), own.end(), IsSane))
        return vorl::address::BadPrefix;
    if (adapter.Gateways.empty())
        return vorl::address::NoGateway;
    const auto reachable = [&](const SOCKADDR_INET& gateway) { return IsReachable(gateway, own); };
    return std::all_of(adapter.Gateways.begin(), adapter.Gateways.end(), reachable)
               ? S_OK
               : vorl::address::GatewayOutside;
}
} // namespace

HRESULT RunAddressTest(const CHostRun& run)
{
    CAdapterFacts adapter;
    const HRESULT hr = run.Read(adapter);
    return FAILED(hr) ? hr : CarriedOutcome(adapter.AddressCarrier, Judge(adapter));
}
