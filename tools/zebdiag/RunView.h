// What shows a series of runs while it lasts. Called on the thread that asked for the series.
#pragma once

#include "tools/zebdiag/TestRun.h"

#include <cstddef>
#include <optional>
#include <string>

namespace zebdiag
{
class IRunView
{
  public:
    virtual ~IRunView() = default;

    // `index` is the place of the test in the series.
    virtual void Begun(size_t index) = 0;
    virtual void Progress(size_t index, std::optional<long> percent, unsigned long long seconds) = 0;
    virtual void Said(size_t index, const std::wstring& text) = 0;
    virtual void Stopping(size_t index, StopReason reason) = 0;
    virtual void Ended(size_t index, const CRunOutcome& outcome) = 0;
    // The series is over; what has not begun will not.
    virtual void Finish() = 0;
};
} // namespace zebdiag
