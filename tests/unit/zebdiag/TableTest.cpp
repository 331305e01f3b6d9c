#include "tools/zebdiag/Table.h"

#include "tests/support/CaseName.h"
#include "tools/zebdiag/TextWidth.h"
#include "tools/zebdiag/Wrap.h"

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
                    WrapCase{"KeepsLineEnds", L"one\r\ntwo\n", 10, {L"one", L"two", L""}},
                    WrapCase{
                        "RepeatsTheIndent", L"a:\n  one two three", 9, {L"a:", L"  one two", L"  three"}},
                    WrapCase{"TwoSpacesAtTheCut", L"one  two", 4, {L"one", L"two"}},
                    WrapCase{"SpaceAtTheEnd", L"one ", 3, {L"one"}},
                    WrapCase{"WideBetweenCharacters", L"網路介面", 5, {L"網路", L"介面"}},
                    WrapCase{"WideNotBeforeAFullStop", L"網路。介", 4, {L"網", L"路。", L"介"}},
                    WrapCase{"WideNotBehindABracket", L"網路「介面", 7, {L"網路", L"「介面"}},
                    WrapCase{"WideBesideALatinWord", L"網路Link", 6, {L"網路", L"Link"}}),
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

TEST(TableTest, LastColumnStandsBelowIfThereIsNoRoomBesideTheOthers)
{
    EXPECT_EQ(Sample().Render(40), L"  No  Test\n"
                                   L"      Description\n"
                                   L"  1   Link\n"
                                   L"      Looks at the cable and at the\n"
                                   L"      switch\n"
                                   L"  A   Address configuration\n");
}

TEST(TableTest, CellsAreLinesIfNothingHasRoomBesideAnother)
{
    EXPECT_EQ(Sample().Render(25), L"  No: 1\n"
                                   L"    Test: Link\n"
                                   L"    Description: Looks\n"
                                   L"    at the cable and at\n"
                                   L"    the switch\n"
                                   L"  No: A\n"
                                   L"    Test: Address\n"
                                   L"    configuration\n");
}

// A short last column needs no more room than it has text.
TEST(TableTest, ShortLastColumnStaysBesideTheOthers)
{
    CTable table({L"Test", L"On"});
    table.Add({L"Negotiated speed", L"yes"});
    EXPECT_EQ(table.Render(24), table.Render(0));
    EXPECT_NE(table.Render(23), table.Render(0));
}

TEST(TableTest, WideCharactersKeepTheColumns)
{
    CTable table({L"試驗", L"State"});
    table.Add({L"網路介面", L"good"});
    table.Add({L"e\u0301t\u00e9", L"good"});
    EXPECT_EQ(table.Render(0), L"  試驗      State\n"
                               L"  網路介面  good\n"
                               L"  e\u0301t\u00e9       good\n");
}

struct ColumnsCase
{
    const char* name;
    const wchar_t* text;
    size_t columns;
};

class ColumnsOfTest : public testing::TestWithParam<ColumnsCase>
{
};

TEST_P(ColumnsOfTest, CountsWhatATerminalTakes)
{
    EXPECT_EQ(ColumnsOf(GetParam().text), GetParam().columns);
}

INSTANTIATE_TEST_SUITE_P(Texts, ColumnsOfTest,
                         testing::Values(ColumnsCase{"Empty", L"", 0}, ColumnsCase{"Latin", L"Größe", 5},
                                         ColumnsCase{"Chinese", L"網路", 4},
                                         ColumnsCase{"Korean", L"연결", 4},
                                         ColumnsCase{"FullWidthLatin", L"Ａ", 2},
                                         ColumnsCase{"HalfWidthKana", L"ｱ", 1},
                                         ColumnsCase{"CombiningMark", L"e\u0301", 1},
                                         ColumnsCase{"OutsideTheBasicPlane", L"\U00020000", 2},
                                         ColumnsCase{"HalfAPair", L"\xD840", 1}),
                         NameOf<ColumnsCase>);

TEST(TableTest, HeadingsAloneAreALine)
{
    EXPECT_EQ(CTable({L"A", L"B"}).Render(0), L"  A  B\n");
}
} // namespace
} // namespace zebdiag
