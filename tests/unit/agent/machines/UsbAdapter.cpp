// A tablet with an adapter on USB that does not report its duplex mode, and with much that looks like
// Ethernet.
#include "tests/unit/agent/machines/Machine.h"

CMachine UsbAdapter()
{
    CMachine machine = {"UsbAdapter", {}, {{18, kAllPassed, L"192.0.2.18"}}, std::nullopt};
    machine.Listed[0].Outcomes[1] = vorl::speed::DuplexNotReported;
    CInterface usb = WithNetwork(Physical(18, L"ASIX AX88772C USB2.0 to Fast Ethernet Adapter", 100'000'000),
                                 L"192.0.2.18", L"192.0.2.1");
    usb.Row.PhysicalMediumType = NdisPhysicalMediumUnspecified;
    machine.Facts.Interfaces = {
        usb,
        Bluetooth(11),
        WithNetwork(Virtual(12, L"TAP-Windows Adapter V9"), L"198.51.100.12", L"198.51.100.1"),
        WithAddress(Virtual(14, L"Microsoft KM-TEST Loopback Adapter"), L"198.51.100.14", 24),
    };
    return machine;
}
