// How a run of a test has ended, and what its result shows then.
#pragma once

#include <optional>
#include <variant>
#include <windows.h>

class CDiagResult;
class CDiagTest;
class IRunEnvironment;

struct CPassedRun
{
    std::optional<HRESULT> Finding; // what the agent of an ordinary test has to say all the same
};
struct CStoppedRun
{
};
struct CFailedRun
{
    HRESULT Code;
};
using CRunOutcome = std::variant<CPassedRun, CStoppedRun, CFailedRun>;

// What the status of CDiagTest::StartTest says. An agent's engine::Stopped counts as a stop, too.
CRunOutcome OutcomeOf(HRESULT status, const CDiagTest& test) noexcept;

// Completes the result. Gives the run's failure, or why the result could not be completed.
HRESULT CompleteResult(const CRunOutcome& outcome, const CDiagTest& test, ULONGLONG elapsedMilliseconds,
                       IRunEnvironment& environment, CDiagResult& result);
