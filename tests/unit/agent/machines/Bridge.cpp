// A German computer that bridges a wired and a wireless network. The driver's name is translated; that the
// bridge stands on two adapters tells what it is.
#include "tests/unit/agent/machines/Machine.h"

CMachine Bridge()
{
    constexpr HRESULT carried = vorl::carrier::TeamOrBridge;
    CMachine machine = {
        "Bridge", {}, {{6, {S_OK, S_OK, S_OK, S_OK, carried, carried, carried, S_OK}, L"192.0.2.60"}}};
    machine.Facts.Interfaces = {
        Physical(6, L"Realtek Gaming GbE Family Controller"),
        Wireless(9),
        WithNetwork(Virtual(15, L"Microsoft-Netzwerkadapter-Multiplexortreiber"), L"192.0.2.60",
                    L"192.0.2.1"),
    };
    machine.Facts.Stack = {{15, 6}, {15, 9}};
    return machine;
}
