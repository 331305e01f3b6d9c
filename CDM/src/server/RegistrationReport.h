// Tells whoever started the server with a switch that it could not do what the switch says. The server is no
// console program, so such a failure would show in the exit code only.
#pragma once

#include "CDM/src/server/CommandLine.h"

#include <string>
#include <windows.h>

// What failed, the system's words for the code, and what to do. Throws std::bad_alloc.
std::string RegistrationFailureText(ServerAction action, HRESULT hr);

// Writes to the standard error output, else to the console of the process that started this one, else
// nowhere.
void ReportRegistrationFailure(ServerAction action, HRESULT hr) noexcept;
