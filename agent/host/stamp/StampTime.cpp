#include "agent/host/stamp/StampTime.h"

#include <algorithm>

namespace
{
constexpr uint64_t kFrom1601To1900 = 9'435'484'800; // seconds

int64_t FractionOf(const CStampTime& stamp, bool nanoseconds) noexcept
{
    if (nanoseconds)
        return stamp.Fraction / 100;
    // Rounded, so that a stamp of ours comes back as what it was made from.
    return static_cast<int64_t>((uint64_t{stamp.Fraction} * kStampSecond + (1u << 31)) >> 32);
}
} // namespace

CStampTime ToStampTime(uint64_t systemTime) noexcept
{
    // The count of seconds begins anew in 2036, as the form has it.
    const auto seconds = static_cast<uint32_t>(systemTime / kStampSecond - kFrom1601To1900);
    const auto fraction = static_cast<uint32_t>(((systemTime % kStampSecond) << 32) / kStampSecond);
    return {seconds, fraction};
}

bool CountsNanoseconds(uint16_t errorEstimate) noexcept
{
    return (errorEstimate & 0x4000) != 0;
}

bool IsEcho(const CStampTime& sent, const CStampTime& echoed) noexcept
{
    constexpr uint64_t kMicrosecond = (uint64_t{1} << 32) / 1'000'000;
    const uint64_t ours = uint64_t{sent.Seconds} << 32 | sent.Fraction;
    const uint64_t theirs = uint64_t{echoed.Seconds} << 32 | echoed.Fraction;
    return std::min(ours - theirs, theirs - ours) <= kMicrosecond;
}

int64_t StampDistance(const CStampTime& earlier, const CStampTime& later, bool nanoseconds) noexcept
{
    const auto seconds = static_cast<int32_t>(later.Seconds - earlier.Seconds);
    return seconds * static_cast<int64_t>(kStampSecond) + FractionOf(later, nanoseconds) -
           FractionOf(earlier, nanoseconds);
}
