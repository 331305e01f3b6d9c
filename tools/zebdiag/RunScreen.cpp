#include "tools/zebdiag/RunScreen.h"

#include <algorithm>
#include <utility>

namespace zebdiag
{
CRunScreen::CRunScreen(const CRunReport& report, const CRunPlan& plan, IConsole& console, Stream stream,
                       const std::vector<std::optional<unsigned long long>>& most)
    : m_report(report), m_plan(plan), m_console(console), m_stream(stream), m_outcomes(plan.Tests.size())
{
    for (size_t i = 0; i < plan.Tests.size(); ++i)
    {
        CRunRow& row = m_rows.emplace_back();
        row.Choice = plan.Tests[i];
        row.MostSeconds = most[i];
    }
    Draw();
}

void CRunScreen::Begun(size_t index)
{
    m_rows[index].Phase = RunPhase::Running;
    Draw();
}

void CRunScreen::Progress(size_t index, std::optional<long> percent, unsigned long long seconds)
{
    CRunRow& row = m_rows[index];
    // The last reading of a run can exceed 100. A reading that failed does not set the bar back.
    if (percent)
        row.Percent = std::clamp(*percent, 0L, 100L);
    row.Seconds = seconds;
    Draw();
}

void CRunScreen::Said(size_t index, const std::wstring& text)
{
    Remove();
    m_report.TellOf(m_plan.Tests[index], text);
    Draw();
}

void CRunScreen::Stopping(size_t, StopReason reason)
{
    if (std::exchange(m_stopping, true))
        return;
    Remove();
    m_report.TellStopping(reason);
    Draw();
}

void CRunScreen::Ended(size_t index, const CRunOutcome& outcome)
{
    CRunRow& row = m_rows[index];
    row.Phase = RunPhase::Ended;
    row.Seconds = outcome.Seconds;
    row.Code = outcome.Code;
    row.HasRun = outcome.Result.has_value();
    m_outcomes[index] = outcome;
    Draw();
}

void CRunScreen::Finish()
{
    for (CRunRow& row : m_rows)
        if (row.Phase != RunPhase::Ended)
            row.Phase = RunPhase::LeftOut;
    Put(DrawEndedRuns(m_rows, m_report.Width()));
    for (size_t i = 0; i < m_outcomes.size(); ++i)
        if (m_outcomes[i])
            m_report.ShowFindings({m_plan.Tests[i], *m_outcomes[i]});
}

void CRunScreen::Draw()
{
    Put(DrawRuns(m_rows, m_plan.InOrder, {m_report.Width(), m_console.Height(m_stream)}));
}

void CRunScreen::Remove()
{
    m_console.Redraw(m_stream, {});
}

void CRunScreen::Put(std::vector<CScreenLine> lines)
{
    if (!m_console.Colours())
        for (CScreenLine& line : lines)
            for (CPiece& piece : line)
                piece.InColour = Colour::Plain;
    m_console.Redraw(m_stream, lines);
}
} // namespace zebdiag
