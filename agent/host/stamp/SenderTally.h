// What became of the packets that a sender has sent. Pure counting: times come in as numbers, in 100
// nanoseconds.
//
// A packet's fate is known some time after it was sent, so the counts are those of all packets up to one
// whose fate, like that of all before it, is known. What is on its way is not counted yet.
#pragma once

#include "agent/host/stamp/RoundTrips.h"
#include "agent/host/stamp/StampPackets.h"

#include <array>

struct CSenderCounts
{
    uint64_t Sent = 0;
    uint64_t Answered = 0; // packets of which an answer came in time
    uint64_t LostThere = 0;
    uint64_t LostBack = 0;
    uint64_t Repeated = 0; // answers to packets that had been answered
    uint64_t OutOfOrder = 0;
    // The peer does not count packets itself: LostThere is what was lost on both ways together.
    bool OneSum = false;

    uint64_t Lost() const noexcept { return Sent - Answered; }
    // How many the peer received, as far as that is known.
    uint64_t Arrived() const noexcept { return Answered + LostBack; }
};

class CSenderTally
{
  public:
    static constexpr uint64_t kGrace =
        kStampSecond / 10; // a repeated or overtaken answer is waited for this long
    static constexpr uint64_t kPatience = kStampSecond; // an answer that comes later counts as lost
    static constexpr uint64_t kLastOnes =
        2 * kStampSecond; // the same, if no later packet was answered either

    explicit CSenderTally(bool peerCounts) noexcept : m_peerCounts(peerCounts) {}

    // The number of the packet that is sent next.
    uint32_t NextNumber() const noexcept { return static_cast<uint32_t>(m_next); }
    // Notes that it was sent, at `steady` of a clock that nobody sets, with the time stamp `systemTime`.
    void Sent(uint64_t steady, uint64_t systemTime) noexcept;

    // Notes an answer that arrived at `systemTime`; false if it answers none of the packets sent lately.
    bool Answered(const CReflectorPacket& answer, uint64_t systemTime) noexcept;

    // Counts what has become clear.
    void Settle(uint64_t steady) noexcept;
    // Nobody is there any more: packets after the last one that was answered are not counted.
    void PeerHasGone() noexcept;

    CSenderCounts Counts() const noexcept;
    const CRoundTrips& RoundTrips() const noexcept { return m_roundTrips; }

  private:
    static constexpr size_t kKept = 8192;

    struct CEntry
    {
        uint64_t Number = ~uint64_t{0};
        uint64_t SentSteady = 0;
        uint64_t SentSystem = 0;
        bool IsAnswered = false;
        bool IsOutOfOrder = false;
        uint32_t Repeats = 0;
        uint32_t MoreAtPeer = 0; // of the repeats, those that the peer counted as packets of their own
        int64_t PeerNumber = 0;  // the highest
        uint64_t RoundTrip = 0;
    };

    CEntry* Find(const CReflectorPacket& answer) noexcept;
    int64_t PeerNumberOf(const CReflectorPacket& answer, uint64_t number) noexcept;
    void Repeat(CEntry& entry, int64_t peerNumber) noexcept;
    void Count(const CEntry& entry) noexcept;
    void CountAtPeer(int64_t highest, uint64_t howMany) noexcept;

    const bool m_peerCounts;
    std::array<CEntry, kKept> m_entries = {};
    uint64_t m_next = 0;
    uint64_t m_settled = 0;           // packets below this number are counted
    uint64_t m_afterLastAnswered = 0; // the number after the highest one that was answered
    bool m_peerHasGone = false;

    bool m_peerNumberKnown = false;
    uint32_t m_lastPeerWire = 0;
    int64_t m_lastPeerNumber = 0;

    CSenderCounts m_counts;
    int64_t m_highestAtPeer = -1; // of the packets that are counted
    uint64_t m_seenAtPeer = 0;    // how many of the peer's numbers up to it have been seen
    CRoundTrips m_roundTrips;
};
