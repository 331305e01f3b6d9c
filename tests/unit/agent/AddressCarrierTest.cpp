#include "agent/host/AddressCarrier.h"

#include "agent/AgentCodes.h"
#include "tests/support/CaseName.h"
#include "tests/unit/agent/FakeNetwork.h"
#include "tests/unit/agent/machines/Machine.h"

namespace
{
constexpr NET_IFINDEX kAdapter = 5;

struct StackCase
{
    const char* name;
    std::vector<CInterface> others;
    std::vector<MIB_IFSTACK_ROW> stack;
    NET_IFINDEX carrier;
    Carrier kind;
};

class AddressCarrier : public testing::TestWithParam<StackCase>
{
};

TEST_P(AddressCarrier, IsFoundAboveAnAdapterWithoutAddresses)
{
    CMachineFacts machine;
    machine.Interfaces = GetParam().others;
    machine.Interfaces.push_back(Physical(kAdapter, L"Adapter"));
    machine.Stack = GetParam().stack;
    const CAddressCarrier found = FindCarrier(machine, machine.Interfaces.back());
    EXPECT_EQ(GetParam().carrier, found.Interface->Row.InterfaceIndex);
    EXPECT_EQ(GetParam().kind, found.Kind);
}

CInterface Addressed(NET_IFINDEX index, const wchar_t* description = L"Something else")
{
    return WithAddress(Virtual(index, description), L"192.0.2.5", 24);
}
CInterface WithGateway(NET_IFINDEX index)
{
    return WithNetwork(Virtual(index, L"Something else"), L"192.0.2.5", L"192.0.2.1");
}
CInterface SelfAssigned(NET_IFINDEX index)
{
    return WithAddress(Virtual(index, L"Something else"), L"169.254.7.7", 16);
}

INSTANTIATE_TEST_SUITE_P(
    Stacks, AddressCarrier,
    testing::Values(
        StackCase{"NothingAbove", {Addressed(9)}, {}, kAdapter, Carrier::Itself},
        StackCase{"NothingAboveHasAddresses", {Virtual(9, L"Hyper-V")}, {{9, 5}}, kAdapter, Carrier::Itself},
        StackCase{"DirectlyAbove", {Addressed(9)}, {{9, 5}}, 9, Carrier::Above},
        StackCase{"Below", {Addressed(9)}, {{5, 9}}, kAdapter, Carrier::Itself},
        StackCase{"BehindInterfacesThatAreNotInTheTable",
                  {Addressed(9)},
                  {{7, 5}, {8, 7}, {9, 8}},
                  9,
                  Carrier::Above},
        StackCase{"OrderOfTheRowsDoesNotMatter", {Addressed(9)}, {{9, 8}, {8, 7}, {7, 5}}, 9, Carrier::Above},
        StackCase{"Circle", {Addressed(9)}, {{7, 5}, {5, 7}, {7, 7}}, kAdapter, Carrier::Itself},
        StackCase{"OverTheEndOfTheStack", {Addressed(9)}, {{0, 5}, {9, 0}}, kAdapter, Carrier::Itself},
        StackCase{"NearestFirst", {Addressed(8), Addressed(9)}, {{9, 5}, {8, 9}}, 9, Carrier::Above},
        StackCase{
            "UsableBeforeNearest", {SelfAssigned(9), Addressed(8)}, {{9, 5}, {8, 9}}, 8, Carrier::Above},
        StackCase{
            "GatewayBeforeNearest", {Addressed(9), WithGateway(8)}, {{9, 5}, {8, 9}}, 8, Carrier::Above},
        StackCase{"SelfAssignedIsBetterThanNone", {SelfAssigned(9)}, {{9, 5}}, 9, Carrier::Above},
        StackCase{"VirtualSwitch",
                  {Addressed(9, L"Hyper-V Virtual Ethernet Adapter")},
                  {{9, 5}},
                  9,
                  Carrier::VirtualSwitch},
        StackCase{"TeamOfOne",
                  {Addressed(9, L"Microsoft Network Adapter Multiplexor Driver #2")},
                  {{9, 5}},
                  9,
                  Carrier::TeamOrBridge},
        StackCase{"TeamOfTwoByItsMembers",
                  {Addressed(9), Physical(6, L"Adapter #2")},
                  {{9, 5}, {9, 6}},
                  9,
                  Carrier::TeamOrBridge},
        StackCase{
            "FiltersAreNoMembers", {Addressed(9), Filter(6, L"Filter")}, {{9, 6}, {6, 5}}, 9, Carrier::Above},
        StackCase{"SwitchOnATeam",
                  {Addressed(9, L"Hyper-V Virtual Ethernet Adapter"), Physical(6, L"Adapter #2")},
                  {{9, 8}, {8, 5}, {8, 6}},
                  9,
                  Carrier::VirtualSwitch}),
    NameOf<StackCase>);

TEST(AddressCarriers, AnAdapterWithAnAddressOfItsOwnIsItsOwnCarrier)
{
    CMachineFacts machine;
    machine.Interfaces = {WithGateway(9), WithAddress(Physical(kAdapter, L"Adapter"), L"169.254.7.7", 16)};
    machine.Stack = {{9, 5}};
    const CAddressCarrier found = FindCarrier(machine, machine.Interfaces[1]);
    EXPECT_EQ(&machine.Interfaces[1], found.Interface);
    EXPECT_EQ(Carrier::Itself, found.Kind);
}

struct Outcome
{
    const char* name;
    HRESULT found;
    Carrier kind;
    HRESULT told;
};

class CarriedOutcomeTest : public testing::TestWithParam<Outcome>
{
};

TEST_P(CarriedOutcomeTest, TellsWhoTheCarrierIs)
{
    EXPECT_EQ(GetParam().told, CarriedOutcome(GetParam().kind, GetParam().found));
}

constexpr HRESULT Code(unsigned code)
{
    return static_cast<HRESULT>(code);
}

INSTANTIATE_TEST_SUITE_P(
    Codes, CarriedOutcomeTest,
    testing::Values(
        Outcome{"PassedItself", S_OK, Carrier::Itself, S_OK},
        Outcome{"PassedSwitch", S_OK, Carrier::VirtualSwitch, Code(0x00040500)},
        Outcome{"PassedTeam", S_OK, Carrier::TeamOrBridge, Code(0x00040600)},
        Outcome{"PassedAbove", S_OK, Carrier::Above, Code(0x00040700)},
        Outcome{"FailedItself", vorl::gateway::Silent, Carrier::Itself, Code(0x80040362)},
        Outcome{"FirstOnASwitch", vorl::address::SelfAssigned, Carrier::VirtualSwitch, Code(0x80040552)},
        Outcome{"GatewayOfATeam", vorl::gateway::Silent, Carrier::TeamOrBridge, Code(0x80040662)},
        Outcome{"LastAbove", vorl::names::NotSent, Carrier::Above, Code(0x80040776)},
        Outcome{"NoAddressAnywhere", vorl::address::None, Carrier::VirtualSwitch, vorl::address::None},
        Outcome{"StoppedStaysStopped", vorl::Stopped, Carrier::TeamOrBridge, vorl::Stopped},
        Outcome{"AdapterGone", vorl::NoSuchAdapter, Carrier::TeamOrBridge, vorl::NoSuchAdapter}),
    NameOf<Outcome>);
} // namespace
