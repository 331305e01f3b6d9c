#include "tools/zebdiag/RunOutcome.h"

#include "tools/zebdiag/Failure.h"
#include "tools/zebdiag/Words.h"
#include "tools/zebdiag/languages/Said.h"

#include <utility>

namespace zebdiag
{
CRunOutcome Refused(ExitCode code)
{
    CRunOutcome outcome;
    outcome.Code = code;
    outcome.Message =
        code == ExitCode::Busy
            ? Said(L"The test is running already. Wait for its end, or stop it with \"zebdiag stop\".")
            : Said(L"The provider did not run the test.") + TraceTells();
    return outcome;
}

CRunOutcome LeftToItself(const CStop& stop)
{
    CRunOutcome outcome;
    outcome.Code = stop.Taken ? ExitCode::Stopped : ExitCode::CouldNotRun;
    outcome.Message =
        stop.Taken
            ? Said(L"The test was told to stop but has not ended yet. \"zebdiag list\" shows when it has.")
            : Said(L"The test could not be stopped and may still run. Try \"zebdiag stop\".");
    return outcome;
}

CRunOutcome OutcomeOf(std::optional<CResult> result, const CStop& stop)
{
    CRunOutcome outcome;
    outcome.Result = std::move(result);
    if (!outcome.Result)
    {
        outcome.Message = Said(L"The test has run, but its result is not there any more. Run it again.");
        return outcome;
    }
    switch (outcome.Result->State)
    {
    case TestState::Passed:
        outcome.Code = ExitCode::Passed;
        if (stop.Reason != StopReason::None)
            outcome.Message = Said(L"The test had ended before it could be stopped.");
        break;
    case TestState::Failed:
        // Agents that have no word for it let a stopped run end as failed, with the stop as its reason.
        outcome.Code = stop.Taken ? ExitCode::Stopped : ExitCode::Failed;
        break;
    case TestState::Stopped:
        outcome.Code = ExitCode::Stopped;
        if (stop.Reason == StopReason::None)
            outcome.Message = Said(L"Another program stopped the test.");
        break;
    default:
        outcome.Message = Said(L"The provider did not finish the run.") + TraceTells();
        break;
    }
    if (outcome.Code == ExitCode::Stopped && stop.Reason == StopReason::Timeout)
        outcome.Message = Said(L"The time given with --timeout was over.");
    return outcome;
}

CRunOutcome OutcomeOf(const CFailure& failure)
{
    CRunOutcome outcome;
    outcome.Code = failure.Code;
    outcome.Message = failure.Cause;
    if (!failure.NextStep.empty())
        outcome.Message += L" " + failure.NextStep;
    if (!failure.Detail.empty())
        outcome.Message += L"\n" + Said(L"The provider says: {1}", {failure.Detail});
    if (failure.Status != S_OK)
        outcome.Message += L"\n" + Said(L"(Status {1}.)", {StatusText(failure.Status)});
    return outcome;
}
} // namespace zebdiag
