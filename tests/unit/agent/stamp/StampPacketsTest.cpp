#include "agent/host/stamp/StampPackets.h"

#include "tests/support/CaseName.h"

#include <algorithm>
#include <array>
#include <vector>

namespace
{
using CBytes = std::vector<uint8_t>;

// A packet whose octet n is n, so that each field says where it was read.
CBytes Counting(size_t size)
{
    CBytes bytes(size);
    for (size_t i = 0; i < size; ++i)
        bytes[i] = static_cast<uint8_t>(i);
    return bytes;
}

TEST(StampPackets, OpenSenderFieldsStandWhereTheProtocolHasThem)
{
    EXPECT_EQ((CSenderPacket{0x00010203, {0x04050607, 0x08090A0B}, 0x0C0D, 0x0E0F}),
              ReadSenderPacket(Counting(44), StampMode::Open));
}

TEST(StampPackets, AuthenticatedSenderFieldsStandWhereTheProtocolHasThem)
{
    EXPECT_EQ((CSenderPacket{0x00010203, {0x10111213, 0x14151617}, 0x1819, 0x1A1B}),
              ReadSenderPacket(Counting(112), StampMode::Authenticated));
}

TEST(StampPackets, OpenReflectorFieldsStandWhereTheProtocolHasThem)
{
    EXPECT_EQ((CReflectorPacket{0x00010203,
                                {0x04050607, 0x08090A0B},
                                0x0C0D,
                                0x0E0F,
                                {0x10111213, 0x14151617},
                                0x18191A1B,
                                {0x1C1D1E1F, 0x20212223},
                                0x2425,
                                0x28}),
              ReadReflectorPacket(Counting(44), StampMode::Open));
}

TEST(StampPackets, AuthenticatedReflectorFieldsStandWhereTheProtocolHasThem)
{
    EXPECT_EQ((CReflectorPacket{0x00010203,
                                {0x10111213, 0x14151617},
                                0x1819,
                                0x1A1B,
                                {0x20212223, 0x24252627},
                                0x30313233,
                                {0x40414243, 0x44454647},
                                0x4849,
                                0x50}),
              ReadReflectorPacket(Counting(112), StampMode::Authenticated));
}

struct SizeCase
{
    const char* name;
    StampMode mode;
    size_t size;
    bool good;
};
class PacketSize : public testing::TestWithParam<SizeCase>
{
};

TEST_P(PacketSize, DecidesWhetherItIsAPacket)
{
    const CBytes bytes(GetParam().size, 1);
    EXPECT_EQ(GetParam().good, ReadSenderPacket(bytes, GetParam().mode).has_value());
    EXPECT_EQ(GetParam().good, ReadReflectorPacket(bytes, GetParam().mode).has_value());
}

INSTANTIATE_TEST_SUITE_P(
    Sizes, PacketSize,
    testing::Values(SizeCase{"Nothing", StampMode::Open, 0, false},
                    SizeCase{"OneOctet", StampMode::Open, 1, false},
                    SizeCase{"OneLessThanTheOldest", StampMode::Open, 40, false},
                    SizeCase{"Oldest", StampMode::Open, 41, true},
                    SizeCase{"Usual", StampMode::Open, 44, true},
                    SizeCase{"Padded", StampMode::Open, 1452, true},
                    SizeCase{"NothingAuthenticated", StampMode::Authenticated, 0, false},
                    SizeCase{"OneLessAuthenticated", StampMode::Authenticated, 111, false},
                    SizeCase{"UsualAuthenticated", StampMode::Authenticated, 112, true},
                    SizeCase{"PaddedAuthenticated", StampMode::Authenticated, 1452, true}),
    NameOf<SizeCase>);

TEST(StampPackets, SenderWhoseClockHasNoErrorIsNone)
{
    CBytes open = Counting(44);
    open[13] = 0;
    EXPECT_FALSE(ReadSenderPacket(open, StampMode::Open));
    CBytes authenticated = Counting(112);
    authenticated[25] = 0;
    EXPECT_FALSE(ReadSenderPacket(authenticated, StampMode::Authenticated));
}

// What is written is read again, whatever stood in the bytes before, and padding stays.
TEST(StampPackets, WrittenSenderPacketIsReadAgainAndTheRestIsZero)
{
    const CSenderPacket packet{0x89ABCDEF, {0x11223344, 0x55667788}, 0x9A9B, 0x9C9D};
    for (const StampMode mode : {StampMode::Open, StampMode::Authenticated})
    {
        CBytes bytes(StampSize(mode) + 8, 0xEE);
        WriteSenderPacket(packet, mode, bytes);
        EXPECT_EQ(packet, ReadSenderPacket(bytes, mode));
        // 16 octets of fields, none of which has a zero.
        EXPECT_EQ(static_cast<ptrdiff_t>(StampSize(mode) - 16),
                  std::count(bytes.begin(), bytes.end() - 8, uint8_t{0}));
        EXPECT_EQ(CBytes(8, 0xEE), CBytes(bytes.end() - 8, bytes.end()));
    }
}

TEST(StampPackets, WrittenReflectorPacketIsReadAgainAndTheRestIsZero)
{
    const CReflectorPacket packet{
        0x89ABCDEF, {0x11223344, 0x55667788}, 0x9A9B, 0x9C9D, {0xA1A2A3A4, 0xA5A6A7A8},
        0xB1B2B3B4, {0xC1C2C3C4, 0xC5C6C7C8}, 0xD1D2, 0xE1};
    for (const StampMode mode : {StampMode::Open, StampMode::Authenticated})
    {
        CBytes bytes(StampSize(mode) + 8, 0xEE);
        WriteReflectorPacket(packet, mode, bytes);
        EXPECT_EQ(packet, ReadReflectorPacket(bytes, mode));
        EXPECT_EQ(static_cast<ptrdiff_t>(StampSize(mode) - 39),
                  std::count(bytes.begin(), bytes.end() - 8, uint8_t{0}));
        EXPECT_EQ(CBytes(8, 0xEE), CBytes(bytes.end() - 8, bytes.end()));
    }
}

TEST(StampPackets, AnswerToTheShortestPacketFitsIntoIt)
{
    CBytes bytes(41, 0xEE);
    CReflectorPacket packet;
    packet.Number = 5;
    packet.HopLimit = 64;
    WriteReflectorPacket(packet, StampMode::Open, bytes);
    EXPECT_EQ(5u, ReadReflectorPacket(bytes, StampMode::Open)->Number);
    EXPECT_EQ(64, bytes[40]);
}
} // namespace
