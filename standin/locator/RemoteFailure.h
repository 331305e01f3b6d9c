// Telling "the other process is not there" from what it answered.
#pragma once

#include <windows.h>

namespace standin
{
// The call failed because the process that serves the object has ended or is ending.
bool IsServerGone(HRESULT hr) noexcept;
} // namespace standin
