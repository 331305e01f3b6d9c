// What the operating system says about one wired adapter at one moment.
#pragma once

#include <winsock2.h>

#include <ws2ipdef.h>

#include <iphlpapi.h>
#include <string>
#include <vector>

struct CTrafficCounters
{
    ULONG64 ReceiveErrors = 0;
    ULONG64 TransmitErrors = 0;
    ULONG64 ReceiveDiscards = 0;
    ULONG64 TransmitDiscards = 0;
    ULONG64 Received = 0; // frames that arrived whole
    ULONG64 Transmitted = 0;
};

struct COwnAddress
{
    SOCKADDR_INET Address = {};
    BYTE PrefixLength = 0;
    NL_DAD_STATE Duplicates = IpDadStatePreferred; // how the check for duplicates on the network went
};

// Which interface has the addresses through which an adapter is used.
enum class Carrier
{
    Itself,
    VirtualSwitch, // the machine's own adapter on a Hyper-V virtual switch
    TeamOrBridge,
    Above // another interface on top of the adapter
};

struct CAdapterFacts
{
    std::wstring Key; // the interface's GUID, upper case, in braces

    IF_OPER_STATUS OperStatus = IfOperStatusUnknown;
    NET_IF_ADMIN_STATUS AdminStatus = NET_IF_ADMIN_STATUS_UP;
    NET_IF_MEDIA_CONNECT_STATE Media = MediaConnectStateUnknown;
    bool NotAuthenticated = false; // the switch port refuses traffic until the adapter has authenticated
    bool Paused = false;
    bool LowPower = false;

    ULONG64 TransmitSpeed = 0; // bits per second; 0 or all ones where the system does not know it
    ULONG64 ReceiveSpeed = 0;
    ULONG Mtu = 0;
    std::vector<BYTE> MacAddress;
    CTrafficCounters Traffic;
    ULONG64 Moment = 0; // when the counters were read, in milliseconds of a steady clock

    Carrier AddressCarrier = Carrier::Itself; // whose the lists that follow are
    std::vector<COwnAddress> Addresses;
    std::vector<SOCKADDR_INET> Gateways;
    std::vector<SOCKADDR_INET> DnsServers;
};
