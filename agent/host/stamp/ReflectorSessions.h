// The sessions that a responder keeps: one for each sender's address, port and session number, and a bound on
// the rate of each address and of all. Memory is fixed: what a packet says cannot make it grow.
#pragma once

#include "agent/host/stamp/NumberTrack.h"
#include "agent/host/stamp/TokenBucket.h"

#include <array>
#include <winsock2.h>

#include <ws2ipdef.h>

struct CReflectorLimits
{
    uint64_t PerPeer = 2'000; // packets a second
    uint64_t Altogether = 10'000;
    uint64_t Idle = 30 * kStampSecond; // a session without a packet for so long is forgotten
};

struct CReflectorSession
{
    bool IsUsed = false;
    SOCKADDR_INET Peer = {};
    uint16_t Id = 0;
    size_t PeerIndex = 0;
    uint64_t LastSeen = 0;
    uint32_t NextNumber = 0;
    CNumberTrack Track;
};

class CReflectorSessions
{
  public:
    static constexpr size_t kSessions = 64;
    static constexpr size_t kPeers = 32;
    static constexpr size_t kSessionsOfOnePeer = 16;
    // After such a pause a session gives way to a new one of the same address, which has no more than its
    // share.
    static constexpr uint64_t kPause = 2 * kStampSecond;

    CReflectorSessions(const CReflectorLimits& limits, uint64_t steady) noexcept;

    // The session that a packet belongs to, a new one if need be; null if it is to have no answer: too many
    // packets, or too many sessions.
    CReflectorSession* Find(const SOCKADDR_INET& peer, uint16_t id, uint64_t steady) noexcept;

  private:
    struct CPeer
    {
        bool IsUsed = false;
        SOCKADDR_INET Address = {};
        uint64_t LastSeen = 0;
        size_t Sessions = 0;
        CTokenBucket Rate;
    };

    CPeer* FindPeer(const SOCKADDR_INET& address, uint64_t steady) noexcept;
    CReflectorSession* Begin(const SOCKADDR_INET& peer, uint16_t id, size_t peerIndex) noexcept;
    void ForgetIdle(uint64_t steady) noexcept;
    void MakeRoom(size_t peerIndex, uint64_t steady) noexcept;

    const CReflectorLimits m_limits;
    CTokenBucket m_rate;
    std::array<CPeer, kPeers> m_peers = {};
    std::array<CReflectorSession, kSessions> m_sessions = {};
};
