// The key of authenticated mode, as a file holds it: hexadecimal digits, with any white space between them.
#pragma once

#include <string>
#include <string_view>
#include <vector>
#include <windows.h>

inline constexpr size_t kStampKeySmallest = 16; // octets
inline constexpr size_t kStampKeyLargest = 64;

// The key in a text; false if it is none, or is too short or too long. Throws std::bad_alloc.
bool ParseStampKey(std::string_view text, std::vector<BYTE>& key);
// S_OK, setting::KeyUnreadable or setting::BadKey. Throws std::bad_alloc.
HRESULT ReadStampKey(const std::wstring& path, std::vector<BYTE>& key);
