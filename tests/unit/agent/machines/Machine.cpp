#include "tests/unit/agent/machines/Machine.h"

#include "tests/unit/agent/FakeNetwork.h"

#include <cwchar>

namespace
{
GUID IdOf(NET_IFINDEX index)
{
    return {index, 0x1111, 0x2222, {0x83, 0x33, 0, 0, 0, 0, 0, 0}};
}

CInterface Interface(NET_IFINDEX index, const wchar_t* description, ULONG type)
{
    CInterface each;
    MIB_IF_ROW2& row = each.Row;
    row.InterfaceIndex = index;
    row.InterfaceLuid.Value = (static_cast<ULONG64>(type) << 48) | (static_cast<ULONG64>(index) << 24);
    row.InterfaceGuid = IdOf(index);
    std::wcsncpy(row.Description, description, IF_MAX_STRING_SIZE);
    row.Type = type;
    row.TunnelType = TUNNEL_TYPE_NONE;
    row.Mtu = 1500;
    row.PhysicalAddressLength = 6;
    row.PhysicalAddress[0] = 0x02;
    row.PhysicalAddress[5] = static_cast<UCHAR>(index);
    row.OperStatus = IfOperStatusUp;
    row.AdminStatus = NET_IF_ADMIN_STATUS_UP;
    row.MediaConnectState = MediaConnectStateConnected;
    return each;
}
} // namespace

CInterface Physical(NET_IFINDEX index, const wchar_t* description, ULONG64 speed)
{
    CInterface adapter = Interface(index, description, IF_TYPE_ETHERNET_CSMACD);
    MIB_IF_ROW2& row = adapter.Row;
    row.PhysicalMediumType = NdisPhysicalMedium802_3;
    row.InterfaceAndOperStatusFlags.HardwareInterface = TRUE;
    row.InterfaceAndOperStatusFlags.ConnectorPresent = TRUE;
    row.TransmitLinkSpeed = row.ReceiveLinkSpeed = speed;
    row.InUcastPkts = 7000;
    row.OutUcastPkts = 5000;
    return adapter;
}

CInterface Unplugged(CInterface adapter)
{
    MIB_IF_ROW2& row = adapter.Row;
    row.OperStatus = IfOperStatusDown;
    row.MediaConnectState = MediaConnectStateDisconnected;
    row.TransmitLinkSpeed = row.ReceiveLinkSpeed = ~0ULL;
    // The system keeps what it gave to the adapter itself.
    adapter.Addresses = {{Address(L"fe80::77"), 64, IpDadStateDeprecated},
                         {Address(L"169.254.7.7"), 16, IpDadStateTentative}};
    adapter.DnsServers = {Address(L"fec0:0:0:ffff::1")};
    return adapter;
}

CInterface Virtual(NET_IFINDEX index, const wchar_t* description, ULONG type)
{
    CInterface each = Interface(index, description, type);
    each.Row.PhysicalMediumType = NdisPhysicalMediumUnspecified;
    return each;
}

CInterface Filter(NET_IFINDEX index, const wchar_t* description)
{
    CInterface each = Virtual(index, description);
    each.Row.InterfaceAndOperStatusFlags.FilterInterface = TRUE;
    return each;
}

CInterface Wireless(NET_IFINDEX index)
{
    CInterface each = Physical(index, L"Wi-Fi 6 AX201 160MHz");
    each.Row.Type = IF_TYPE_IEEE80211;
    each.Row.PhysicalMediumType = NdisPhysicalMediumNative802_11;
    return each;
}

CInterface Bluetooth(NET_IFINDEX index)
{
    CInterface each = Physical(index, L"Bluetooth Device (Personal Area Network)", 3'000'000);
    each.Row.PhysicalMediumType = NdisPhysicalMediumBluetooth;
    return each;
}

CInterface WithAddress(CInterface to, const wchar_t* address, BYTE prefix)
{
    to.Addresses = {{Address(L"fe80::2"), 64, IpDadStatePreferred},
                    {Address(address), prefix, IpDadStatePreferred}};
    return to;
}

CInterface WithNetwork(CInterface to, const wchar_t* address, const wchar_t* gateway)
{
    to = WithAddress(std::move(to), address, 24);
    to.Gateways = to.DnsServers = {Address(gateway)};
    return to;
}

std::wstring KeyOf(NET_IFINDEX index)
{
    wchar_t key[39] = {};
    StringFromGUID2(IdOf(index), key, 39);
    return key;
}
