// Text in columns.
#pragma once

#include <string>
#include <vector>

namespace zebdiag
{
class CTable
{
  public:
    explicit CTable(std::vector<std::wstring> headings);

    // As many cells as there are headings.
    void Add(std::vector<std::wstring> cells);

    // Every line indented by two. On a terminal of `width` columns the last column is cut into lines. Where
    // the others leave it too little room it stands below its row; where they have not enough themselves,
    // each cell has a line of its own, behind its heading. 0 leaves lines whole.
    std::wstring Render(unsigned width) const;

  private:
    std::wstring RenderColumns(const std::vector<size_t>& widths, unsigned room) const;
    std::wstring RenderLastBelow(const std::vector<size_t>& widths, unsigned width) const;
    std::wstring RenderRecords(unsigned width) const;

    std::vector<std::vector<std::wstring>> m_rows; // the headings first
};
} // namespace zebdiag
