// What a run takes from the system: the time, threads and waits. Tests drive runs through it without letting
// a second pass.
#pragma once

#include "Common/src/com/Owned.h"

#include <windows.h>

class IRunEnvironment
{
  public:
    virtual ~IRunEnvironment() = default;

    virtual SYSTEMTIME LocalTime() = 0;
    // Milliseconds of a clock that never goes back.
    virtual ULONGLONG ProcessMilliseconds() = 0;
    // An empty handle, with the last error set, if no thread could be started.
    virtual CHandle StartThread(LPTHREAD_START_ROUTINE procedure, void* parameter) = 0;
    // As the system's functions: index 0 for `event`, 1 for `worker`.
    virtual DWORD WaitForEither(HANDLE event, HANDLE worker, DWORD milliseconds) = 0;
    virtual DWORD Wait(HANDLE object, DWORD milliseconds) = 0;
};

// The system's own. Lives as long as the process.
IRunEnvironment& SystemRunEnvironment() noexcept;
