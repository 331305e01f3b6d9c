// The time stamps of test packets. Pure functions of numbers, for any platform.
#pragma once

#include <cstdint>

// Seconds since 1900-01-01 UTC and a fraction: parts of 2^32, or nanoseconds where the clock that took the
// stamp says so.
struct CStampTime
{
    uint32_t Seconds = 0;
    uint32_t Fraction = 0;

    bool operator==(const CStampTime&) const = default;
};

// The system's clocks count 100 nanoseconds.
inline constexpr uint64_t kStampSecond = 10'000'000;
inline constexpr uint64_t kStampMillisecond = kStampSecond / 1000;

// `systemTime`: 100 nanoseconds since 1601-01-01 UTC.
CStampTime ToStampTime(uint64_t systemTime) noexcept;

// What our clock says of itself: not synchronised, right to about a millisecond.
inline constexpr uint16_t kOurErrorEstimate = 0x1601;
// Whether stamps with this error estimate count nanoseconds.
bool CountsNanoseconds(uint16_t errorEstimate) noexcept;

// Whether an answer gives our stamp back: to a microsecond, because there are peers that round it.
bool IsEcho(const CStampTime& sent, const CStampTime& echoed) noexcept;

// From the one stamp to the other, in 100 nanoseconds; stamps of one clock, less than 68 years apart.
int64_t StampDistance(const CStampTime& earlier, const CStampTime& later, bool nanoseconds) noexcept;
