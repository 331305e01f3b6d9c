#include "tools/zebdiag/Table.h"

#include "tools/zebdiag/TextWidth.h"
#include "tools/zebdiag/Wrap.h"

#include <algorithm>
#include <numeric>

namespace zebdiag
{
namespace
{
constexpr size_t kTableIndent = 2;
constexpr size_t kTableGap = 2;
constexpr unsigned kBelowIndent = 6;
// A text that needs more is not squeezed into less.
constexpr size_t kLeastText = 20;

void EndLine(std::wstring& line)
{
    line.erase(line.find_last_not_of(L' ') + 1);
    line += L"\n";
}

// The cells of a row but for the last, each as wide as its column.
std::wstring Lead(const std::vector<std::wstring>& row, const std::vector<size_t>& widths)
{
    std::wstring line(kTableIndent, L' ');
    for (size_t column = 0; column < widths.size(); ++column)
        line += row[column] + std::wstring(widths[column] - ColumnsOf(row[column]) + kTableGap, L' ');
    return line;
}

size_t LongestLine(const std::wstring& text)
{
    size_t longest = 0;
    for (const std::wstring& line : WrapText(text, 0))
        longest = std::max(longest, ColumnsOf(line));
    return longest;
}
} // namespace

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
    std::vector<size_t> widths(m_rows.front().size() - 1, 0);
    size_t longest = 0;
    for (const auto& row : m_rows)
    {
        for (size_t column = 0; column < widths.size(); ++column)
            widths[column] = std::max(widths[column], ColumnsOf(row[column]));
        longest = std::max(longest, LongestLine(row.back()));
    }
    if (width == 0)
        return RenderColumns(widths, 0);
    const size_t lead =
        std::accumulate(widths.begin(), widths.end(), kTableIndent + kTableGap * widths.size());
    // A terminal wraps a line that fills it to the last column.
    if (lead + std::min(longest, kLeastText) < width)
        return RenderColumns(widths, static_cast<unsigned>(width - lead - 1));
    return lead - kTableGap < width ? RenderLastBelow(widths, width) : RenderRecords(width);
}

std::wstring CTable::RenderColumns(const std::vector<size_t>& widths, unsigned room) const
{
    std::wstring text;
    for (const auto& row : m_rows)
    {
        std::wstring line = Lead(row, widths);
        const size_t lead = ColumnsOf(line);
        for (const std::wstring& part : WrapText(row.back(), room))
        {
            line += part;
            EndLine(line);
            text += line;
            line.assign(lead, L' ');
        }
    }
    return text;
}

std::wstring CTable::RenderLastBelow(const std::vector<size_t>& widths, unsigned width) const
{
    std::wstring text;
    for (const auto& row : m_rows)
    {
        std::wstring line = Lead(row, widths);
        EndLine(line);
        text += line;
        if (!row.back().empty())
            text += Paragraph(row.back(), width, kBelowIndent);
    }
    return text;
}

std::wstring CTable::RenderRecords(unsigned width) const
{
    std::wstring text;
    for (size_t row = 1; row < m_rows.size(); ++row)
        for (size_t column = 0; column < m_rows[row].size(); ++column)
            if (const std::wstring& cell = m_rows[row][column]; !cell.empty())
                text += Paragraph(m_rows.front()[column] + L": " + cell, width,
                                  column == 0 ? kTableIndent : kTableIndent + kTableGap);
    return text;
}
} // namespace zebdiag
