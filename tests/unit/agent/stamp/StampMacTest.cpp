#include "agent/host/stamp/StampMac.h"

#include "agent/host/stamp/StampPackets.h"
#include "tests/support/CaseName.h"

#include <string>
#include <vector>

namespace
{
std::span<const BYTE> Bytes(const std::string& text)
{
    return {reinterpret_cast<const BYTE*>(text.data()), text.size()};
}

std::string Hex(std::span<const BYTE> bytes)
{
    std::string text;
    for (const BYTE byte : bytes)
    {
        char digits[3] = {};
        _snprintf(digits, 3, "%02x", byte);
        text += digits;
    }
    return text;
}

// The test vectors of RFC 4231.
struct Vector
{
    const char* name;
    std::string key;
    std::string data;
    const char* mac;
};
class MacVectors : public testing::TestWithParam<Vector>
{
};

TEST_P(MacVectors, AreMet)
{
    const auto mac = CStampMac::Make(Bytes(GetParam().key));
    ASSERT_TRUE(mac);
    // Twice, since the system's object is used again.
    for (int i = 0; i < 2; ++i)
    {
        std::array<BYTE, CStampMac::kFullSize> found = {};
        ASSERT_TRUE(mac->Compute(Bytes(GetParam().data), found));
        EXPECT_EQ(GetParam().mac, Hex(found));
    }
}

std::string Counting(char last)
{
    std::string text;
    for (char c = 1; c <= last; ++c)
        text += c;
    return text;
}

INSTANTIATE_TEST_SUITE_P(
    Rfc4231, MacVectors,
    testing::Values(Vector{"Case1", std::string(20, '\x0b'), "Hi There",
                           "b0344c61d8db38535ca8afceaf0bf12b881dc200c9833da726e9376c2e32cff7"},
                    Vector{"Case2", "Jefe", "what do ya want for nothing?",
                           "5bdcc146bf60754e6a042426089575c75a003f089d2739839dec58b964ec3843"},
                    Vector{"Case3", std::string(20, '\xaa'), std::string(50, '\xdd'),
                           "773ea91e36800e46854db8ebd09181a72959098b3ef8c122d9635514ced565fe"},
                    Vector{"Case4", Counting(25), std::string(50, '\xcd'),
                           "82558a389a443c0ea4cc819899f2083a85f0faa3e578f8077a2e3ff46729665b"},
                    Vector{"Case6LongKey", std::string(131, '\xaa'),
                           "Test Using Larger Than Block-Size Key - Hash Key First",
                           "60e431591ee0b67f0d8a26aacbf5b77f8e0bc6213728c5140546040f0ee37f54"},
                    Vector{"Case7LongKeyAndData", std::string(131, '\xaa'),
                           "This is a test using a larger than block-size key and a larger than block-size "
                           "data. The key needs "
                           "to be hashed before being used by the HMAC algorithm.",
                           "9b09ffa71b942fcb27635fbcd5b0e944bfdc63644f0713938a7f51535c3a35e2"}),
    NameOf<Vector>);

class SignedPacket : public testing::Test
{
  protected:
    std::unique_ptr<CStampMac> m_mac = CStampMac::Make(Bytes(std::string(16, 'k')));
    std::vector<BYTE> m_packet = std::vector<BYTE>(120, 7);
};

TEST_F(SignedPacket, CarriesTheFirstSixteenOctets)
{
    std::array<BYTE, CStampMac::kFullSize> whole = {};
    ASSERT_TRUE(m_mac->Compute(std::span<const BYTE>(m_packet).first(96), whole));
    ASSERT_TRUE(m_mac->Sign(m_packet));
    EXPECT_TRUE(std::equal(whole.begin(), whole.begin() + 16, m_packet.begin() + 96));
    EXPECT_EQ(std::vector<BYTE>(8, 7), std::vector<BYTE>(m_packet.begin() + 112, m_packet.end()));
    EXPECT_TRUE(m_mac->IsSigned(m_packet));
}

TEST_F(SignedPacket, EveryBitOfWhatIsCoveredAndOfTheMacCounts)
{
    ASSERT_TRUE(m_mac->Sign(m_packet));
    for (size_t octet = 0; octet < m_packet.size(); ++octet)
        for (int bit = 0; bit < 8; ++bit)
        {
            std::vector<BYTE> changed = m_packet;
            changed[octet] ^= static_cast<BYTE>(1 << bit);
            EXPECT_EQ(octet >= 112, m_mac->IsSigned(changed)) << octet; // padding is not covered
        }
}

TEST_F(SignedPacket, AnotherKeyDoesNotFit)
{
    ASSERT_TRUE(m_mac->Sign(m_packet));
    EXPECT_FALSE(CStampMac::Make(Bytes(std::string(16, 'x')))->IsSigned(m_packet));
}

TEST_F(SignedPacket, TooShortIsNeitherSignedNorGood)
{
    std::vector<BYTE> small(111);
    EXPECT_FALSE(m_mac->Sign(small));
    EXPECT_FALSE(m_mac->IsSigned(small));
    EXPECT_FALSE(m_mac->IsSigned({}));
}
} // namespace
