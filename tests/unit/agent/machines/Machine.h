// Machines as the system describes them to the agent: all their interfaces, and what each test has to find.
// They are put together from what the system documents and is known to report; what a real machine reports
// otherwise belongs here.
#pragma once

#include "agent/AgentCodes.h"
#include "agent/host/MachineFacts.h"

#include <array>
#include <functional>
#include <optional>
#include <string>

struct CListed
{
    NET_IFINDEX Index;
    std::array<HRESULT, 8> Outcomes; // of tests 1 to 8
    const wchar_t* PingedFrom = L""; // the address; empty where no gateway is asked
};

struct CMachine
{
    const char* name;
    CMachineFacts Facts;
    std::vector<CListed> Listed; // in the agent's order
    std::optional<bool> FullDuplex = true;
    std::function<void(CMachineFacts&)> Later = [](CMachineFacts&) {}; // what two seconds change
};

// An interface that the system calls hardware with a connector.
CInterface Physical(NET_IFINDEX index, const wchar_t* description, ULONG64 speed = 1'000'000'000);
CInterface Unplugged(CInterface adapter);
// One that it does not.
CInterface Virtual(NET_IFINDEX index, const wchar_t* description, ULONG type = IF_TYPE_ETHERNET_CSMACD);
// A filter driver's entry in the stack.
CInterface Filter(NET_IFINDEX index, const wchar_t* description);
CInterface Wireless(NET_IFINDEX index);
CInterface Bluetooth(NET_IFINDEX index);

CInterface WithAddress(CInterface to, const wchar_t* address, BYTE prefix);
// With an address, a gateway and a DNS server.
CInterface WithNetwork(CInterface to, const wchar_t* address, const wchar_t* gateway);

// The key under which the agent lists the interface.
std::wstring KeyOf(NET_IFINDEX index);

CMachine PlainPc();
CMachine HyperVHost();
CMachine Team();
CMachine Bridge();
CMachine UsbAdapter();
CMachine LaptopWithDock();
CMachine NoWiredAdapter();

// What a good adapter gives that has its addresses itself.
inline constexpr std::array<HRESULT, 8> kAllPassed = {};
// One without a cable: what needs no link passes, all others say why they cannot.
inline constexpr std::array<HRESULT, 8> kNoCable = {vorl::link::Down,
                                                    vorl::speed::NoLink,
                                                    vorl::errors::NotUp,
                                                    vorl::discards::NotUp,
                                                    vorl::address::SelfAssigned,
                                                    vorl::gateway::None,
                                                    vorl::names::NoServers,
                                                    S_OK};
