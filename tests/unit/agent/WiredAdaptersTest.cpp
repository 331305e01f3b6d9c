#include "agent/host/WiredAdapters.h"

#include "agent/wine/WineOnly.h"
#include "tests/support/CaseName.h"
#include "tests/unit/agent/machines/Machine.h"

namespace
{
struct RowCase
{
    const char* name;
    void (*change)(MIB_IF_ROW2&);
    bool wired;
};

class WiredAdapter : public testing::TestWithParam<RowCase>
{
};

TEST_P(WiredAdapter, IsTold)
{
    CInterface adapter = Physical(5, L"Adapter");
    GetParam().change(adapter.Row);
    EXPECT_EQ(GetParam().wired, IsWiredAdapter(adapter));
}

void AsItIs(MIB_IF_ROW2&) {}

INSTANTIATE_TEST_SUITE_P(
    Rows, WiredAdapter,
    testing::Values(
        RowCase{"Physical", AsItIs, true},
        RowCase{"MediumLeftOpen",
                [](MIB_IF_ROW2& row) { row.PhysicalMediumType = NdisPhysicalMediumUnspecified; }, true},
        RowCase{"Loopback", [](MIB_IF_ROW2& row) { row.Type = IF_TYPE_SOFTWARE_LOOPBACK; }, false},
        RowCase{"Wireless", [](MIB_IF_ROW2& row) { row.Type = IF_TYPE_IEEE80211; }, false},
        RowCase{"Bluetooth", [](MIB_IF_ROW2& row) { row.PhysicalMediumType = NdisPhysicalMediumBluetooth; },
                false},
        RowCase{"MobileNetwork",
                [](MIB_IF_ROW2& row) { row.PhysicalMediumType = NdisPhysicalMediumWirelessWan; }, false},
        RowCase{"Tunnel", [](MIB_IF_ROW2& row) { row.TunnelType = TUNNEL_TYPE_TEREDO; }, false},
        RowCase{"Virtual",
                [](MIB_IF_ROW2& row) { row.InterfaceAndOperStatusFlags.HardwareInterface = FALSE; }, false},
        RowCase{"NoConnector",
                [](MIB_IF_ROW2& row) { row.InterfaceAndOperStatusFlags.ConnectorPresent = FALSE; }, false},
        RowCase{"Filter", [](MIB_IF_ROW2& row) { row.InterfaceAndOperStatusFlags.FilterInterface = TRUE; },
                false}),
    NameOf<RowCase>);

struct HostCase
{
    const char* name;
    CInterface adapter;
    HostKind host;
    bool wired;
};

class WiredOnHost : public testing::TestWithParam<HostCase>
{
};

TEST_P(WiredOnHost, IsTold)
{
    EXPECT_EQ(GetParam().wired, IsWiredOnHost(GetParam().adapter, GetParam().host));
}

CInterface WayOut()
{
    return WithNetwork(Physical(5, L"Adapter"), L"192.0.2.5", L"192.0.2.1");
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, WiredOnHost,
    testing::Values(HostCase{"NotTold", Physical(5, L"Adapter"), HostKind::NotTold, true},
                    HostCase{"Device", Physical(5, L"Adapter"), HostKind::Device, true},
                    HostCase{"Virtual", Physical(5, L"Adapter"), HostKind::Virtual, false},
                    HostCase{"VirtualButTheWayOut", WayOut(), HostKind::Virtual, true},
                    HostCase{"Wireless", WayOut(), HostKind::Wireless, false},
                    HostCase{"NotEthernetAtAll", Wireless(5), HostKind::Device, false}),
    NameOf<HostCase>);

TEST(WiredAdapters, HostsTellNothingOfUnknownInterfaces)
{
    EXPECT_EQ(HostKind::NotTold, AskHost(L"no such interface"));
}

TEST(WiredAdapters, FactsAreThoseOfTheRow)
{
    CMachineFacts machine;
    machine.Moment = 4711;
    machine.Interfaces = {WayOut()};
    MIB_IF_ROW2& row = machine.Interfaces[0].Row;
    row.AdminStatus = NET_IF_ADMIN_STATUS_DOWN;
    row.OperStatus = IfOperStatusDormant;
    row.MediaConnectState = MediaConnectStateDisconnected;
    row.InterfaceAndOperStatusFlags.NotAuthenticated = TRUE;
    row.InterfaceAndOperStatusFlags.Paused = TRUE;
    row.InterfaceAndOperStatusFlags.LowPower = TRUE;
    row.TransmitLinkSpeed = 1;
    row.ReceiveLinkSpeed = 2;
    row.Mtu = 3;
    row.InErrors = 4;
    row.OutErrors = 5;
    row.InDiscards = 6;
    row.OutDiscards = 7;
    row.InUcastPkts = 100;
    row.InNUcastPkts = 20;
    row.OutUcastPkts = 300;
    row.OutNUcastPkts = 40;
    const auto adapters = WiredAdapters(machine);
    ASSERT_EQ(1u, adapters.size());
    const CAdapterFacts& facts = adapters[0];
    EXPECT_EQ(KeyOf(5), facts.Key);
    EXPECT_EQ(4711u, facts.Moment);
    EXPECT_EQ(NET_IF_ADMIN_STATUS_DOWN, facts.AdminStatus);
    EXPECT_EQ(IfOperStatusDormant, facts.OperStatus);
    EXPECT_EQ(MediaConnectStateDisconnected, facts.Media);
    EXPECT_TRUE(facts.NotAuthenticated && facts.Paused && facts.LowPower);
    EXPECT_EQ(1u, facts.TransmitSpeed);
    EXPECT_EQ(2u, facts.ReceiveSpeed);
    EXPECT_EQ(3u, facts.Mtu);
    EXPECT_EQ((std::vector<BYTE>{2, 0, 0, 0, 0, 5}), facts.MacAddress);
    EXPECT_EQ(4u, facts.Traffic.ReceiveErrors);
    EXPECT_EQ(5u, facts.Traffic.TransmitErrors);
    EXPECT_EQ(6u, facts.Traffic.ReceiveDiscards);
    EXPECT_EQ(7u, facts.Traffic.TransmitDiscards);
    EXPECT_EQ(120u, facts.Traffic.Received);
    EXPECT_EQ(340u, facts.Traffic.Transmitted);
    EXPECT_EQ(Carrier::Itself, facts.AddressCarrier);
    EXPECT_EQ(2u, facts.Addresses.size());
    EXPECT_EQ(1u, facts.Gateways.size());
    EXPECT_EQ(1u, facts.DnsServers.size());
}
} // namespace
