#include "agent/host/WiredAdapters.h"

#include "agent/host/AddressCarrier.h"

#include <algorithm>
#include <objbase.h>

namespace
{
CAdapterFacts ToFacts(const MIB_IF_ROW2& row)
{
    CAdapterFacts facts;
    wchar_t key[39] = {};
    StringFromGUID2(row.InterfaceGuid, key, 39);
    facts.Key = key;
    facts.OperStatus = row.OperStatus;
    facts.AdminStatus = row.AdminStatus;
    facts.Media = row.MediaConnectState;
    facts.NotAuthenticated = row.InterfaceAndOperStatusFlags.NotAuthenticated;
    facts.Paused = row.InterfaceAndOperStatusFlags.Paused;
    facts.LowPower = row.InterfaceAndOperStatusFlags.LowPower;
    facts.TransmitSpeed = row.TransmitLinkSpeed;
    facts.ReceiveSpeed = row.ReceiveLinkSpeed;
    facts.Mtu = row.Mtu;
    const ULONG length = std::min<ULONG>(row.PhysicalAddressLength, IF_MAX_PHYS_ADDRESS_LENGTH);
    facts.MacAddress.assign(row.PhysicalAddress, row.PhysicalAddress + length);
    facts.Traffic = {row.InErrors,
                     row.OutErrors,
                     row.InDiscards,
                     row.OutDiscards,
                     row.InUcastPkts + row.InNUcastPkts,
                     row.OutUcastPkts + row.OutNUcastPkts};
    return facts;
}
} // namespace

bool IsWiredAdapter(const CInterface& candidate) noexcept
{
    const MIB_IF_ROW2& row = candidate.Row;
    const auto& flags = row.InterfaceAndOperStatusFlags;
    const bool ethernet = row.Type == IF_TYPE_ETHERNET_CSMACD && row.TunnelType == TUNNEL_TYPE_NONE &&
                          // Bluetooth and some mobile networks pass for Ethernet; drivers of real cards may
                          // leave the medium open.
                          (row.PhysicalMediumType == NdisPhysicalMediumUnspecified ||
                           row.PhysicalMediumType == NdisPhysicalMedium802_3);
    return ethernet && flags.HardwareInterface && flags.ConnectorPresent && !flags.FilterInterface;
}

std::vector<CAdapterFacts> WiredAdapters(const CMachineFacts& machine, WiredRule isWired)
{
    std::vector<const CInterface*> wired;
    for (const CInterface& candidate : machine.Interfaces)
        if (isWired(candidate))
            wired.push_back(&candidate);
    std::sort(wired.begin(), wired.end(),
              [](const auto* a, const auto* b)
              { return a->Row.InterfaceLuid.Value < b->Row.InterfaceLuid.Value; });
    std::vector<CAdapterFacts> adapters;
    for (const CInterface* adapter : wired)
    {
        const CAddressCarrier carrier = FindCarrier(machine, *adapter);
        CAdapterFacts facts = ToFacts(adapter->Row);
        facts.Moment = machine.Moment;
        facts.AddressCarrier = carrier.Kind;
        facts.Addresses = carrier.Interface->Addresses;
        facts.Gateways = carrier.Interface->Gateways;
        facts.DnsServers = carrier.Interface->DnsServers;
        adapters.push_back(std::move(facts));
    }
    return adapters;
}
