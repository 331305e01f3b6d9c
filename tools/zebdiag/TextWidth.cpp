#include "tools/zebdiag/TextWidth.h"

#include <algorithm>
#include <iterator>

namespace zebdiag
{
namespace
{
struct CRange
{
    char32_t First;
    char32_t Last;
};

constexpr CRange kNoColumn[] = {{0x300, 0x36F},   {0x1AB0, 0x1AFF}, {0x1DC0, 0x1DFF}, {0x200B, 0x200F},
                                {0x20D0, 0x20FF}, {0x3099, 0x309A}, {0xFE00, 0xFE0F}, {0xFE20, 0xFE2F}};

constexpr CRange kTwoColumns[] = {{0x1100, 0x115F},  {0x2E80, 0x303E}, {0x3041, 0x4DBF},   {0x4E00, 0xA4CF},
                                  {0xA960, 0xA97C},  {0xAC00, 0xD7A3}, {0xF900, 0xFAFF},   {0xFE30, 0xFE6F},
                                  {0xFF00, 0xFF60},  {0xFFE0, 0xFFE6}, {0x1F300, 0x1F64F}, {0x1F900, 0x1F9FF},
                                  {0x20000, 0x3FFFD}};

template <size_t Count>
bool IsIn(const CRange (&ranges)[Count], char32_t c) noexcept
{
    return std::ranges::any_of(ranges,
                               [c](const CRange& range) { return c >= range.First && c <= range.Last; });
}
} // namespace

CGlyph GlyphAt(std::wstring_view text, size_t at) noexcept
{
    char32_t c = text[at];
    size_t units = 1;
    const bool pair =
        c >= 0xD800 && c < 0xDC00 && at + 1 < text.size() && text[at + 1] >= 0xDC00 && text[at + 1] < 0xE000;
    if (pair)
    {
        c = 0x10000 + ((c - 0xD800) << 10) + (text[at + 1] - 0xDC00);
        units = 2;
    }
    return {units, IsIn(kNoColumn, c) ? 0u : IsIn(kTwoColumns, c) ? 2u : 1u};
}

size_t ColumnsOf(std::wstring_view text) noexcept
{
    size_t columns = 0;
    for (size_t at = 0; at < text.size();)
    {
        const CGlyph glyph = GlyphAt(text, at);
        columns += glyph.Columns;
        at += glyph.Units;
    }
    return columns;
}
} // namespace zebdiag
