// Test 7: do the DNS servers that are set on this adapter answer? They are asked one by one for the adapter's
// own address, a question that a site's servers answer themselves; a look-up through the system's resolver
// could be answered by a server of another adapter, or from memory.
#include "agent/AgentCodes.h"
#include "agent/host/AddressCarrier.h"
#include "agent/host/Addresses.h"
#include "agent/host/HostTest.h"

#include <algorithm>

namespace
{
// How many servers gave each kind of reply.
struct CTally
{
    size_t Answered = 0;
    size_t Refused = 0;
    size_t Silent = 0;
    size_t NotSent = 0;
    size_t NoSource = 0; // of a family in which the adapter has no address
};

HRESULT Verdict(const CTally& tally) noexcept
{
    if (tally.Answered > 0)
        return tally.Refused + tally.Silent + tally.NotSent > 0 ? vorl::names::SomeSilent : S_OK;
    if (tally.Refused > 0)
        return vorl::names::Refused;
    if (tally.Silent > 0)
        return vorl::names::NoneAnswers;
    return tally.NotSent > 0 ? vorl::names::NotSent : vorl::names::NoAddress;
}

HRESULT Ask(const CHostRun& run, CAdapterFacts adapter)
{
    std::erase_if(adapter.DnsServers, IsPlaceholderDns);
    if (adapter.DnsServers.empty())
        return vorl::names::NoServers;
    CTally tally;
    for (const SOCKADDR_INET& server : adapter.DnsServers)
    {
        const std::optional<SOCKADDR_INET> source = SourceFor(adapter, server);
        if (!source)
        {
            ++tally.NoSource;
            continue;
        }
        switch (run.Network().AskDnsServer(server, *source, ReverseName(*source), run.StopEvent()))
        {
        case Reply::Answered:
            ++tally.Answered;
            break;
        case Reply::Refused:
            ++tally.Refused;
            break;
        case Reply::Silent:
            ++tally.Silent;
            break;
        case Reply::Stopped:
            return vorl::Stopped;
        default:
            ++tally.NotSent;
            break;
        }
    }
    return Verdict(tally);
}
} // namespace

HRESULT RunNamesTest(const CHostRun& run)
{
    CAdapterFacts adapter;
    const HRESULT hr = run.Read(adapter);
    return FAILED(hr) ? hr : CarriedOutcome(adapter.AddressCarrier, Ask(run, adapter));
}
