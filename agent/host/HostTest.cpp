#include "agent/host/HostTest.h"

#include "Common/src/com/Text.h"
#include "agent/AgentCodes.h"

#include <algorithm>

HRESULT CHostRun::Read(CAdapterFacts& adapter) const
{
    std::vector<CAdapterFacts> adapters;
    if (m_network.ListAdapters(adapters) != NO_ERROR)
        return vorl::FactsUnavailable;
    const auto found = std::find_if(adapters.begin(), adapters.end(),
                                    [this](const CAdapterFacts& facts)
                                    { return EqualNoCaseAscii(facts.Key, m_adapterKey); });
    if (found == adapters.end())
        return vorl::NoSuchAdapter;
    adapter = std::move(*found);
    return S_OK;
}

std::span<const CHostTest> HostTests() noexcept
{
    static constexpr CHostTest tests[] = {
        {1, RunLinkTest},         {2, RunSpeedTest},
        {3, RunErrorsTest},       {4, RunDiscardsTest},
        {5, RunAddressTest},      {6, RunGatewayTest},
        {7, RunNamesTest},        {8, RunStateTest},
        {9, RunSenderTest, true}, {10, RunResponderTest, true},
    };
    return tests;
}
