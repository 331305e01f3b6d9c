#include "tools/zebdiag/Wrap.h"

#include "tools/zebdiag/TextWidth.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace zebdiag
{
namespace
{
// East Asian text is cut anywhere but before the first and behind the second of these.
constexpr std::wstring_view kNotAtTheBeginning = L"、。，．・：；？！）］｝〉》」』】〕ー,.;:!?)]}";
constexpr std::wstring_view kNotAtTheEnd = L"（［｛〈《「『【〔([{";

// Finds where one line may end.
class CLineCutter
{
  public:
    explicit CLineCutter(const std::wstring& line)
        : m_line(line), m_lead(std::min(line.find_first_not_of(L' '), line.size())), m_begin(m_lead)
    {
    }

    std::vector<std::wstring> Cut(unsigned width)
    {
        size_t columns = m_lead;
        for (size_t at = m_lead; at < m_line.size();)
        {
            const CGlyph glyph = GlyphAt(m_line, at);
            Look(at, glyph);
            columns += glyph.Columns;
            at += glyph.Units;
            if (columns <= width || m_cut == m_begin)
                continue;
            Take(m_cut);
            m_begin = std::min(m_line.find_first_not_of(L' ', m_cut), m_line.size());
            m_cut = m_begin;
            at = std::max(at, m_begin);
            columns = m_lead + ColumnsOf(std::wstring_view(m_line).substr(m_begin, at - m_begin));
        }
        if (m_lines.empty() || m_begin < m_line.size())
            Take(m_line.size());
        return std::move(m_lines);
    }

  private:
    // Whether the line may end before this character.
    void Look(size_t at, CGlyph glyph)
    {
        const wchar_t c = m_line[at];
        const bool besideWide = (glyph.Columns == 2 || m_previousWide) && glyph.Columns != 0 &&
                                kNotAtTheBeginning.find(c) == std::wstring_view::npos &&
                                kNotAtTheEnd.find(m_previous) == std::wstring_view::npos;
        if (at > m_begin && m_previous != L' ' && (c == L' ' || besideWide))
            m_cut = at;
        if (glyph.Columns != 0)
        {
            m_previousWide = glyph.Columns == 2;
            m_previous = c;
        }
    }

    void Take(size_t end)
    {
        m_lines.push_back(m_line.substr(0, m_lead) + m_line.substr(m_begin, end - m_begin));
    }

    const std::wstring& m_line;
    const size_t m_lead; // spaces that every line begins with
    size_t m_begin;
    size_t m_cut = m_begin; // the last place where this line may end; its beginning if there is none yet
    wchar_t m_previous = L' ';
    bool m_previousWide = false;
    std::vector<std::wstring> m_lines;
};
} // namespace

std::vector<std::wstring> WrapText(const std::wstring& text, unsigned width)
{
    std::vector<std::wstring> lines;
    size_t begin = 0;
    for (size_t end = 0; end != std::wstring::npos; begin = end + 1)
    {
        end = text.find(L'\n', begin);
        std::wstring line = text.substr(begin, end == std::wstring::npos ? end : end - begin);
        if (!line.empty() && line.back() == L'\r')
            line.pop_back();
        if (width == 0)
            lines.push_back(std::move(line));
        else
            std::ranges::move(CLineCutter(line).Cut(width), std::back_inserter(lines));
    }
    return lines;
}

std::wstring Paragraph(const std::wstring& text, unsigned width, unsigned indent)
{
    // A terminal wraps a line that fills it to the last column.
    const unsigned room = width == 0 ? 0 : width > indent + 1 ? width - indent - 1 : 1;
    std::wstring paragraph;
    for (const std::wstring& line : WrapText(text, room))
        paragraph += (line.empty() ? L"" : std::wstring(indent, L' ') + line) + L"\n";
    return paragraph;
}
} // namespace zebdiag
