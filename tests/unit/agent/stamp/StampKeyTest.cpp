#include "agent/host/stamp/StampKey.h"

#include "Common/src/com/Text.h"
#include "agent/AgentCodes.h"
#include "tests/support/CaseName.h"
#include "tests/support/TempFolder.h"

#include <fstream>

namespace
{
struct Case
{
    const char* name;
    std::string text;
    bool good;
    size_t size;
};
class StampKey : public testing::TestWithParam<Case>
{
};

TEST_P(StampKey, IsReadFromItsText)
{
    std::vector<BYTE> key;
    EXPECT_EQ(GetParam().good, ParseStampKey(GetParam().text, key));
    EXPECT_EQ(GetParam().size, GetParam().good ? key.size() : 0);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, StampKey,
    testing::Values(Case{"Sixteen", std::string(32, 'a'), true, 16},
                    Case{"SixtyFour", std::string(128, 'F'), true, 64},
                    Case{"WhiteSpace", "00112233 44556677\t8899aabb\r\nccddeeff\n", true, 16},
                    Case{"Fifteen", std::string(30, 'a'), false, 0},
                    Case{"SixtyFive", std::string(130, 'a'), false, 0},
                    Case{"OddDigits", std::string(33, 'a'), false, 0}, Case{"Empty", "", false, 0},
                    Case{"NoDigit", std::string(31, 'a') + "g", false, 0},
                    Case{"Prefix", "0x" + std::string(32, 'a'), false, 0}),
    NameOf<Case>);

TEST(StampKeyText, DigitsAreOctetsInTheirOrder)
{
    std::vector<BYTE> key;
    ASSERT_TRUE(ParseStampKey("0102030405060708090a0B0c0D0e0F10", key));
    for (size_t i = 0; i < 16; ++i)
        EXPECT_EQ(i + 1, key[i]);
}

TEST(StampKeyFile, IsReadWhole)
{
    CTempFolder folder;
    std::ofstream(folder.Path() / "key") << "0102030405060708090a0b0c0d0e0f10\r\n";
    std::vector<BYTE> key;
    EXPECT_EQ(S_OK, ReadStampKey(WidenText(folder.File("key")), key));
    EXPECT_EQ(16u, key.size());
    std::ofstream(folder.Path() / "bad") << "secret";
    EXPECT_EQ(vorl::setting::BadKey, ReadStampKey(WidenText(folder.File("bad")), key));
    std::ofstream(folder.Path() / "large") << std::string(5000, ' ') << std::string(32, 'a');
    EXPECT_EQ(vorl::setting::BadKey, ReadStampKey(WidenText(folder.File("large")), key));
    EXPECT_EQ(vorl::setting::KeyUnreadable, ReadStampKey(WidenText(folder.File("none")), key));
}
} // namespace
