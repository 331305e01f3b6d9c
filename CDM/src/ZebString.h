// Strings out of a resource library.
#pragma once

#include <string>
#include <windows.h>

// The text of string `id`, in the ANSI code page of the locale. Empty if the handle is null or the string is
// missing; the trace then says why.
std::string LoadZebString(HMODULE library, UINT id, LCID locale) noexcept;
