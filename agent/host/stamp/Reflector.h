// What a responder does with a packet: whether it is answered, and with what. Counts what has come. No packet
// makes it allocate or wait.
#pragma once

#include "agent/host/stamp/ReflectorSessions.h"
#include "agent/host/stamp/StampLine.h"
#include "agent/host/stamp/StampMac.h"

struct CReflectorCounts
{
    uint64_t Received = 0; // well-formed packets, with a good MAC where one is asked for
    uint64_t Answered = 0;
    CTrackCounts Numbers;
};

class CReflector
{
  public:
    // With a MAC the mode is authenticated. `ownPort` is the port, in the network's order, that packets come
    // to.
    CReflector(CStampMac* mac, USHORT ownPort, const CReflectorLimits& limits, uint64_t steady) noexcept
        : m_mac(mac), m_ownPort(ownPort), m_sessions(limits, steady)
    {
    }

    // Turns the packet in `bytes` into its answer, of the same length, and sends it on `line`.
    void Take(std::span<BYTE> bytes, const CArrival& arrival, IStampLine& line) noexcept;

    const CReflectorCounts& Counts() const noexcept { return m_counts; }

  private:
    CStampMac* const m_mac;
    const USHORT m_ownPort;
    CReflectorSessions m_sessions;
    CReflectorCounts m_counts;
};
