// Texts as a terminal may get them. Names and findings come from other computers and programs, and a terminal
// obeys the control characters in them.
#pragma once

#include <string>

namespace zebdiag
{
// With U+FFFD in place of every control character but the end of a line.
std::wstring ForTerminal(std::wstring text);

// With a blank in place of every control character, so that the text stays on its line and keeps its width.
std::wstring ForCell(std::wstring text);
} // namespace zebdiag
