// What the end of a run means.
#pragma once

#include "tools/zebdiag/TestRun.h"

#include <optional>

namespace zebdiag
{
class CFailure;

// How far this program has come with stopping a run.
struct CStop
{
    StopReason Reason = StopReason::None;
    bool Taken = false; // by the provider
};

// There was no run.
CRunOutcome Refused(ExitCode code);
// The run goes on by itself.
CRunOutcome LeftToItself(const CStop& stop);
// The run has ended with this result, which may be gone already.
CRunOutcome OutcomeOf(std::optional<CResult> result, const CStop& stop);
CRunOutcome OutcomeOf(const CFailure& failure);
} // namespace zebdiag
