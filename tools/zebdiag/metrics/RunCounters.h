// What a run that sends or answers test packets has counted, as numbers.
#pragma once

#include "tools/zebdiag/Model.h"

#include <optional>

namespace zebdiag
{
// The values that the role of a run can have; others are an agent's own.
enum class RunRole : unsigned long
{
    Sender = 1,
    Responder = 2,
    SenderWithoutDirection = 3 // it cannot tell on which way packets were lost
};

struct CRunCounters
{
    RunRole Role;
    unsigned long Link;               // 1: up
    unsigned long MedianMicroseconds; // of the round trip
    unsigned long ResponderReceived;
    unsigned long ResponderSent;
    unsigned long SenderSent;
    unsigned long SenderReceived;
    unsigned long Disordered; // twice, or out of order
    unsigned long LostOut;    // on the way to the responder; on both ways if the direction is unknown
    unsigned long LostBack;
    unsigned long LongestMilliseconds; // round trip
};

// Absent if the result shows no counters. The provider gives each as a line of text that ends with the
// number, in an order that is always the same, so no language has to be known.
std::optional<CRunCounters> CountersOf(const CResult& result);
} // namespace zebdiag
