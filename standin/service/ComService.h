// COM's own service (RpcSs), which starts local servers and knows the running ones.
//
// Wine's keeps the registration of a server that ended without revoking it, and from then on answers every
// activation of the class with that dead process. To restart it is the only way to make it forget. A process
// that has used it before that cannot use the new one: its connections name a group that the new one does not
// know, and are refused. Worse, COM tells the process that there is no such server.
#pragma once

#include <windows.h>

namespace standin
{
// The service's process; 0 while it does not run.
DWORD ComServiceProcess() noexcept;

// Whether the service that this process met first has ended. To be called before each activation.
bool ComServiceHasChanged() noexcept;

// Stops the service if it is still this process; the next use of COM starts it. Several processes may do this
// at once.
void RestartComService(DWORD process) noexcept;
} // namespace standin
