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

// From now on the process is not ended by them. The events live as long as the process. Throws
// std::bad_alloc where there are no events to be had.
CInterruptEvents CatchInterrupts();
} // namespace zebdiag
