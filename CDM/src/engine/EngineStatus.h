// The statuses that the diagnostics engine gives beside those of the platform.
#pragma once

#include <windows.h>

namespace engine
{
constexpr HRESULT AlreadyLocked = static_cast<HRESULT>(0x80042000); // a run of the test is in progress
constexpr HRESULT NotLocked = static_cast<HRESULT>(0x80042001);
constexpr HRESULT Stopped = static_cast<HRESULT>(0x80042002); // or: asked to stop, but not running
constexpr HRESULT ClearWhileRunning = static_cast<HRESULT>(0x80042003);
constexpr HRESULT NotFound = static_cast<HRESULT>(0x80042005);
constexpr HRESULT AlreadyPresent = static_cast<HRESULT>(0x80042006);
constexpr HRESULT UnusableTiming = static_cast<HRESULT>(0x80042007); // the run timing cannot be computed with
} // namespace engine

// The states of a result.
enum TestState : ULONG
{
    TestStateUnknown = 0,
    TestStateOther = 1,
    TestStatePassed = 2,
    TestStateFailed = 3,
    TestStateInProgress = 4,
    TestStateStopped = 5
};
