// The tests of a series as they stand, and how long all of it still takes.
#pragma once

#include "tools/zebdiag/Series.h"

namespace zebdiag
{
enum class RunPhase
{
    Waiting,
    Running,
    Ended,
    LeftOut // the series was ended before
};

struct CRunRow
{
    CTestChoice Choice;
    // How long the test may take, for those that send packets.
    std::optional<unsigned long long> MostSeconds;
    RunPhase Phase = RunPhase::Waiting;
    std::optional<long> Percent; // 0 to 100
    unsigned long long Seconds = 0;
    ExitCode Code = ExitCode::Passed; // of one that has ended
    bool HasRun = false;              // of one that has ended: not refused
};

// How much of the series is done, 0 to 100: each test counts alike.
unsigned PercentDone(const std::vector<CRunRow>& rows);

// An ordinary test is taken to last as long as those that have ended did on average; absent as long as none
// has.
std::optional<unsigned long long> SecondsLeft(const std::vector<CRunRow>& rows, Order order);
} // namespace zebdiag
