#pragma once

#include <span>
#include <windows.h>

namespace zebdiag
{
// Whether all that a security descriptor points to lies within these bytes, which may be anything. The system
// looks into one without knowing where it ends.
bool IsWholeDescriptor(std::span<const BYTE> bytes);
} // namespace zebdiag
