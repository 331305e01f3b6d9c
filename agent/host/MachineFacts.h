// What the operating system says about all interfaces of the machine at one moment.
#pragma once

#include "agent/host/AdapterFacts.h"

struct CInterface
{
    MIB_IF_ROW2 Row = {};
    std::vector<COwnAddress> Addresses;
    std::vector<SOCKADDR_INET> Gateways;
    std::vector<SOCKADDR_INET> DnsServers;
};

struct CMachineFacts
{
    std::vector<CInterface> Interfaces;
    // Which interface stands on top of which; empty where the system does not tell.
    std::vector<MIB_IFSTACK_ROW> Stack;
    ULONG64 Moment = 0;
};
