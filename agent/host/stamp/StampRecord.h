// The statistics record of a sender and of a responder. A count that its place has no room for stays at the
// largest number there.
#pragma once

#include "agent/Vorl.h"
#include "agent/host/stamp/Reflector.h"
#include "agent/host/stamp/SenderTally.h"

// The record's byte A.
enum class StampRole : BYTE
{
    Sender = 1,
    Responder = 2,
    SenderToOneWhoDoesNotCount = 3 // what was lost on both ways stands as lost on the way there
};

VormTestStatistics SenderRecord(const CSenderCounts& counts, const CRoundTrips& roundTrips) noexcept;
VormTestStatistics ResponderRecord(const CReflectorCounts& counts) noexcept;
