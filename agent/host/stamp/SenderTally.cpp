#include "agent/host/stamp/SenderTally.h"

#include <algorithm>

void CSenderTally::Sent(uint64_t steady, uint64_t systemTime) noexcept
{
    CEntry& entry = m_entries[m_next % kKept];
    // What would be overwritten is as good as lost.
    if (m_next - m_settled >= kKept)
    {
        Count(entry);
        ++m_settled;
    }
    entry = {};
    entry.Number = m_next++;
    entry.SentSteady = steady;
    entry.SentSystem = systemTime;
}

CSenderTally::CEntry* CSenderTally::Find(const CReflectorPacket& answer) noexcept
{
    const uint32_t age = static_cast<uint32_t>(m_next) - 1 - answer.SenderNumber;
    if (m_next == 0 || age >= kKept || age >= m_next)
        return nullptr;
    CEntry& entry = m_entries[(m_next - 1 - age) % kKept];
    return IsEcho(ToStampTime(entry.SentSystem), answer.SenderSent) ? &entry : nullptr;
}

// The peer's number with the bits that the packet has no room for, counted from its first packet.
int64_t CSenderTally::PeerNumberOf(const CReflectorPacket& answer, uint64_t number) noexcept
{
    if (!m_peerNumberKnown)
    {
        m_peerNumberKnown = true;
        // More than were sent: the peer goes on counting from before this run.
        const auto ours = static_cast<int64_t>(number);
        m_lastPeerNumber = std::min<int64_t>(answer.Number, ours);
        m_lastPeerWire = answer.Number;
        return m_lastPeerNumber;
    }
    const int64_t found = m_lastPeerNumber + static_cast<int32_t>(answer.Number - m_lastPeerWire);
    if (found > m_lastPeerNumber)
    {
        m_lastPeerNumber = found;
        m_lastPeerWire = answer.Number;
    }
    return found;
}

bool CSenderTally::Answered(const CReflectorPacket& answer, uint64_t systemTime) noexcept
{
    CEntry* const entry = Find(answer);
    if (!entry)
        return false;
    const bool counted = entry->Number < m_settled;
    if (counted && !entry->IsAnswered)
        return true; // too late; it is counted as lost
    const int64_t peerNumber = PeerNumberOf(answer, entry->Number);
    if (entry->IsAnswered)
    {
        Repeat(*entry, peerNumber);
        return true;
    }
    entry->IsAnswered = true;
    entry->PeerNumber = peerNumber;
    entry->IsOutOfOrder = entry->Number < m_afterLastAnswered;
    m_afterLastAnswered = std::max(m_afterLastAnswered, entry->Number + 1);
    // A clock that was set back meanwhile, here or there, gives no time of use.
    const auto whole = static_cast<int64_t>(systemTime - entry->SentSystem);
    const int64_t atPeer =
        StampDistance(answer.Received, answer.Sent, CountsNanoseconds(answer.ErrorEstimate));
    const bool plausible = atPeer >= 0 && atPeer <= whole;
    entry->RoundTrip = static_cast<uint64_t>(std::max<int64_t>(plausible ? whole - atPeer : whole, 0));
    return true;
}

void CSenderTally::Repeat(CEntry& entry, int64_t peerNumber) noexcept
{
    const bool another = peerNumber != entry.PeerNumber;
    if (entry.Number < m_settled)
    {
        ++m_counts.Repeated;
        if (another)
            CountAtPeer(peerNumber, 1);
        return;
    }
    ++entry.Repeats;
    entry.MoreAtPeer += another;
    entry.PeerNumber = std::max(entry.PeerNumber, peerNumber);
}

void CSenderTally::CountAtPeer(int64_t highest, uint64_t howMany) noexcept
{
    m_highestAtPeer = std::max(m_highestAtPeer, highest);
    m_seenAtPeer += howMany;
}

void CSenderTally::Count(const CEntry& entry) noexcept
{
    ++m_counts.Sent;
    if (!entry.IsAnswered)
        return;
    ++m_counts.Answered;
    m_counts.Repeated += entry.Repeats;
    m_counts.OutOfOrder += entry.IsOutOfOrder;
    CountAtPeer(entry.PeerNumber, uint64_t{1} + entry.MoreAtPeer);
    m_roundTrips.Add(entry.RoundTrip);
}

void CSenderTally::Settle(uint64_t steady) noexcept
{
    // Counts end with a packet that was answered, because those after it cannot tell yet on which way they
    // were lost; unless nothing has come for so long that nothing will.
    uint64_t known = m_settled;
    for (uint64_t number = m_settled; number < m_next; ++number)
    {
        const CEntry& entry = m_entries[number % kKept];
        const uint64_t age = steady - entry.SentSteady;
        const bool lastOne = number >= m_afterLastAnswered;
        if (lastOne && m_peerHasGone)
            break;
        if (age < (entry.IsAnswered ? kGrace : lastOne ? kLastOnes : kPatience))
            break;
        if (entry.IsAnswered || lastOne)
            known = number + 1;
    }
    for (; m_settled < known; ++m_settled)
        Count(m_entries[m_settled % kKept]);
}

void CSenderTally::PeerHasGone() noexcept
{
    m_peerHasGone = true;
}

CSenderCounts CSenderTally::Counts() const noexcept
{
    CSenderCounts counts = m_counts;
    const uint64_t lost = counts.Lost();
    const auto passedAtPeer = static_cast<uint64_t>(m_highestAtPeer + 1);
    const uint64_t missing = passedAtPeer > m_seenAtPeer ? passedAtPeer - m_seenAtPeer : 0;
    counts.OneSum = !m_peerCounts;
    counts.LostBack = m_peerCounts ? std::min(missing, lost) : 0;
    counts.LostThere = lost - counts.LostBack;
    return counts;
}
