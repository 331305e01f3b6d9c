// What the end of a run means.
#pragma once

#include "tools/zebdiag/ExitCode.h"
#include "tools/zebdiag/Model.h"

#include <optional>
#include <string>

namespace zebdiag
{
class CFailure;

enum class StopReason
{
    None,
    Request,
    Timeout
};

struct CRunOutcome
{
    ExitCode Code = ExitCode::CouldNotRun;
    std::optional<CResult> Result; // absent where there was no run
    std::wstring Message;          // what the result does not say; may be empty
    unsigned long long Seconds = 0;
    bool Interrupted = false; // by the events of CRunControl
};

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
