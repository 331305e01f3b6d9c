// How many columns of a terminal a text takes: East Asian characters take two, combining marks none.
#pragma once

#include <string_view>

namespace zebdiag
{
struct CGlyph
{
    size_t Units;     // UTF-16 code units
    unsigned Columns; // 0, 1 or 2
};

// The character that begins at `at`, which must be within the text.
CGlyph GlyphAt(std::wstring_view text, size_t at) noexcept;

size_t ColumnsOf(std::wstring_view text) noexcept;
} // namespace zebdiag
