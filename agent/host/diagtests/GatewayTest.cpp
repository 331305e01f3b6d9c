// Test 6: does the adapter's default gateway answer?
#include "agent/AgentCodes.h"
#include "agent/host/AddressCarrier.h"
#include "agent/host/Addresses.h"
#include "agent/host/HostTest.h"

namespace
{
// The first request to a neighbour that is not known yet is often lost.
constexpr int kAttempts = 3;

Reply PingPatiently(const CHostRun& run, const SOCKADDR_INET& gateway, const SOCKADDR_INET& source)
{
    Reply reply = Reply::Silent;
    for (int i = 0; i < kAttempts && reply == Reply::Silent; ++i)
        reply = run.IsStopped() ? Reply::Stopped : run.Network().Ping(gateway, source);
    return reply;
}

// Many gateways do not answer echo requests, but every one answers for its hardware address.
Reply Reach(const CHostRun& run, const SOCKADDR_INET& gateway, const SOCKADDR_INET& source)
{
    const Reply ping = PingPatiently(run, gateway, source);
    if (ping == Reply::Answered || ping == Reply::Stopped)
        return ping;
    if (run.IsStopped())
        return Reply::Stopped;
    const Reply neighbour = run.Network().FindNeighbour(gateway, source);
    if (neighbour == Reply::Unsupported)
        return ping;
    // A neighbour that is silent on the link itself is the stronger statement.
    return neighbour == Reply::NotSent && ping == Reply::Silent ? ping : neighbour;
}

HRESULT CodeOf(Reply reply) noexcept
{
    switch (reply)
    {
    case Reply::Answered:
        return S_OK;
    case Reply::Stopped:
        return vorl::Stopped;
    case Reply::Unsupported:
        return vorl::gateway::Unsupported;
    case Reply::NotSent:
        return vorl::gateway::NotSent;
    default:
        return vorl::gateway::Silent;
    }
}

HRESULT Judge(const CHostRun& run, const CAdapterFacts& adapter)
{
    if (adapter.Gateways.empty())
        return vorl::gateway::None;
    // One gateway that answers is enough. Of several failures the first one is told, save that silence, which
    // is an observation, counts more than a probe that could not be made.
    HRESULT hr = S_OK;
    for (const SOCKADDR_INET& gateway : adapter.Gateways)
    {
        SOCKADDR_INET any = {};
        any.si_family = gateway.si_family;
        const HRESULT one = CodeOf(Reach(run, gateway, SourceFor(adapter, gateway).value_or(any)));
        if (one == S_OK || one == vorl::Stopped)
            return one;
        if (hr == S_OK || one == vorl::gateway::Silent)
            hr = one;
    }
    return hr;
}
} // namespace

HRESULT RunGatewayTest(const CHostRun& run)
{
    CAdapterFacts adapter;
    const HRESULT hr = run.Read(adapter);
    return FAILED(hr) ? hr : CarriedOutcome(adapter.AddressCarrier, Judge(run, adapter));
}
