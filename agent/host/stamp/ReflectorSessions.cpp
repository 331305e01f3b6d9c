#include "agent/host/stamp/ReflectorSessions.h"

#include <cstring>

namespace
{
bool SameHost(const SOCKADDR_INET& a, const SOCKADDR_INET& b) noexcept
{
    if (a.si_family != b.si_family)
        return false;
    if (a.si_family == AF_INET)
        return a.Ipv4.sin_addr.s_addr == b.Ipv4.sin_addr.s_addr;
    return a.Ipv6.sin6_scope_id == b.Ipv6.sin6_scope_id &&
           std::memcmp(&a.Ipv6.sin6_addr, &b.Ipv6.sin6_addr, sizeof a.Ipv6.sin6_addr) == 0;
}

// The port stands in the same place in both families.
bool SameSender(const SOCKADDR_INET& a, const SOCKADDR_INET& b) noexcept
{
    return a.Ipv4.sin_port == b.Ipv4.sin_port && SameHost(a, b);
}
} // namespace

CReflectorSessions::CReflectorSessions(const CReflectorLimits& limits, uint64_t steady) noexcept
    : m_limits(limits)
{
    m_rate.Begin(limits.Altogether, steady);
}

void CReflectorSessions::ForgetIdle(uint64_t steady) noexcept
{
    for (CReflectorSession& session : m_sessions)
        if (session.IsUsed && steady - session.LastSeen > m_limits.Idle)
        {
            --m_peers[session.PeerIndex].Sessions;
            session = {};
        }
    for (CPeer& peer : m_peers)
        if (peer.IsUsed && peer.Sessions == 0 && steady - peer.LastSeen > m_limits.Idle)
            peer = {};
}

void CReflectorSessions::MakeRoom(size_t peerIndex, uint64_t steady) noexcept
{
    if (m_peers[peerIndex].Sessions < kSessionsOfOnePeer)
        return;
    CReflectorSession* oldest = nullptr;
    for (CReflectorSession& session : m_sessions)
        if (session.IsUsed && session.PeerIndex == peerIndex &&
            (!oldest || session.LastSeen < oldest->LastSeen))
            oldest = &session;
    if (!oldest || steady - oldest->LastSeen < kPause)
        return;
    *oldest = {};
    --m_peers[peerIndex].Sessions;
}

CReflectorSessions::CPeer* CReflectorSessions::FindPeer(const SOCKADDR_INET& address,
                                                        uint64_t steady) noexcept
{
    for (CPeer& peer : m_peers)
        if (peer.IsUsed && SameHost(peer.Address, address))
            return &peer;
    ForgetIdle(steady);
    for (CPeer& peer : m_peers)
        if (!peer.IsUsed)
        {
            peer.IsUsed = true;
            peer.Address = address;
            peer.Rate.Begin(m_limits.PerPeer, steady);
            return &peer;
        }
    return nullptr;
}

CReflectorSession* CReflectorSessions::Begin(const SOCKADDR_INET& peer, uint16_t id,
                                             size_t peerIndex) noexcept
{
    if (m_peers[peerIndex].Sessions >= kSessionsOfOnePeer)
        return nullptr;
    for (CReflectorSession& session : m_sessions)
        if (!session.IsUsed)
        {
            ++m_peers[peerIndex].Sessions;
            session.IsUsed = true;
            session.Peer = peer;
            session.Id = id;
            session.PeerIndex = peerIndex;
            return &session;
        }
    return nullptr;
}

CReflectorSession* CReflectorSessions::Find(const SOCKADDR_INET& peer, uint16_t id, uint64_t steady) noexcept
{
    CPeer* const host = FindPeer(peer, steady);
    if (!host)
        return nullptr;
    host->LastSeen = steady;
    // One who sends too much does not use up what is there for all.
    if (!host->Rate.Take(steady) || !m_rate.Take(steady))
        return nullptr;
    CReflectorSession* session = nullptr;
    for (CReflectorSession& each : m_sessions)
        if (each.IsUsed && each.Id == id && SameSender(each.Peer, peer))
            session = &each;
    if (session && steady - session->LastSeen > m_limits.Idle)
    {
        ForgetIdle(steady);
        session = nullptr;
    }
    const auto index = static_cast<size_t>(host - m_peers.data());
    if (!session)
        session = Begin(peer, id, index);
    if (!session)
    {
        ForgetIdle(steady);
        MakeRoom(index, steady);
        session = Begin(peer, id, index);
    }
    if (session)
        session->LastSeen = steady;
    return session;
}
