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

    // Every line indented by two. The last column is cut into lines at spaces so that the table fits `width`
    // characters; 0 leaves it whole.
    std::wstring Render(unsigned width) const;

  private:
    std::vector<std::vector<std::wstring>> m_rows; // the headings first
};

// A text cut at spaces into lines of at most `width` characters (longer words stay whole); 0 leaves it whole.
// Line ends in the text are kept.
std::vector<std::wstring> WrapText(const std::wstring& text, unsigned width);
} // namespace zebdiag
