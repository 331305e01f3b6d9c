// What the command line asks the server to do.
#pragma once

enum class ServerAction
{
    Serve,
    Register,
    Unregister
};

// A switch counts only as the last thing on the line. The whole line is looked at, the program's path
// included.
ServerAction ScanCommandLine(const char* line) noexcept;
