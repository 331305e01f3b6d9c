#include "tools/zebdiag/Table.h"

#include "tests/support/CaseName.h"

namespace zebdiag
{
namespace
{
struct WrapCase
{
    const char* name;
    const wchar_t* text;
    unsigned width;
    std::vector<std::wstring> lines;
};

class WrapTextTest : public testing::TestWithParam<WrapCase>
{
};

TEST_P(WrapTextTest, Cuts)
{
    EXPECT_EQ(WrapText(GetParam().text, GetParam().width), GetParam().lines);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, WrapTextTest,
    testing::Values(WrapCase{"Empty", L"", 10, {L""}}, WrapCase{"Fits", L"one two", 7, {L"one two"}},
                    WrapCase{"AtTheLastSpace", L"one two three", 9, {L"one two", L"three"}},
                    WrapCase{"SpaceRightBehindTheWidth", L"one two", 3, {L"one", L"two"}},
                    WrapCase{"LongWordStaysWhole", L"a bbbbbbbb c", 4, {L"a", L"bbbbbbbb", L"c"}},
                    WrapCase{"OnlyALongWord", L"bbbbbbbb", 4, {L"bbbbbbbb"}},
                    WrapCase{"NoWidthNoCut", L"one two three", 0, {L"one two three"}},
                    WrapCase{"KeepsLineEnds", L"one\r\ntwo\n", 10, {L"one", L"two", L""}}),
    NameOf<WrapCase>);

CTable Sample()
{
    CTable table({L"No", L"Test", L"Description"});
    table.Add({L"1", L"Link", L"Looks at the cable and at the switch"});
    table.Add({L"A", L"Address configuration", L""});
    return table;
}

TEST(TableTest, ColumnsAreAsWideAsTheirWidestCell)
{
    EXPECT_EQ(Sample().Render(0), L"  No  Test                   Description\n"
                                  L"  1   Link                   Looks at the cable and at the switch\n"
                                  L"  A   Address configuration\n");
}

TEST(TableTest, LastColumnIsCutToTheTerminal)
{
    EXPECT_EQ(Sample().Render(52), L"  No  Test                   Description\n"
                                   L"  1   Link                   Looks at the cable and\n"
                                   L"                             at the switch\n"
                                   L"  A   Address configuration\n");
}

TEST(TableTest, TerminalTooNarrowToCutIsLeftToWrap)
{
    EXPECT_EQ(Sample().Render(30), Sample().Render(0));
}

TEST(TableTest, HeadingsAloneAreALine)
{
    EXPECT_EQ(CTable({L"A", L"B"}).Render(0), L"  A  B\n");
}
} // namespace
} // namespace zebdiag
