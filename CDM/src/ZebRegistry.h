// Reading the configuration, without a word in the trace, which reads its own configuration here. All keys
// are below HKEY_LOCAL_MACHINE. A value that is missing or of another type than asked for counts as absent
// and leaves the caller's default alone.
#pragma once

#include "Common/src/com/Owned.h"

#include <optional>
#include <string>
#include <windows.h>

inline constexpr char kZebKey[] = "SOFTWARE\\Veltrane\\Halvern\\ZEB";
inline constexpr char kZebDiagKey[] = "SOFTWARE\\Veltrane\\Halvern\\ZEB\\ZebDiag";
inline constexpr char kProvidersKey[] = "SOFTWARE\\Veltrane\\Halvern\\ZEB\\WMI\\Providers";

LSTATUS OpenForQuery(const char* subkey, CRegKey& key) noexcept;

// The text of a value of at most `maxBytes` bytes that is properly terminated as it stands in the registry:
// by one NUL, by two if it is a list (of which this is the first). Throws std::bad_alloc.
std::optional<std::string> ReadTerminatedString(HKEY key, const char* name, DWORD maxBytes);
// The same for a value below a key that is opened for it.
std::optional<std::string> ReadTerminatedString(const char* subkey, const char* name, DWORD maxBytes);

// A text into a buffer of `size` bytes, always terminated. Throws std::bad_alloc.
LSTATUS ReadText(HKEY key, const char* name, char* buffer, DWORD size);

// A 32-bit number.
bool ReadNumber(HKEY key, const char* name, DWORD& value) noexcept;
bool ReadRegistryNumber(const char* subkey, const char* name, DWORD& value) noexcept;
