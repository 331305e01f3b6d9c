// A series of runs in lines, for files, pipes and terminals too small for a table. What a test found is told
// in the order of the list: once it and all before it have ended.
#pragma once

#include "tools/zebdiag/Progress.h"
#include "tools/zebdiag/RunReport.h"
#include "tools/zebdiag/RunView.h"

#include <vector>

namespace zebdiag
{
class CRunLines final : public IRunView
{
  public:
    // Both have to live as long.
    CRunLines(const CRunReport& report, const CRunPlan& plan);

    void Begun(size_t) override {}
    void Progress(size_t index, std::optional<long> percent, unsigned long long seconds) override;
    void Said(size_t index, const std::wstring& text) override;
    void Stopping(size_t index, StopReason reason) override;
    void Ended(size_t index, const CRunOutcome& outcome) override;
    void Finish() override;

  private:
    void ShowUpTo(size_t end);

    const CRunReport& m_report;
    const CRunPlan& m_plan;
    std::vector<CProgress> m_progress;
    std::vector<std::optional<CRunOutcome>> m_outcomes; // those that are not shown yet
    size_t m_shown = 0;
    bool m_stopping = false;
};
} // namespace zebdiag
