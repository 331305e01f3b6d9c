#include "tools/zebdiag/Progress.h"

#include "tools/zebdiag/DateTime.h"
#include "tools/zebdiag/TextWidth.h"
#include "tools/zebdiag/Wrap.h"

#include <algorithm>
#include <utility>

namespace zebdiag
{
namespace
{
// Plain lines: the first percentage that is known, then one for every so many percent; where nobody knows it,
// one for every so many seconds.
constexpr long kPercentStep = 10;
constexpr unsigned long long kSecondsStep = 10;
constexpr unsigned kLongestBar = 40;
constexpr unsigned kLabelIndent = 2;
constexpr size_t kBarFrame = 3; // two brackets and the column that stays free

std::wstring Figures(std::optional<long> percent, unsigned long long elapsed)
{
    return (percent ? std::to_wstring(*percent) + L" %, " : L"") + Duration(elapsed);
}

std::wstring Beginning(const std::wstring& text, size_t columns)
{
    size_t end = 0;
    for (size_t taken = 0; end < text.size(); end += GlyphAt(text, end).Units)
    {
        taken += GlyphAt(text, end).Columns;
        if (taken > columns)
            break;
    }
    return text.substr(0, end);
}
} // namespace

CProgress::CProgress(Writer write, std::wstring label, bool terminal, unsigned width)
    : m_write(std::move(write)), m_label(std::move(label)), m_terminal(terminal), m_width(width ? width : 80)
{
}

void CProgress::Show(std::optional<long> percent, unsigned long long elapsedSeconds)
{
    if (m_finished)
        return;
    // The last reading of a run can exceed 100.
    if (percent)
        percent = std::clamp(*percent, 0L, 100L);
    if (m_terminal)
        DrawBar(percent, elapsedSeconds);
    else
        WriteLine(percent, elapsedSeconds);
}

void CProgress::DrawBar(std::optional<long> percent, unsigned long long elapsedSeconds)
{
    const std::wstring figures = L" " + Figures(percent, elapsedSeconds);
    // A terminal wraps a line that fills it to the last column, and a line that is wrapped cannot be drawn
    // over.
    const size_t others = kLabelIndent + figures.size() + 1;
    const size_t label = ColumnsOf(m_label);
    if (others + label >= m_width)
        return Draw(std::wstring(kLabelIndent, L' ') +
                    Beginning(m_label, m_width > others ? m_width - others : 0) + figures);
    std::wstring line = std::wstring(kLabelIndent, L' ') + m_label + L" ";
    const size_t taken = others + label + kBarFrame;
    if (percent && m_width > taken)
    {
        const size_t size = std::min<size_t>(m_width - taken, kLongestBar);
        const size_t full = size * static_cast<size_t>(*percent) / 100;
        line += L"[" + std::wstring(full, L'#') + std::wstring(size - full, L'.') + L"]";
    }
    Draw(line + figures);
}

void CProgress::Draw(const std::wstring& line)
{
    const size_t before = std::exchange(m_drawn, ColumnsOf(line));
    m_write(L"\r" + line + std::wstring(before > m_drawn ? before - m_drawn : 0, L' '));
}

void CProgress::WriteLine(std::optional<long> percent, unsigned long long elapsedSeconds)
{
    const bool due = percent ? !m_saidPercent || *percent / kPercentStep > *m_saidPercent / kPercentStep
                             : elapsedSeconds >= m_saidSeconds + kSecondsStep;
    if (!due)
        return;
    m_saidPercent = percent;
    m_saidSeconds = elapsedSeconds;
    m_write(L"  " + m_label + L": " + Figures(percent, elapsedSeconds) + L"\n");
}

void CProgress::Say(std::wstring_view text)
{
    const size_t drawn = std::exchange(m_drawn, 0);
    if (drawn)
        m_write(L"\r" + std::wstring(drawn, L' ') + L"\r");
    m_write(Paragraph(std::wstring(text), m_terminal ? m_width : 0, kLabelIndent));
}

void CProgress::Finish()
{
    if (m_finished)
        return;
    m_finished = true;
    if (m_drawn)
        m_write(L"\r" + std::wstring(m_drawn, L' ') + L"\r");
}
} // namespace zebdiag
