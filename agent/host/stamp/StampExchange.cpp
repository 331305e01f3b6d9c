#include "agent/host/stamp/StampExchange.h"

#include <algorithm>
#include <array>

Sending SendStampPacket(IStampLine& line, const CPacketForm& form, uint32_t number, uint64_t& sentAt) noexcept
{
    std::array<BYTE, kLargestDatagram> memory;
    const std::span bytes(memory.data(), std::min(form.Size, memory.size()));
    std::fill(bytes.begin(), bytes.end(), BYTE{0});
    sentAt = line.Now();
    WriteSenderPacket({number, ToStampTime(sentAt), kOurErrorEstimate, 0}, form.Mode(), bytes);
    if (form.Mac && !form.Mac->Sign(bytes))
        return Sending::Failed;
    return line.Send(bytes, nullptr);
}

CExchange ReceiveStampAnswer(IStampLine& line, const CPacketForm& form) noexcept
{
    std::array<BYTE, kLargestDatagram> memory;
    CArrival arrival;
    CExchange exchange;
    exchange.What = line.Receive(memory, arrival);
    if (exchange.What != Receiving::Packet)
        return exchange;
    const std::span<const BYTE> bytes(memory.data(), arrival.Size);
    exchange.Time = arrival.Time;
    if (!form.Mac || form.Mac->IsSigned(bytes))
        exchange.Answer = ReadReflectorPacket(bytes, form.Mode());
    return exchange;
}
