#include "tools/zebdiag/TerminalText.h"

#include <algorithm>

namespace zebdiag
{
namespace
{
// Those of ASCII, and those that terminals take for an escape sequence of one character.
bool IsControlCharacter(wchar_t c) noexcept
{
    return c < 0x20 || (c >= 0x7F && c <= 0x9F);
}
} // namespace

std::wstring ForTerminal(std::wstring text)
{
    std::ranges::replace_if(
        text, [](wchar_t c) { return c != L'\n' && IsControlCharacter(c); }, L'\xFFFD');
    return text;
}

std::wstring ForCell(std::wstring text)
{
    std::ranges::replace_if(text, IsControlCharacter, L' ');
    return text;
}
} // namespace zebdiag
