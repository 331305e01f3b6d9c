// What the command line asks the server to do, and the word to whoever started it if that failed. The server
// is no console program, so that such a failure would otherwise show in the exit code only.
#pragma once

#include <string>
#include <windows.h>

enum class ServerAction
{
    Serve,
    Register,
    Unregister
};

// A switch counts only as the last thing on the line. The whole line is looked at, the program's path
// included.
ServerAction ScanCommandLine(const char* line) noexcept;

// What failed, the system's words for the code, and what to do. Throws std::bad_alloc.
std::string RegistrationFailureText(ServerAction action, HRESULT hr);

// Writes to the standard error output, else to the console of the process that started this one, else
// nowhere.
void ReportRegistrationFailure(ServerAction action, HRESULT hr) noexcept;
