// A server with two adapters in a team; the team has the addresses.
#include "tests/unit/agent/machines/Machine.h"

CMachine Team()
{
    constexpr HRESULT carried = vorl::carrier::TeamOrBridge;
    constexpr std::array<HRESULT, 8> member = {S_OK, S_OK, S_OK, S_OK, carried, carried, carried, S_OK};
    CMachine machine = {"Team", {}, {{4, member, L"192.0.2.40"}, {5, member, L"192.0.2.40"}}};
    machine.Facts.Interfaces = {
        Physical(5, L"Broadcom NetXtreme Gigabit Ethernet #2"),
        Physical(4, L"Broadcom NetXtreme Gigabit Ethernet"),
        WithNetwork(Virtual(16, L"Microsoft Network Adapter Multiplexor Driver"), L"192.0.2.40",
                    L"192.0.2.1"),
        Filter(9, L"Broadcom NetXtreme Gigabit Ethernet-WFP Native MAC Layer LightWeight Filter-0000"),
    };
    machine.Facts.Stack = {{16, 4}, {9, 5}, {16, 9}};
    return machine;
}
