// A laptop in its docking station: the dock's adapter has the cable, the one on the board has none; a tunnel
// of a VPN is open.
#include "tests/unit/agent/machines/Machine.h"

CMachine LaptopWithDock()
{
    CMachine machine = {"LaptopWithDock", {}, {{10, kNoCable}, {23, kAllPassed, L"192.0.2.23"}}};
    machine.Facts.Interfaces = {
        WithNetwork(Physical(23, L"Realtek USB GbE Family Controller"), L"192.0.2.23", L"192.0.2.1"),
        Unplugged(Physical(10, L"Intel(R) Ethernet Connection (13) I219-LM")),
        WithNetwork(Wireless(17), L"192.0.2.17", L"192.0.2.1"),
        Bluetooth(11),
        WithAddress(Virtual(40, L"WireGuard Tunnel", IF_TYPE_PROP_VIRTUAL), L"198.51.100.40", 32),
    };
    return machine;
}
