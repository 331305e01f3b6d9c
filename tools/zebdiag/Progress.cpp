#include "tools/zebdiag/Progress.h"

#include "tools/zebdiag/DateTime.h"

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

std::wstring Figures(std::optional<long> percent, unsigned long long elapsed)
{
    return (percent ? std::to_wstring(*percent) + L" %, " : L"") + Duration(elapsed);
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
    std::wstring line = L"  " + m_label + L" ";
    const std::wstring figures = L" " + Figures(percent, elapsedSeconds);
    const size_t taken = line.size() + figures.size() + 3;
    if (percent && m_width > taken)
    {
        const size_t size = std::min<size_t>(m_width - taken, kLongestBar);
        const size_t full = size * static_cast<size_t>(*percent) / 100;
        line += L"[" + std::wstring(full, L'#') + std::wstring(size - full, L'.') + L"]";
    }
    line += figures;
    const size_t drawn = line.size();
    if (drawn < m_drawn)
        line += std::wstring(m_drawn - drawn, L' ');
    m_drawn = drawn;
    m_write(L"\r" + line);
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
    m_write(L"  " + std::wstring(text) + L"\n");
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
