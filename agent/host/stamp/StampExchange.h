// Sending a test packet and reading what comes back, for everybody who is a sender.
#pragma once

#include "agent/host/stamp/StampLine.h"
#include "agent/host/stamp/StampMac.h"
#include "agent/host/stamp/StampPackets.h"

inline constexpr size_t kLargestDatagram = 9216; // of those that are received

// What packets look like.
struct CPacketForm
{
    CStampMac* Mac = nullptr; // null without authentication
    size_t Size = 0;

    StampMode Mode() const noexcept { return Mac ? StampMode::Authenticated : StampMode::Open; }
};

// Sends packet `number`; `sentAt` is its time stamp.
Sending SendStampPacket(IStampLine& line, const CPacketForm& form, uint32_t number,
                        uint64_t& sentAt) noexcept;

struct CExchange
{
    Receiving What = Receiving::Nothing;
    // An answer in good form; absent with Receiving::Packet where something else came.
    std::optional<CReflectorPacket> Answer;
    uint64_t Time = 0;
};
CExchange ReceiveStampAnswer(IStampLine& line, const CPacketForm& form) noexcept;
