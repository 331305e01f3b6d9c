#include "tools/zebdiag/RunLines.h"

#include "tools/zebdiag/TextReport.h"

#include <utility>

namespace zebdiag
{
CRunLines::CRunLines(const CRunReport& report, const CRunPlan& plan)
    : m_report(report), m_plan(plan), m_outcomes(plan.Tests.size())
{
    for (const CTestChoice& choice : plan.Tests)
        m_progress.emplace_back([this](std::wstring_view text) { m_report.TellRaw(text); },
                                TestTitle(choice));
}

void CRunLines::Progress(size_t index, std::optional<long> percent, unsigned long long seconds)
{
    m_progress[index].Show(percent, seconds);
}

void CRunLines::Said(size_t index, const std::wstring& text)
{
    m_report.TellOf(m_plan.Tests[index], text);
}

void CRunLines::Stopping(size_t, StopReason reason)
{
    if (!std::exchange(m_stopping, true))
        m_report.TellStopping(reason);
}

void CRunLines::Ended(size_t index, const CRunOutcome& outcome)
{
    m_outcomes[index] = outcome;
    size_t end = m_shown;
    while (end < m_outcomes.size() && m_outcomes[end])
        ++end;
    ShowUpTo(end);
}

void CRunLines::Finish()
{
    ShowUpTo(m_outcomes.size());
}

void CRunLines::ShowUpTo(size_t end)
{
    for (; m_shown < end; ++m_shown)
        if (const auto outcome = std::exchange(m_outcomes[m_shown], std::nullopt))
            m_report.ShowOutcome({m_plan.Tests[m_shown], *outcome});
}
} // namespace zebdiag
