// COM's own service (RpcSs), which knows the local servers that run.
//
// Wine's keeps the registration of a server that ended without revoking it, and from then on answers every
// activation of the class with that dead process. To restart the service is the only way to make it forget. A
// process that has used it before that cannot use the new one: its connections name a group that the new one
// does not know, and are refused.
#pragma once

#include <windows.h>

namespace standin
{
// The service's process; 0 while it does not run.
DWORD ComServiceProcess() noexcept;

// Stops the service if it is still this process, and returns when that has ended; the next use of COM starts
// another.
void RestartComService(DWORD process) noexcept;
} // namespace standin
