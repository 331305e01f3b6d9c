// Ctrl+C and Ctrl+Break as events: the first asks for the running test to be stopped, the second to leave it.
#pragma once

#include <windows.h>

namespace zebdiag
{
struct CInterruptEvents
{
    HANDLE Stop;    // set by the first
    HANDLE Abandon; // set by the second
};

// They live as long as the process. Throws std::bad_alloc where there are no events to be had.
CInterruptEvents InterruptEvents();

// From now on interrupts set the events in place of ending the process.
void CatchInterrupts() noexcept;
} // namespace zebdiag
