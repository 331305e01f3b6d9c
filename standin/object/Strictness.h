// Whether the stand-in refuses what a strict management service may refuse of the provider's own contract:
// the value "Strict" (1 or 0) of its settings, read anew for each object and each path. Where it is missing,
// the contract's values are taken.
#pragma once

namespace standin
{
// The stand-in's settings, below HKEY_LOCAL_MACHINE.
inline constexpr wchar_t kSettingsKey[] = L"SOFTWARE\\WMI stand-in";

// Concerns UTC offsets of date-times and keys in object paths that the class does not declare as keys.
bool IsStrict() noexcept;
} // namespace standin
