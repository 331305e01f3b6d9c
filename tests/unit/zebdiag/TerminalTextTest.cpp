// What of a text reaches a terminal.
#include "tools/zebdiag/TerminalText.h"

#include "Common/src/com/Text.h"
#include "tests/support/CaseName.h"

namespace zebdiag
{
namespace
{
struct TerminalTextCase
{
    const char* name;
    std::wstring text;
    std::wstring shown;
    std::wstring inCell;
};

class TerminalTextTest : public testing::TestWithParam<TerminalTextCase>
{
};

TEST_P(TerminalTextTest, HasNoCharacterThatTheTerminalObeys)
{
    EXPECT_EQ(Utf8Text(ForTerminal(GetParam().text)), Utf8Text(GetParam().shown));
    EXPECT_EQ(Utf8Text(ForCell(GetParam().text)), Utf8Text(GetParam().inCell));
}

INSTANTIATE_TEST_SUITE_P(
    Texts, TerminalTextTest,
    testing::Values(TerminalTextCase{"Nothing", L"", L"", L""},
                    TerminalTextCase{"OrdinaryText", L"Größe \x4EE5 \xD83D\xDE00",
                                     L"Größe \x4EE5 \xD83D\xDE00", L"Größe \x4EE5 \xD83D\xDE00"},
                    TerminalTextCase{"EndsOfLines", L"one\ntwo\n", L"one\ntwo\n", L"one two "},
                    TerminalTextCase{"EscapeSequence", L"x\x1B[2Jy", L"x\xFFFD[2Jy", L"x [2Jy"},
                    TerminalTextCase{"EscapeOfOneCharacter", L"x\x9Bm", L"x\xFFFDm", L"x m"},
                    TerminalTextCase{"CarriageReturn", L"x\ry\r\n", L"x\xFFFDy\xFFFD\n", L"x y  "},
                    TerminalTextCase{"BackspaceTabAndBell", L"\b\t\a", L"\xFFFD\xFFFD\xFFFD", L"   "},
                    TerminalTextCase{"Zero", std::wstring(1, L'\0'), L"\xFFFD", L" "},
                    TerminalTextCase{"FirstAndLast", L"\x1F ~\x7F\x9F\xA0", L"\xFFFD ~\xFFFD\xFFFD\xA0",
                                     L"  ~  \xA0"}),
    NameOf<TerminalTextCase>);
} // namespace
} // namespace zebdiag
