// A series of runs on a terminal: a table that is drawn over. It stays when the series is over, and below it
// stands what the tests found.
#pragma once

#include "tools/zebdiag/Console.h"
#include "tools/zebdiag/RunReport.h"
#include "tools/zebdiag/RunTable.h"
#include "tools/zebdiag/RunView.h"

#include <vector>

namespace zebdiag
{
class CRunScreen final : public IRunView
{
  public:
    // Report, plan and console have to live as long. `most` says how long the tests may take, as far as is
    // known.
    CRunScreen(const CRunReport& report, const CRunPlan& plan, IConsole& console, Stream stream,
               const std::vector<std::optional<unsigned long long>>& most);

    void Begun(size_t index) override;
    void Progress(size_t index, std::optional<long> percent, unsigned long long seconds) override;
    void Said(size_t index, const std::wstring& text) override;
    void Stopping(size_t index, StopReason reason) override;
    void Ended(size_t index, const CRunOutcome& outcome) override;
    void Finish() override;

  private:
    void Draw();
    void Remove();
    void Put(std::vector<CScreenLine> lines);

    const CRunReport& m_report;
    const CRunPlan& m_plan;
    IConsole& m_console;
    const Stream m_stream;
    std::vector<CRunRow> m_rows;
    std::vector<std::optional<CRunOutcome>> m_outcomes;
    bool m_stopping = false;
};
} // namespace zebdiag
