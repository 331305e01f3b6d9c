// What the service remembers between its runs, in a registry key of its own: the MOF files that make up its
// repository, and how long it holds on to what nobody uses.
#pragma once

#include <string>
#include <vector>
#include <windows.h>

namespace standin
{
// Absolute paths in the order in which they are to be compiled; empty where none were remembered.
std::vector<std::wstring> ReadMofFiles();
bool WriteMofFiles(const std::vector<std::wstring>& files);

// Milliseconds after the last request until a provider is let go, and after the last client until the service
// ends: the value "IdleMilliseconds", five minutes where it is missing.
DWORD ReadIdleTime();

// What had to be done again for a provider to start, counted in the same key under the name of the value.
inline constexpr wchar_t kStartsRepeated[] = L"StartsRepeated";
inline constexpr wchar_t kDeadServersForgotten[] = L"DeadServersForgotten";
void Count(const wchar_t* name);
// Why the last provider that did not start failed, and in which step: the values "LastStartFailure" and
// "LastStartStep".
void NoteStartFailure(HRESULT hr, const wchar_t* step);
} // namespace standin
