#include "tools/zebdiag/Table.h"

#include <algorithm>

namespace zebdiag
{
namespace
{
constexpr size_t kIndent = 2;
constexpr size_t kGap = 2;
// Narrower than this a column of text is harder to read than a line that the terminal breaks.
constexpr unsigned kLeastWrap = 20;

void WrapLine(const std::wstring& line, unsigned width, std::vector<std::wstring>& out)
{
    std::wstring rest = line;
    while (width != 0 && rest.size() > width)
    {
        size_t cut = rest.rfind(L' ', width);
        if (cut == std::wstring::npos || cut == 0)
            cut = rest.find(L' ', width);
        if (cut == std::wstring::npos)
            break;
        out.push_back(rest.substr(0, cut));
        rest.erase(0, cut + 1);
    }
    out.push_back(std::move(rest));
}
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
        WrapLine(line, width, lines);
    }
    return lines;
}

CTable::CTable(std::vector<std::wstring> headings)
{
    m_rows.push_back(std::move(headings));
}

void CTable::Add(std::vector<std::wstring> cells)
{
    m_rows.push_back(std::move(cells));
}

std::wstring CTable::Render(unsigned width) const
{
    const size_t last = m_rows.front().size() - 1;
    std::vector<size_t> widths(last, 0);
    for (const auto& row : m_rows)
        for (size_t column = 0; column < last; ++column)
            widths[column] = std::max(widths[column], row[column].size());
    size_t lead = kIndent;
    for (const size_t one : widths)
        lead += one + kGap;
    // A terminal wraps a line that fills it to the last column.
    const unsigned room = width > lead + kLeastWrap ? static_cast<unsigned>(width - lead - 1) : 0;

    std::wstring text;
    for (const auto& row : m_rows)
    {
        std::wstring line(kIndent, L' ');
        for (size_t column = 0; column < last; ++column)
            line += row[column] + std::wstring(widths[column] - row[column].size() + kGap, L' ');
        for (const std::wstring& part : WrapText(row[last], room))
        {
            line += part;
            line.erase(line.find_last_not_of(L' ') + 1);
            text += line + L"\n";
            line.assign(lead, L' ');
        }
    }
    return text;
}
} // namespace zebdiag
