// The test packets of the Simple Two-way Active Measurement Protocol (RFC 8762), which those of RFC 5357
// without authentication share as far as they go. Pure functions of bytes, for any platform: nothing here
// allocates, waits or looks at anything but the bytes.
#pragma once

#include "agent/host/stamp/StampTime.h"

#include <cstddef>
#include <optional>
#include <span>

enum class StampMode
{
    Open,
    Authenticated
};

inline constexpr uint16_t kStampPort = 862;
inline constexpr size_t kStampMacAt = 96; // of an authenticated packet; what stands before it is covered
inline constexpr size_t kStampMacSize = 16;

// How long our packets are at least.
size_t StampSize(StampMode mode) noexcept;

struct CSenderPacket
{
    uint32_t Number = 0;
    CStampTime Sent;
    uint16_t ErrorEstimate = 0;
    uint16_t Session = 0;

    bool operator==(const CSenderPacket&) const = default;
};

struct CReflectorPacket
{
    uint32_t Number = 0; // the reflector's own, or a copy of the sender's
    CStampTime Sent;
    uint16_t ErrorEstimate = 0;
    uint16_t Session = 0;
    CStampTime Received;
    uint32_t SenderNumber = 0;
    CStampTime SenderSent;
    uint16_t SenderErrorEstimate = 0;
    uint8_t HopLimit = 0; // of the sender's packet, when it arrived

    bool operator==(const CReflectorPacket&) const = default;
};

// The fields of a packet; nothing if the bytes are no such packet. Whether the MAC is right is not looked at.
std::optional<CSenderPacket> ReadSenderPacket(std::span<const uint8_t> bytes, StampMode mode) noexcept;
std::optional<CReflectorPacket> ReadReflectorPacket(std::span<const uint8_t> bytes, StampMode mode) noexcept;

// Write the packet's own octets, all but the MAC, and leave the padding behind them alone. A sender's packet
// takes StampSize(mode) bytes at least, a reflector's is as long as the sender's that it answers.
void WriteSenderPacket(const CSenderPacket& packet, StampMode mode, std::span<uint8_t> bytes) noexcept;
void WriteReflectorPacket(const CReflectorPacket& packet, StampMode mode, std::span<uint8_t> bytes) noexcept;
