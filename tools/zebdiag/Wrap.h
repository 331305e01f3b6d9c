// Texts cut into lines that fit a terminal. A width of 0 leaves lines whole, as for files and pipes.
#pragma once

#include <string>
#include <vector>

namespace zebdiag
{
// Lines of at most `width` columns, cut at spaces and between East Asian characters; a longer word stays
// whole. Line ends in the text are kept, and what a line begins with in spaces is repeated where it goes on.
std::vector<std::wstring> WrapText(const std::wstring& text, unsigned width);

// The text as lines of their own, each with its line end and `indent` spaces before it, on a terminal of
// `width` columns.
std::wstring Paragraph(const std::wstring& text, unsigned width, unsigned indent = 0);
} // namespace zebdiag
