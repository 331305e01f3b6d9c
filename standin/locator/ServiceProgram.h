// WmiStandin.exe, as those see it who need it.
#pragma once

#include "Common/src/com/Owned.h"

#include <string>

namespace standin
{
// Starts the program, which stands beside the module that this code is part of, without a console.
HRESULT StartServiceProgram(const std::wstring& arguments, CHandle& process) noexcept;
} // namespace standin
