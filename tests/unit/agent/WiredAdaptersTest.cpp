#include "agent/host/WiredAdapters.h"

#include "tests/support/CaseName.h"

namespace
{
MIB_IF_ROW2 PhysicalEthernet()
{
    MIB_IF_ROW2 row = {};
    row.Type = IF_TYPE_ETHERNET_CSMACD;
    row.TunnelType = TUNNEL_TYPE_NONE;
    row.PhysicalMediumType = NdisPhysicalMedium802_3;
    row.InterfaceAndOperStatusFlags.HardwareInterface = TRUE;
    row.InterfaceAndOperStatusFlags.ConnectorPresent = TRUE;
    return row;
}

struct Case
{
    const char* name;
    void (*change)(MIB_IF_ROW2&);
    HostKind host;
    bool hasGateway;
    bool wired;
};

class WiredAdapter : public testing::TestWithParam<Case>
{
};

TEST_P(WiredAdapter, IsTold)
{
    MIB_IF_ROW2 row = PhysicalEthernet();
    GetParam().change(row);
    EXPECT_EQ(GetParam().wired, IsWiredAdapter(row, GetParam().host, GetParam().hasGateway));
}

void AsItIs(MIB_IF_ROW2&) {}

INSTANTIATE_TEST_SUITE_P(
    Rows, WiredAdapter,
    testing::Values(
        Case{"Physical", AsItIs, HostKind::NotTold, false, true},
        Case{"MediumLeftOpen",
             [](MIB_IF_ROW2& row) { row.PhysicalMediumType = NdisPhysicalMediumUnspecified; },
             HostKind::NotTold, false, true},
        Case{"Loopback", [](MIB_IF_ROW2& row) { row.Type = IF_TYPE_SOFTWARE_LOOPBACK; }, HostKind::NotTold,
             true, false},
        Case{"Wireless", [](MIB_IF_ROW2& row) { row.Type = IF_TYPE_IEEE80211; }, HostKind::NotTold, true,
             false},
        Case{"Bluetooth", [](MIB_IF_ROW2& row) { row.PhysicalMediumType = NdisPhysicalMediumBluetooth; },
             HostKind::NotTold, true, false},
        Case{"Tunnel", [](MIB_IF_ROW2& row) { row.TunnelType = TUNNEL_TYPE_TEREDO; }, HostKind::NotTold, true,
             false},
        Case{"Virtual", [](MIB_IF_ROW2& row) { row.InterfaceAndOperStatusFlags.HardwareInterface = FALSE; },
             HostKind::NotTold, true, false},
        Case{"NoConnector",
             [](MIB_IF_ROW2& row) { row.InterfaceAndOperStatusFlags.ConnectorPresent = FALSE; },
             HostKind::NotTold, true, false},
        Case{"Filter", [](MIB_IF_ROW2& row) { row.InterfaceAndOperStatusFlags.FilterInterface = TRUE; },
             HostKind::NotTold, true, false},
        Case{"DeviceOfTheHost", AsItIs, HostKind::Device, false, true},
        Case{"VirtualOnTheHost", AsItIs, HostKind::Virtual, false, false},
        Case{"VirtualOnTheHostButTheWayOut", AsItIs, HostKind::Virtual, true, true},
        Case{"WirelessOnTheHost", AsItIs, HostKind::Wireless, true, false}),
    NameOf<Case>);

TEST(WiredAdapters, HostsTellNothingOfUnknownInterfaces)
{
    EXPECT_EQ(HostKind::NotTold, AskHost(L"no such interface"));
}
} // namespace
