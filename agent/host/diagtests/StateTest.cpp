// Test 8: are adapter and driver in a state in which they can work?
#include "agent/AgentCodes.h"
#include "agent/host/HostTest.h"

#include <algorithm>

namespace
{
// IPv6 asks for 1280 bytes at least; no Ethernet frame carries more than 65535.
constexpr ULONG kSmallestMtu = 1280;
constexpr ULONG kLargestMtu = 65535;

bool IsGroupAddress(const std::vector<BYTE>& mac) noexcept
{
    return (mac[0] & 1) != 0; // the broadcast address is one too
}
} // namespace

HRESULT RunStateTest(const CHostRun& run)
{
    CAdapterFacts adapter;
    const HRESULT hr = run.Read(adapter);
    if (FAILED(hr))
        return hr;
    if (adapter.OperStatus == IfOperStatusNotPresent)
        return vorl::state::NotPresent;
    if (adapter.AdminStatus != NET_IF_ADMIN_STATUS_UP)
        return vorl::state::Disabled;
    if (adapter.Paused || adapter.LowPower)
        return vorl::state::Suspended;
    const auto& mac = adapter.MacAddress;
    if (mac.size() != 6 || std::all_of(mac.begin(), mac.end(), [](BYTE b) { return b == 0; }))
        return vorl::state::NoMacAddress;
    if (IsGroupAddress(mac))
        return vorl::state::BadMacAddress;
    if (adapter.Mtu < kSmallestMtu || adapter.Mtu > kLargestMtu)
        return vorl::state::BadMtu;
    if (adapter.OperStatus == IfOperStatusDown && adapter.Media == MediaConnectStateConnected)
        return vorl::state::DownWithLink;
    return S_OK;
}
