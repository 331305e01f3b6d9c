#include "agent/host/stamp/StampPackets.h"

#include <algorithm>

namespace
{
// Where the fields stand. A sender's packet has the first four and zeros in the place of the others.
struct CLayout
{
    size_t Number;
    size_t Sent;
    size_t ErrorEstimate;
    size_t Session;
    size_t Received;
    size_t SenderNumber;
    size_t SenderSent;
    size_t SenderErrorEstimate;
    size_t HopLimit;
    size_t Smallest; // of what is read: packets of RFC 5357 end with the hop limit
    size_t Size;     // with the zeros, and the MAC if there is one
};

constexpr CLayout kOpen = {0, 4, 12, 14, 16, 24, 28, 36, 40, 41, 44};
constexpr CLayout kAuthenticated = {0, 16, 24, 26, 32, 48, 64, 72, 80, 112, 112};

const CLayout& LayoutOf(StampMode mode) noexcept
{
    return mode == StampMode::Open ? kOpen : kAuthenticated;
}

using CBytes = std::span<const uint8_t>;

uint16_t Get16(CBytes bytes, size_t at) noexcept
{
    return static_cast<uint16_t>(bytes[at] << 8 | bytes[at + 1]);
}
uint32_t Get32(CBytes bytes, size_t at) noexcept
{
    return uint32_t{Get16(bytes, at)} << 16 | Get16(bytes, at + 2);
}
CStampTime GetTime(CBytes bytes, size_t at) noexcept
{
    return {Get32(bytes, at), Get32(bytes, at + 4)};
}

void Put16(std::span<uint8_t> bytes, size_t at, uint16_t value) noexcept
{
    bytes[at] = static_cast<uint8_t>(value >> 8);
    bytes[at + 1] = static_cast<uint8_t>(value);
}
void Put32(std::span<uint8_t> bytes, size_t at, uint32_t value) noexcept
{
    Put16(bytes, at, static_cast<uint16_t>(value >> 16));
    Put16(bytes, at + 2, static_cast<uint16_t>(value));
}
void PutTime(std::span<uint8_t> bytes, size_t at, const CStampTime& value) noexcept
{
    Put32(bytes, at, value.Seconds);
    Put32(bytes, at + 4, value.Fraction);
}

void Clear(std::span<uint8_t> bytes, const CLayout& layout) noexcept
{
    std::fill_n(bytes.begin(), std::min(bytes.size(), layout.Size), uint8_t{0});
}

// A clock with no error at all is none.
bool IsSaneEstimate(uint16_t errorEstimate) noexcept
{
    return (errorEstimate & 0xFF) != 0;
}
} // namespace

size_t StampSize(StampMode mode) noexcept
{
    return LayoutOf(mode).Size;
}

std::optional<CSenderPacket> ReadSenderPacket(CBytes bytes, StampMode mode) noexcept
{
    const CLayout& at = LayoutOf(mode);
    if (bytes.size() < at.Smallest || !IsSaneEstimate(Get16(bytes, at.ErrorEstimate)))
        return std::nullopt;
    return CSenderPacket{Get32(bytes, at.Number), GetTime(bytes, at.Sent), Get16(bytes, at.ErrorEstimate),
                         Get16(bytes, at.Session)};
}

std::optional<CReflectorPacket> ReadReflectorPacket(CBytes bytes, StampMode mode) noexcept
{
    const CLayout& at = LayoutOf(mode);
    if (bytes.size() < at.Smallest)
        return std::nullopt;
    return CReflectorPacket{Get32(bytes, at.Number),
                            GetTime(bytes, at.Sent),
                            Get16(bytes, at.ErrorEstimate),
                            Get16(bytes, at.Session),
                            GetTime(bytes, at.Received),
                            Get32(bytes, at.SenderNumber),
                            GetTime(bytes, at.SenderSent),
                            Get16(bytes, at.SenderErrorEstimate),
                            bytes[at.HopLimit]};
}

void WriteSenderPacket(const CSenderPacket& packet, StampMode mode, std::span<uint8_t> bytes) noexcept
{
    const CLayout& at = LayoutOf(mode);
    Clear(bytes, at);
    Put32(bytes, at.Number, packet.Number);
    PutTime(bytes, at.Sent, packet.Sent);
    Put16(bytes, at.ErrorEstimate, packet.ErrorEstimate);
    Put16(bytes, at.Session, packet.Session);
}

void WriteReflectorPacket(const CReflectorPacket& packet, StampMode mode, std::span<uint8_t> bytes) noexcept
{
    const CLayout& at = LayoutOf(mode);
    Clear(bytes, at);
    Put32(bytes, at.Number, packet.Number);
    PutTime(bytes, at.Sent, packet.Sent);
    Put16(bytes, at.ErrorEstimate, packet.ErrorEstimate);
    Put16(bytes, at.Session, packet.Session);
    PutTime(bytes, at.Received, packet.Received);
    Put32(bytes, at.SenderNumber, packet.SenderNumber);
    PutTime(bytes, at.SenderSent, packet.SenderSent);
    Put16(bytes, at.SenderErrorEstimate, packet.SenderErrorEstimate);
    bytes[at.HopLimit] = packet.HopLimit;
}
