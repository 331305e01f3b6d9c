// Every test on every adapter of typical machines.
#include "Common/src/com/Owned.h"
#include "agent/host/HostTest.h"
#include "agent/host/WiredAdapters.h"
#include "tests/support/CaseName.h"
#include "tests/unit/agent/FakeNetwork.h"
#include "tests/unit/agent/machines/Machine.h"

namespace
{
class MachineTest : public testing::TestWithParam<CMachine>
{
};

TEST_P(MachineTest, ListsItsWiredAdaptersAndNoOther)
{
    std::vector<std::wstring> listed;
    for (const CAdapterFacts& adapter : WiredAdapters(GetParam().Facts))
        listed.push_back(adapter.Key);
    std::vector<std::wstring> expected;
    for (const CListed& adapter : GetParam().Listed)
        expected.push_back(KeyOf(adapter.Index));
    EXPECT_EQ(expected, listed);
}

// What the agent sees of the machine, and of the machine two seconds later.
std::deque<std::vector<CAdapterFacts>> TwoLooks(const CMachine& machine)
{
    CMachineFacts later = machine.Facts;
    later.Moment += 2000;
    machine.Later(later);
    return {WiredAdapters(machine.Facts), WiredAdapters(later)};
}

TEST_P(MachineTest, EachTestEndsWithItsCode)
{
    const CHandle stop(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    for (const CListed& adapter : GetParam().Listed)
        for (const CHostTest& test : HostTests())
        {
            if (test.IsMeasured)
                continue;
            CFakeNetwork network;
            network.Looks = TwoLooks(GetParam());
            network.FullDuplex = GetParam().FullDuplex;
            const std::wstring key = KeyOf(adapter.Index);
            EXPECT_EQ(adapter.Outcomes.at(test.Id - 1), test.Run(CHostRun(network, key, stop.Get(), 0)))
                << "test " << test.Id << " on adapter " << adapter.Index;
        }
}

TEST_P(MachineTest, GatewaysAreAskedFromTheInterfaceWithTheAddresses)
{
    const CHandle stop(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    for (const CListed& adapter : GetParam().Listed)
    {
        CFakeNetwork network;
        network.Looks = TwoLooks(GetParam());
        const std::wstring key = KeyOf(adapter.Index);
        RunGatewayTest(CHostRun(network, key, stop.Get(), 0));
        std::vector<ULONG> from;
        for (const auto& [target, source] : network.Pinged)
            from.push_back(source.Ipv4.sin_addr.s_addr);
        std::vector<ULONG> expected;
        if (*adapter.PingedFrom)
            expected.push_back(Address(adapter.PingedFrom).Ipv4.sin_addr.s_addr);
        EXPECT_EQ(expected, from) << "adapter " << adapter.Index;
    }
}

INSTANTIATE_TEST_SUITE_P(Machines, MachineTest,
                         testing::Values(PlainPc(), HyperVHost(), Team(), Bridge(), UsbAdapter(),
                                         LaptopWithDock(), NoWiredAdapter()),
                         NameOf<CMachine>);
} // namespace
