#include "agent/host/stamp/StampRecord.h"

#include <algorithm>
#include <limits>

namespace
{
template <class Place>
Place Held(uint64_t value) noexcept
{
    return static_cast<Place>(std::min<uint64_t>(value, std::numeric_limits<Place>::max()));
}

// What the counters are; the texts of the lines that show them are in the string tables.
enum Counter
{
    Received = 0, // by the responder
    Replies = 1,
    Sent = 2,
    LostThere = 3,
    RepliesReceived = 4,
    LostBack = 5,
    RepeatedOrOutOfOrder = 6,
    MedianMicroseconds = 7
};

constexpr BYTE kLinkUp = 1; // a run does not outlive its link
} // namespace

VormTestStatistics SenderRecord(const CSenderCounts& counts, const CRoundTrips& roundTrips) noexcept
{
    VormTestStatistics record = {};
    record.Counter[Received] = record.Counter[Replies] = Held<ULONG>(counts.Arrived());
    record.Counter[Sent] = Held<ULONG>(counts.Sent);
    record.Counter[LostThere] = Held<ULONG>(counts.LostThere);
    record.Counter[RepliesReceived] = Held<ULONG>(counts.Answered);
    record.Counter[LostBack] = Held<ULONG>(counts.LostBack);
    record.Counter[RepeatedOrOutOfOrder] = Held<ULONG>(counts.Repeated + counts.OutOfOrder);
    record.Counter[MedianMicroseconds] = Held<ULONG>((roundTrips.Median() + 5) / 10);
    // Rounded up, so that it is never below the median.
    record.Word = Held<USHORT>((roundTrips.Longest() + kStampMillisecond - 1) / kStampMillisecond);
    record.ByteA =
        static_cast<BYTE>(counts.OneSum ? StampRole::SenderToOneWhoDoesNotCount : StampRole::Sender);
    record.ByteB = kLinkUp;
    return record;
}

VormTestStatistics ResponderRecord(const CReflectorCounts& counts) noexcept
{
    VormTestStatistics record = {};
    record.Counter[Received] = Held<ULONG>(counts.Received);
    record.Counter[Replies] = Held<ULONG>(counts.Answered);
    record.Counter[Sent] = Held<ULONG>(counts.Numbers.Sent);
    record.Counter[LostThere] = Held<ULONG>(counts.Numbers.Sent - counts.Numbers.Different);
    record.Counter[RepeatedOrOutOfOrder] = Held<ULONG>(counts.Numbers.Repeated + counts.Numbers.OutOfOrder);
    record.ByteA = static_cast<BYTE>(StampRole::Responder);
    record.ByteB = kLinkUp;
    return record;
}
