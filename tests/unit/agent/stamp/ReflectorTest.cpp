#include "agent/host/stamp/Reflector.h"

#include "agent/host/stamp/StampPackets.h"

#include <gtest/gtest.h>
#include <vector>

namespace
{
// Where answers go.
class CAnswers final : public IStampLine
{
  public:
    uint64_t Now() noexcept override { return kStampSecond * 9'435'484'900 + kStampSecond / 2; }
    uint64_t Steady() noexcept override { return Time; }
    Sending Send(std::span<const BYTE> bytes, const CArrival*) noexcept override
    {
        if (Sends)
            Sent.emplace_back(bytes.begin(), bytes.end());
        return Sends ? Sending::Done : Sending::Failed;
    }
    Receiving Receive(std::span<BYTE>, CArrival&) noexcept override { return Receiving::Nothing; }
    Woken Wait(uint64_t) noexcept override { return Woken::Stopped; }
    Woken WaitStopped(uint64_t) noexcept override { return Woken::Stopped; }

    uint64_t Time = 50 * kStampSecond;
    bool Sends = true;
    std::vector<std::vector<BYTE>> Sent;
};

SOCKADDR_INET V4(ULONG host, USHORT port)
{
    SOCKADDR_INET address = {};
    address.Ipv4.sin_family = AF_INET;
    address.Ipv4.sin_addr.s_addr = htonl(host);
    address.Ipv4.sin_port = htons(port);
    return address;
}
SOCKADDR_INET V6(BYTE last, USHORT port)
{
    SOCKADDR_INET address = {};
    address.Ipv6.sin6_family = AF_INET6;
    address.Ipv6.sin6_addr.s6_addr[15] = last;
    address.Ipv6.sin6_port = htons(port);
    return address;
}

std::vector<BYTE> Request(uint32_t number, uint16_t session = 0, size_t size = 44)
{
    std::vector<BYTE> bytes(size, 0xEE);
    WriteSenderPacket({number, {7, 8}, 0x8105, session}, StampMode::Open, bytes);
    return bytes;
}

class Reflector : public testing::Test
{
  protected:
    void Make(CStampMac* mac = nullptr)
    {
        m_reflector = std::make_unique<CReflector>(mac, htons(8620), m_limits, m_line.Time);
    }
    void SetUp() override { Make(); }
    // The length of the answer; 0 for none.
    size_t Take(std::vector<BYTE> bytes, const SOCKADDR_INET& from)
    {
        CArrival arrival;
        arrival.From = from;
        arrival.Size = bytes.size();
        arrival.HopLimit = 61;
        arrival.Time = kStampSecond * 9'435'484'900;
        const size_t before = m_line.Sent.size();
        m_reflector->Take(bytes, arrival, m_line);
        return m_line.Sent.size() == before ? 0 : m_line.Sent.back().size();
    }
    CReflectorPacket Last() const { return *ReadReflectorPacket(m_line.Sent.back(), StampMode::Open); }

    CReflectorLimits m_limits;
    CAnswers m_line;
    std::unique_ptr<CReflector> m_reflector;
    const SOCKADDR_INET m_peer = V4(0xC0000202, 50'000);
};

TEST_F(Reflector, AnswersWithItsOwnNumberAndWhatItWasTold)
{
    EXPECT_EQ(44u, Take(Request(1000, 0xABCD), m_peer));
    EXPECT_EQ((CReflectorPacket{
                  0, {100, 0x80000000}, kOurErrorEstimate, 0xABCD, {100, 0}, 1000, {7, 8}, 0x8105, 61}),
              Last());
    Take(Request(1002, 0xABCD), m_peer);
    EXPECT_EQ(1u, Last().Number);
    EXPECT_EQ(1002u, Last().SenderNumber);
}

TEST_F(Reflector, EachSessionHasNumbersOfItsOwn)
{
    Take(Request(0), m_peer);
    Take(Request(1), m_peer);
    for (const SOCKADDR_INET& other :
         {V4(0xC0000202, 50'001), V4(0xC0000203, 50'000), V6(1, 50'000), V6(2, 50'000)})
    {
        Take(Request(0), other);
        EXPECT_EQ(0u, Last().Number);
    }
    Take(Request(0, 5), m_peer);
    EXPECT_EQ(0u, Last().Number);
    Take(Request(2), m_peer);
    EXPECT_EQ(2u, Last().Number);
}

TEST_F(Reflector, AnswerIsAsLongAsThePacketAndKeepsItsPadding)
{
    for (const size_t size : {41, 42, 43, 44, 45, 200, 1452})
    {
        std::vector<BYTE> request(size, 0xEE); // after 14 octets those of RFC 5357 have anything
        request[13] = 1;
        EXPECT_EQ(size, Take(request, m_peer));
        for (size_t i = 44; i < size; ++i)
            EXPECT_EQ(0xEE, m_line.Sent.back()[i]);
    }
}

TEST_F(Reflector, BadPacketsHaveNoAnswerAndDoNotCount)
{
    EXPECT_EQ(0u, Take({}, m_peer));
    EXPECT_EQ(0u, Take(std::vector<BYTE>(40, 1), m_peer));
    std::vector<BYTE> noError = Request(0);
    noError[13] = 0;
    EXPECT_EQ(0u, Take(noError, m_peer));
    EXPECT_EQ(0u, m_reflector->Counts().Received);
}

TEST_F(Reflector, OtherRespondersAreNotAnswered)
{
    EXPECT_EQ(0u, Take(Request(0), V4(0xC0000202, 862)));
    EXPECT_EQ(0u, Take(Request(0), V4(0xC0000202, 8620)));
    EXPECT_EQ(0u, m_reflector->Counts().Received);
}

TEST_F(Reflector, AuthenticatedModeAnswersOnlyAGoodMac)
{
    const auto mac = CStampMac::Make(std::vector<BYTE>(16, 1));
    const auto other = CStampMac::Make(std::vector<BYTE>(16, 2));
    Make(mac.get());
    std::vector<BYTE> bytes(150, 0xEE);
    WriteSenderPacket({5, {7, 8}, 0x8105, 9}, StampMode::Authenticated, bytes);
    EXPECT_EQ(0u, Take(bytes, m_peer));
    other->Sign(bytes);
    EXPECT_EQ(0u, Take(bytes, m_peer));
    EXPECT_EQ(0u, Take(Request(0), m_peer)) << "no MAC at all";
    EXPECT_EQ(0u, m_reflector->Counts().Received);
    mac->Sign(bytes);
    EXPECT_EQ(150u, Take(bytes, m_peer));
    EXPECT_TRUE(mac->IsSigned(m_line.Sent.back()));
    EXPECT_EQ(5u, ReadReflectorPacket(m_line.Sent.back(), StampMode::Authenticated)->SenderNumber);
    EXPECT_EQ(1u, m_reflector->Counts().Received);
}

TEST_F(Reflector, PacketThatCouldNotBeAnsweredLeavesNoGap)
{
    Take(Request(0), m_peer);
    m_line.Sends = false;
    Take(Request(1), m_peer);
    m_line.Sends = true;
    Take(Request(2), m_peer);
    EXPECT_EQ(1u, Last().Number);
    EXPECT_EQ(3u, m_reflector->Counts().Received);
    EXPECT_EQ(2u, m_reflector->Counts().Answered);
}

TEST_F(Reflector, RateOfOneAddressIsBounded)
{
    m_limits.PerPeer = 100;
    Make();
    // From many ports, which does not help.
    size_t answered = 0;
    for (uint32_t i = 0; i < 500; ++i)
        answered += Take(Request(i), V4(0xC0000202, static_cast<USHORT>(50'000 + i % 4))) != 0;
    EXPECT_EQ(100u, answered);
    EXPECT_EQ(500u, m_reflector->Counts().Received);
    EXPECT_EQ(100u, m_reflector->Counts().Answered);
    EXPECT_NE(0u, Take(Request(0), V4(0xC0000203, 50'000))) << "another address";
    m_line.Time += kStampSecond / 10;
    answered = 0;
    for (uint32_t i = 0; i < 50; ++i)
        answered += Take(Request(i), m_peer) != 0;
    EXPECT_EQ(10u, answered);
    m_line.Time += 100 * kStampSecond;
    answered = 0;
    for (uint32_t i = 0; i < 500; ++i)
        answered += Take(Request(i), m_peer) != 0;
    EXPECT_EQ(100u, answered) << "what was not used is not saved up";
}

TEST_F(Reflector, RateOfAllIsBounded)
{
    m_limits.Altogether = 100;
    Make();
    size_t answered = 0;
    for (uint32_t i = 0; i < 500; ++i)
        answered += Take(Request(i), V4(0xC0000200 + i % 10, 50'000)) != 0;
    EXPECT_EQ(100u, answered);
}

TEST_F(Reflector, SessionsAreBoundedAndIdleOnesForgotten)
{
    size_t answered = 0;
    for (USHORT i = 0; i < 40; ++i)
        answered += Take(Request(0), V4(0xC0000202, static_cast<USHORT>(50'000 + i))) != 0;
    EXPECT_EQ(CReflectorSessions::kSessionsOfOnePeer, answered) << "of one address";
    for (ULONG i = 0; i < 200; ++i)
        answered += Take(Request(0), V4(0xC0000300 + i, 50'000)) != 0;
    EXPECT_EQ(CReflectorSessions::kSessionsOfOnePeer + CReflectorSessions::kPeers - 1, answered)
        << "addresses";
    EXPECT_EQ(0u, Take(Request(0), V6(1, 50'000)));

    m_line.Time += m_limits.Idle;
    EXPECT_NE(0u, Take(Request(1), V4(0xC0000202, 50'000))) << "a session that is there goes on";
    EXPECT_EQ(1u, Last().Number);
    EXPECT_EQ(0u, Take(Request(0), V6(1, 50'000)));
    m_line.Time += 1;
    EXPECT_NE(0u, Take(Request(0), V6(1, 50'000)));
    Take(Request(2), V4(0xC0000202, 50'000));
    EXPECT_EQ(2u, Last().Number);
    m_line.Time += m_limits.Idle + 1;
    Take(Request(3), V4(0xC0000202, 50'000));
    EXPECT_EQ(0u, Last().Number) << "forgotten, and begun anew";
}

TEST_F(Reflector, SessionOfAnAddressThatHasItsShareTakesThePlaceOfOneThatPauses)
{
    for (USHORT i = 0; i < 16; ++i)
        EXPECT_NE(0u, Take(Request(0), V4(0xC0000202, static_cast<USHORT>(50'000 + i))));
    m_line.Time += CReflectorSessions::kPause;
    Take(Request(1), V4(0xC0000202, 50'000));
    EXPECT_NE(0u, Take(Request(0), V4(0xC0000202, 60'000)));
    Take(Request(2), V4(0xC0000202, 50'000));
    EXPECT_EQ(2u, Last().Number) << "the one that goes on is kept";
    Take(Request(1), V4(0xC0000202, 60'000));
    EXPECT_EQ(1u, Last().Number);
    m_line.Time += CReflectorSessions::kPause - 1;
    for (USHORT i = 0; i < 14; ++i)
        EXPECT_NE(0u, Take(Request(0), V4(0xC0000202, static_cast<USHORT>(60'001 + i))));
    EXPECT_EQ(0u, Take(Request(0), V4(0xC0000202, 61'000))) << "none pauses for long enough";
}

TEST_F(Reflector, AllSessionsOfManyAddressesAreBounded)
{
    size_t answered = 0;
    for (ULONG host = 0; host < 10; ++host)
        for (USHORT i = 0; i < 16; ++i)
            answered += Take(Request(0), V4(0xC0000200 + host, static_cast<USHORT>(50'000 + i))) != 0;
    EXPECT_EQ(CReflectorSessions::kSessions, answered);
}

TEST_F(Reflector, CountsWhatTheNumbersSayOfTheWayThere)
{
    for (const uint32_t number : {0, 1, 4, 3, 3})
        Take(Request(number), m_peer);
    Take(Request(1000), V4(0xC0000202, 50'001));
    const CTrackCounts& numbers = m_reflector->Counts().Numbers;
    EXPECT_EQ(6u, numbers.Sent);
    EXPECT_EQ(5u, numbers.Different);
    EXPECT_EQ(1u, numbers.Repeated);
    EXPECT_EQ(1u, numbers.OutOfOrder);
}
} // namespace
