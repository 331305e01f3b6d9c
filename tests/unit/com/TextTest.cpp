#include "Common/src/com/Text.h"

#include <gtest/gtest.h>

namespace
{
TEST(Text, UpperCasesByTheAnsiCodePage)
{
    EXPECT_EQ(L"TOLVA_DIAGTEST", UpperCaseAnsi(L"tolva_DiagTest"));
    EXPECT_EQ(L"\u00C4", UpperCaseAnsi(L"\u00E4"));
    EXPECT_EQ(L"", UpperCaseAnsi(L""));
}

TEST(Text, CharactersOutsideTheCodePageDoNotSurviveFolding)
{
    EXPECT_EQ(L"?", UpperCaseAnsi(L"\u4E2D"));
}

TEST(Text, ConvertsBothWays)
{
    EXPECT_EQ("abc", NarrowText(L"abc"));
    EXPECT_EQ(L"abc", WidenText("abc"));
    EXPECT_EQ("\xC3\xA4", Utf8Text(L"\u00E4"));
    EXPECT_EQ(L"\u00E4", WidenUtf8("\xC3\xA4"));
}

TEST(Text, AsciiFoldingLeavesOtherLettersAlone)
{
    EXPECT_TRUE(EqualNoCaseAscii(L"DeviceID", L"deviceid"));
    EXPECT_FALSE(EqualNoCaseAscii(L"\u00C4", L"\u00E4"));
    EXPECT_FALSE(EqualNoCaseAscii(L"Name", L"Names"));
}
} // namespace
