#include "agent/host/AddressCarrier.h"

#include "agent/AgentCodes.h"
#include "agent/host/Addresses.h"

#include <algorithm>

namespace
{
// The indices of all interfaces above this one, the nearest ones first. Index 0 is the end of the stack.
std::vector<NET_IFINDEX> Above(const CMachineFacts& machine, NET_IFINDEX lowest)
{
    std::vector<NET_IFINDEX> found = {lowest};
    for (size_t i = 0; i < found.size(); ++i)
        for (const MIB_IFSTACK_ROW& row : machine.Stack)
            if (row.LowerLayerInterfaceIndex == found[i] && row.HigherLayerInterfaceIndex != 0 &&
                std::find(found.begin(), found.end(), row.HigherLayerInterfaceIndex) == found.end())
                found.push_back(row.HigherLayerInterfaceIndex);
    found.erase(found.begin());
    return found;
}

int Rank(const CInterface& candidate)
{
    if (candidate.Addresses.empty())
        return 0;
    if (!candidate.Gateways.empty())
        return 3;
    return std::any_of(candidate.Addresses.begin(), candidate.Addresses.end(), IsUsable) ? 2 : 1;
}

// How many pieces of hardware the interface stands on.
size_t Members(const CMachineFacts& machine, NET_IFINDEX upper)
{
    const auto isMember = [&](const CInterface& each)
    {
        const auto above = Above(machine, each.Row.InterfaceIndex);
        return each.Row.InterfaceAndOperStatusFlags.HardwareInterface &&
               std::find(above.begin(), above.end(), upper) != above.end();
    };
    return static_cast<size_t>(std::count_if(machine.Interfaces.begin(), machine.Interfaces.end(), isMember));
}

// A product's name is not translated. The one driver of teams and bridges has a translated name, so that the
// number of members has to tell as well.
Carrier KindOf(const CMachineFacts& machine, const CInterface& carrier)
{
    const std::wstring_view driver = carrier.Row.Description;
    if (driver.find(L"Hyper-V") != driver.npos)
        return Carrier::VirtualSwitch;
    return driver.find(L"Multiplexor") != driver.npos || Members(machine, carrier.Row.InterfaceIndex) > 1
               ? Carrier::TeamOrBridge
               : Carrier::Above;
}

struct CCarrierCodes
{
    HRESULT Passed;
    HRESULT Offset;
};

CCarrierCodes CodesOf(Carrier kind) noexcept
{
    switch (kind)
    {
    case Carrier::VirtualSwitch:
        return {vorl::carrier::VirtualSwitch, vorl::carrier::VirtualSwitchOffset};
    case Carrier::TeamOrBridge:
        return {vorl::carrier::TeamOrBridge, vorl::carrier::TeamOrBridgeOffset};
    case Carrier::Above:
        return {vorl::carrier::Above, vorl::carrier::AboveOffset};
    default:
        return {S_OK, 0};
    }
}
} // namespace

CAddressCarrier FindCarrier(const CMachineFacts& machine, const CInterface& adapter)
{
    const CInterface* best = &adapter;
    if (adapter.Addresses.empty())
        for (const NET_IFINDEX index : Above(machine, adapter.Row.InterfaceIndex))
            for (const CInterface& each : machine.Interfaces)
                if (each.Row.InterfaceIndex == index && Rank(each) > Rank(*best))
                    best = &each;
    return {best, best == &adapter ? Carrier::Itself : KindOf(machine, *best)};
}

HRESULT CarriedOutcome(Carrier kind, HRESULT outcome) noexcept
{
    const CCarrierCodes codes = CodesOf(kind);
    if (outcome == S_OK)
        return codes.Passed;
    // Others are not about a carrier: there is no address anywhere, the run was stopped, the adapter is gone.
    const bool ofTheTests = outcome >= vorl::address::SelfAssigned && outcome <= vorl::names::NotSent;
    return ofTheTests ? outcome + codes.Offset : outcome;
}
