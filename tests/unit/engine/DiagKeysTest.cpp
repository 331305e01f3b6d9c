#include "CDM/src/engine/naming/DiagKeys.h"
#include "tests/support/CaseName.h"

#include <gtest/gtest.h>

namespace
{
struct Number
{
    const char* name;
    ULONG testId;
    const wchar_t* text;
};

class TestNumberTest : public testing::TestWithParam<Number>
{
};

TEST_P(TestNumberTest, IsUpperCaseHexadecimalWithoutLeadingZeros)
{
    EXPECT_STREQ(GetParam().text, TestNumberText(GetParam().testId).Text());
}

const Number kNumbers[] = {
    {"Zero", 0, L"0"},      {"Nine", 9, L"9"},         {"Ten", 10, L"A"},
    {"Sixteen", 16, L"10"}, {"TwoDigits", 255, L"FF"}, {"Largest", 0xFFFFFFFF, L"FFFFFFFF"},
};
INSTANTIATE_TEST_SUITE_P(Numbers, TestNumberTest, testing::ValuesIn(kNumbers), NameOf<Number>);

TEST(DiagKeysTest, TestKeyBeginsWithTheNumberAndIsUpperCase)
{
    EXPECT_STREQ(L"9@{ABC}", MakeTestKey(9, CBstr(L"{abc}").Get()).Text());
    EXPECT_STREQ(L"10@K", MakeTestKey(16, CBstr(L"k").Get()).Text());
    EXPECT_STREQ(L"1@", MakeTestKey(1, nullptr).Text());
}

TEST(DiagKeysTest, TestKeyComesApartAgain)
{
    const CBstr key = MakeTestKey(255, CBstr(L"a@b").Get());
    EXPECT_STREQ(L"FF", ParseForTestName(key.View()).Text());
    EXPECT_STREQ(L"A@B", ParseForAdapterKey(key.View()).Text());
}

TEST(DiagKeysTest, IndexIsDecimal)
{
    EXPECT_STREQ(L"0", AdapterIndexText(0).Text());
    EXPECT_STREQ(L"10", AdapterIndexText(10).Text());
}

TEST(DiagKeysTest, FoldingGoesThroughTheCodePage)
{
    EXPECT_EQ(L"", FoldKey(nullptr));
    EXPECT_EQ(L"ABC\\\"'@1", FoldKey(CBstr(L"abc\\\"'@1").Get()));
    // No code page of one byte has these; they fold to its default character.
    EXPECT_EQ(FoldKey(CBstr(L"\u4e2d").Get()), FoldKey(CBstr(L"\u4e2e").Get()));
}

TEST(DiagKeysTest, FoldingEndsAtTheFirstNul)
{
    EXPECT_EQ(L"AB", FoldKey(CBstr(std::wstring_view(L"ab\0cd", 5)).Get()));
}

TEST(DiagKeysTest, FoldingTenThousandCharactersKeepsThemAll)
{
    const std::wstring key(10000, L'k');
    EXPECT_EQ(std::wstring(10000, L'K'), FoldKey(CBstr(std::wstring_view(key)).Get()));
}

TEST(DiagKeysTest, OnlyNineAndTenAreSenderAndResponder)
{
    for (ULONG id = 0; id < 300; ++id)
        EXPECT_EQ(id == 9 || id == 10, IsSenderResponder(id)) << id;
}
} // namespace
