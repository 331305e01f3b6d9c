// Writes a file in one step.
#pragma once

#include <string>
#include <windows.h>

namespace zebdiag
{
// Replaces the file by these octets, or makes it. Who reads it sees the old ones or the new ones, never a
// part. Gives the system's error; then the file is as before.
DWORD WriteWholeFile(const std::wstring& file, const std::string& octets);
} // namespace zebdiag
