#include "agent/host/HostAgent.h"

#include "agent/AgentCodes.h"
#include "tests/support/AgentLists.h"
#include "tests/unit/agent/FakeNetwork.h"

#include <future>
#include <gtest/gtest.h>

namespace
{
class HostAgent : public testing::Test
{
  protected:
    // The network belongs to the agent; a test changes it before it calls.
    CFakeNetwork* m_network = new CFakeNetwork();
    // Counters are watched until the run is stopped.
    ComPtr<CHostAgent> m_agent = MakeCom<CHostAgent>(std::unique_ptr<INetworkFacts>(m_network), INFINITE);
    CBstr m_key{kAdapterKey};
};

TEST_F(HostAgent, ListsTheKeysInTheOrderOfTheSystem)
{
    CAdapterFacts second = HealthyAdapter();
    second.Key = L"{B}";
    m_network->Looks = {{HealthyAdapter(), second}};
    std::vector<std::wstring> keys;
    EXPECT_EQ(S_OK, m_agent->Initialize(0));
    EXPECT_EQ(S_OK, ListAdapters(*m_agent, keys));
    EXPECT_EQ((std::vector<std::wstring>{kAdapterKey, L"{B}"}), keys);
}

TEST_F(HostAgent, NoWiredAdapterIsAnEmptyList)
{
    m_network->Looks = {{}};
    std::vector<std::wstring> keys;
    EXPECT_EQ(S_OK, ListAdapters(*m_agent, keys));
    EXPECT_TRUE(keys.empty());
}

TEST_F(HostAgent, OffersTheEightOrdinaryTestsAndSenderAndResponder)
{
    std::vector<VormTestDescriptor> tests;
    EXPECT_EQ(S_OK, ListTests(*m_agent, kAdapterKey, tests));
    EXPECT_EQ((std::vector<ULONG>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10}), Ids(tests));
    EXPECT_EQ(3501u, tests.front().NameStringID);
    EXPECT_EQ(3510u, tests.back().NameStringID);
}

TEST_F(HostAgent, UnknownAdaptersAndTestsHaveTheirCodes)
{
    std::vector<VormTestDescriptor> tests;
    EXPECT_EQ(vorl::NoSuchAdapter, ListTests(*m_agent, L"{C}", tests));
    EXPECT_TRUE(tests.empty());
    EXPECT_EQ(vorl::NoSuchAdapter, m_agent->RunDiagTest(CBstr(L"{C}").Get(), 1));
    EXPECT_EQ(vorl::NoSuchAdapter, m_agent->RunDiagTest(nullptr, 1));
    EXPECT_EQ(vorl::NoSuchTest, m_agent->RunDiagTest(m_key.Get(), 0));
    EXPECT_EQ(vorl::NoSuchTest, m_agent->RunDiagTest(m_key.Get(), 11));
}

TEST_F(HostAgent, AdapterThatDisappearsBetweenListAndRun)
{
    m_network->Looks = {{HealthyAdapter()}, {}};
    std::vector<std::wstring> keys;
    EXPECT_EQ(S_OK, ListAdapters(*m_agent, keys));
    EXPECT_EQ(vorl::NoSuchAdapter, m_agent->RunDiagTest(m_key.Get(), 1));
}

TEST_F(HostAgent, RefusingSystemHasItsCodeAndLeavesNoList)
{
    m_network->ListStatus = ERROR_ACCESS_DENIED;
    std::vector<std::wstring> keys;
    std::vector<VormTestDescriptor> tests;
    EXPECT_EQ(vorl::FactsUnavailable, ListAdapters(*m_agent, keys));
    EXPECT_EQ(vorl::FactsUnavailable, ListTests(*m_agent, kAdapterKey, tests));
    EXPECT_TRUE(keys.empty());
    EXPECT_TRUE(tests.empty());
}

TEST_F(HostAgent, PassedIsSuccess)
{
    EXPECT_EQ(S_OK, m_agent->RunDiagTest(m_key.Get(), 1));
    // As the provider passes it on: in the case of its own keys.
    EXPECT_EQ(S_OK, m_agent->RunDiagTest(CBstr(L"{00000004-0000-0000-0000-0000000000ab}").Get(), 1));
}

TEST_F(HostAgent, StopEndsTheRunThatItNamesAndNoOther)
{
    const CHandle looked(CreateEventW(nullptr, FALSE, FALSE, nullptr));
    m_network->Looked = looked.Get();
    auto run = std::async(std::launch::async, [this] { return m_agent->RunDiagTest(m_key.Get(), 3); });
    WaitForSingleObject(looked.Get(), INFINITE);

    EXPECT_EQ(vorl::AlreadyRunning, m_agent->RunDiagTest(m_key.Get(), 3));
    EXPECT_EQ(vorl::NotRunning, m_agent->StopTest(m_key.Get(), 4));
    EXPECT_EQ(vorl::NotRunning, m_agent->StopTest(CBstr(L"{C}").Get(), 3));
    EXPECT_EQ(S_OK, m_agent->StopTest(CBstr(L"{00000004-0000-0000-0000-0000000000ab}").Get(), 3));
    EXPECT_EQ(vorl::Stopped, run.get());
    EXPECT_EQ(vorl::NotRunning, m_agent->StopTest(m_key.Get(), 3));
}

TEST_F(HostAgent, OrdinaryTestsHaveNoStatisticsAndOthersOnlyWhileTheyRun)
{
    VormTestStatistics statistics = {};
    statistics.Counter[0] = 5;
    EXPECT_EQ(vorl::NoStatistics, m_agent->GetDiagTestStatistics(m_key.Get(), 1, &statistics));
    EXPECT_EQ(0u, statistics.Counter[0]);
    EXPECT_EQ(vorl::NotRunning, m_agent->GetDiagTestStatistics(m_key.Get(), 9, &statistics));
    EXPECT_EQ(vorl::NotRunning, m_agent->GetDiagTestStatistics(m_key.Get(), 10, &statistics));
    EXPECT_EQ(vorl::NoStatistics, m_agent->GetDiagTestStatistics(m_key.Get(), 11, &statistics));
}

TEST_F(HostAgent, NullPointersAreRefused)
{
    ULONG count = 0;
    BSTR* keys = nullptr;
    VormTestDescriptor* tests = nullptr;
    EXPECT_EQ(E_POINTER, m_agent->EnumAdapters(nullptr, &keys));
    EXPECT_EQ(E_POINTER, m_agent->EnumAdapters(&count, nullptr));
    EXPECT_EQ(E_POINTER, m_agent->EnumDiagTests(m_key.Get(), nullptr, &tests));
    EXPECT_EQ(E_POINTER, m_agent->EnumDiagTests(m_key.Get(), &count, nullptr));
    EXPECT_EQ(E_POINTER, m_agent->GetDiagTestStatistics(m_key.Get(), 1, nullptr));
}
} // namespace
