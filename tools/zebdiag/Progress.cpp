#include "tools/zebdiag/Progress.h"

#include "tools/zebdiag/DateTime.h"
#include "tools/zebdiag/Words.h"

#include <algorithm>
#include <utility>

namespace zebdiag
{
namespace
{
constexpr long kPercentStep = 10;
constexpr unsigned long long kSecondsStep = 10;
} // namespace

CProgress::CProgress(Writer write, std::wstring label) : m_write(std::move(write)), m_label(std::move(label))
{
}

void CProgress::Show(std::optional<long> percent, unsigned long long elapsedSeconds)
{
    // The last reading of a run can exceed 100.
    if (percent)
        percent = std::clamp(*percent, 0L, 100L);
    const bool due = percent ? !m_saidPercent || *percent / kPercentStep > *m_saidPercent / kPercentStep
                             : elapsedSeconds >= m_saidSeconds + kSecondsStep;
    if (!due)
        return;
    m_saidPercent = percent;
    m_saidSeconds = elapsedSeconds;
    m_write(L"  " + m_label + L": " + (percent ? Percent(*percent) + L", " : L"") + Duration(elapsedSeconds) +
            L"\n");
}
} // namespace zebdiag
