// A server with virtual machines. Its first adapter belongs to an external switch that it shares with them,
// its second one has no cable; another switch of its own leads nowhere outside.
#include "tests/unit/agent/machines/Machine.h"

CMachine HyperVHost()
{
    constexpr HRESULT carried = vorl::carrier::VirtualSwitch;
    CMachine machine = {
        "HyperVHost",
        {},
        {{7, {S_OK, S_OK, S_OK, S_OK, carried, carried, carried, S_OK}, L"192.0.2.70"}, {8, kNoCable}}};
    machine.Facts.Interfaces = {
        WithAddress(Virtual(31, L"Hyper-V Virtual Ethernet Adapter"), L"172.28.16.1", 20),
        WithNetwork(Virtual(30, L"Hyper-V Virtual Ethernet Adapter #2"), L"192.0.2.70", L"192.0.2.1"),
        Unplugged(Physical(8, L"Intel(R) I350 Gigabit Network Connection #2")),
        Physical(7, L"Intel(R) I350 Gigabit Network Connection"),
        Filter(20, L"Intel(R) I350 Gigabit Network Connection-WFP Native MAC Layer LightWeight Filter-0000"),
        Virtual(21, L"Hyper-V Virtual Switch Extension Adapter"),
        Virtual(22, L"Hyper-V Virtual Switch Extension Adapter #2"),
    };
    machine.Facts.Stack = {{20, 7}, {21, 20}, {30, 21}, {31, 22}};
    return machine;
}
