// Feeds any bytes to the reader of test packets, and checks that what it accepts can be written and read
// again. A program of the build machine, made by scripts/fuzz; no test of ctest.
#include "agent/host/stamp/StampPackets.h"

#include <algorithm>
#include <cstdlib>
#include <memory>

namespace
{
void Require(bool condition)
{
    if (!condition)
        std::abort();
}

using CBytes = std::span<const uint8_t>;

// Memory of exactly so many bytes, so that a step beyond them is noticed.
class CExact
{
  public:
    explicit CExact(size_t size) : m_bytes(new uint8_t[size]()), m_size(size) {}
    std::span<uint8_t> Get() const { return {m_bytes.get(), m_size}; }

  private:
    std::unique_ptr<uint8_t[]> m_bytes;
    size_t m_size;
};

// The answer to a packet, made in the packet's own bytes as the responder makes it.
void TryAnswer(CBytes bytes, const CSenderPacket& packet, StampMode mode)
{
    const CExact answer(bytes.size());
    std::copy(bytes.begin(), bytes.end(), answer.Get().begin());
    CReflectorPacket reflected;
    reflected.Number = packet.Number ^ 1;
    reflected.Session = packet.Session;
    reflected.SenderNumber = packet.Number;
    reflected.SenderSent = packet.Sent;
    reflected.SenderErrorEstimate = packet.ErrorEstimate;
    WriteReflectorPacket(reflected, mode, answer.Get());
    Require(ReadReflectorPacket(answer.Get(), mode) == reflected);
    const size_t own = std::min(bytes.size(), StampSize(mode));
    Require(std::equal(bytes.begin() + static_cast<ptrdiff_t>(own), bytes.end(),
                       answer.Get().begin() + static_cast<ptrdiff_t>(own)));
}

void TryDistance(const CReflectorPacket& packet)
{
    const bool nanoseconds = CountsNanoseconds(packet.ErrorEstimate);
    const int64_t distance = StampDistance(packet.Received, packet.Sent, nanoseconds);
    Require(distance == -StampDistance(packet.Sent, packet.Received, nanoseconds) ||
            packet.Sent.Seconds - packet.Received.Seconds == 0x80000000u);
}

void Try(CBytes bytes, StampMode mode)
{
    if (const auto packet = ReadSenderPacket(bytes, mode))
    {
        const CExact copy(StampSize(mode));
        WriteSenderPacket(*packet, mode, copy.Get());
        Require(ReadSenderPacket(copy.Get(), mode) == packet);
        TryAnswer(bytes, *packet, mode);
    }
    if (const auto packet = ReadReflectorPacket(bytes, mode))
    {
        const CExact copy(bytes.size());
        WriteReflectorPacket(*packet, mode, copy.Get());
        Require(ReadReflectorPacket(copy.Get(), mode) == packet);
        TryDistance(*packet);
    }
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Try({data, size}, StampMode::Open);
    Try({data, size}, StampMode::Authenticated);
    return 0;
}
