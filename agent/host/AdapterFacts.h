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
};

struct COwnAddress
{
    SOCKADDR_INET Address = {};
    BYTE PrefixLength = 0;
    NL_DAD_STATE Duplicates = IpDadStatePreferred; // how the check for duplicates on the network went
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

    std::vector<COwnAddress> Addresses;
    std::vector<SOCKADDR_INET> Gateways;
    std::vector<SOCKADDR_INET> DnsServers;
};
