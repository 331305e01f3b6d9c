// A small laptop without a socket for a cable.
#include "tests/unit/agent/machines/Machine.h"

CMachine NoWiredAdapter()
{
    CMachine machine = {"NoWiredAdapter", {}, {}};
    machine.Facts.Interfaces = {
        WithAddress(Virtual(1, L"Software Loopback Interface 1", IF_TYPE_SOFTWARE_LOOPBACK), L"127.0.0.1", 8),
        WithNetwork(Wireless(17), L"192.0.2.17", L"192.0.2.1"),
        Bluetooth(11),
        WithNetwork(Virtual(12, L"WAN Miniport (IKEv2)", IF_TYPE_PPP), L"198.51.100.12", L"198.51.100.1"),
    };
    return machine;
}
