// One run of one test, from its start to its result.
#pragma once

#include "tools/zebdiag/Model.h"
#include "tools/zebdiag/RunOutcome.h"
#include "tools/zebdiag/WmiSession.h"

#include <functional>
#include <optional>
#include <string>
#include <windows.h>

namespace zebdiag
{
// What may end a run early, and how often it is looked at. The handles are not owned.
struct CRunControl
{
    HANDLE Stop = nullptr;    // set: stop the test
    HANDLE Abandon = nullptr; // set: leave the test to itself and come back
    // Called by commands that look at the events, before they do: from then on the user's interrupts set
    // them.
    std::function<void()> CatchInterrupts = [] {};
    DWORD PollMilliseconds = 1000;
    std::function<unsigned long long()> Now = [] { return GetTickCount64(); }; // milliseconds
};

// What a run tells while it lasts. Called on the thread that runs it.
struct CRunObserver
{
    std::function<void(std::optional<long> percent, unsigned long long seconds)> Progress;
    std::function<void(const std::wstring& text)> Say;
    // The run is told to stop.
    std::function<void(StopReason reason)> Stopping;
};

struct CRunOptions
{
    CSettingValues Setting;                     // what to change for this run
    std::optional<unsigned long long> Deadline; // by the clock of CRunControl: the run is stopped then
};

// Runs the test with its setting. A request that fails becomes an outcome, not an exception. `computer` is
// the name that the provider gives to its computer. Where values of the setting are changed for the run, they
// are put back afterwards, whatever happened; those that another client has changed meanwhile stay as they
// are.
CRunOutcome RunOneTest(const CWmiSession& session, const std::wstring& computer, const CTest& test,
                       const CRunOptions& options, const CRunControl& control, const CRunObserver& observer);

// Asks for a running test to be stopped. True where the provider took it.
bool RequestStop(const CWmiSession& session, const std::wstring& computer, const CTest& test);
} // namespace zebdiag
