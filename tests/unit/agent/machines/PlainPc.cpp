// A desktop computer with one adapter on its board.
#include "tests/unit/agent/machines/Machine.h"

CMachine PlainPc()
{
    CMachine machine = {"PlainPc", {}, {{12, kAllPassed, L"192.0.2.20"}}};
    machine.Facts.Interfaces = {
        WithAddress(Virtual(1, L"Software Loopback Interface 1", IF_TYPE_SOFTWARE_LOOPBACK), L"127.0.0.1", 8),
        WithNetwork(Physical(12, L"Realtek PCIe GbE Family Controller"), L"192.0.2.20", L"192.0.2.1"),
        Filter(13, L"Realtek PCIe GbE Family Controller-WFP Native MAC Layer LightWeight Filter-0000"),
        Filter(14, L"Realtek PCIe GbE Family Controller-QoS Packet Scheduler-0000"),
        Virtual(2, L"WAN Miniport (IP)"),
        Virtual(3, L"WAN Miniport (Network Monitor)"),
        Virtual(4, L"Microsoft Teredo Tunneling Adapter", IF_TYPE_TUNNEL),
    };
    // Rows of index 0 are the ends of the stack.
    machine.Facts.Stack = {{13, 12}, {14, 13}, {0, 14}, {12, 0}, {0, 1}};
    // Traffic, and one packet of it that was of no use: a network is no laboratory.
    machine.Later = [](CMachineFacts& facts)
    {
        facts.Interfaces[1].Row.InUcastPkts += 900;
        facts.Interfaces[1].Row.InNUcastPkts += 40;
        facts.Interfaces[1].Row.InDiscards += 1;
    };
    machine.Listed[0].Outcomes[3] = vorl::discards::Few;
    return machine;
}
