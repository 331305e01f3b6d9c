// The server's life from entry to exit.
#pragma once

#include <windows.h>

// Registers, unregisters or serves, as the process's command line says, and returns the exit code: 0 after
// serving, else the HRESULT of the registration.
int RunServer(HINSTANCE instance) noexcept;

// The message by which installers used to ask every provider of the product to exit. The process knows it
// from its start on and takes no action on it.
UINT ForceExitMessage() noexcept;
