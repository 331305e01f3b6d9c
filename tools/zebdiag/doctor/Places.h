// Where the parts of an installation stand: registry keys and files.
#pragma once

#include <string>

namespace zebdiag
{
class IMachine;

inline constexpr wchar_t kZebKey[] = L"SOFTWARE\\Veltrane\\Halvern\\ZEB";
inline constexpr wchar_t kZebDiagKey[] = L"SOFTWARE\\Veltrane\\Halvern\\ZEB\\ZebDiag";
inline constexpr wchar_t kProvidersKey[] = L"SOFTWARE\\Veltrane\\Halvern\\ZEB\\WMI\\Providers";

// The version of zebdiag, which the whole installation is to have.
extern const wchar_t* const kOwnVersion;

inline constexpr wchar_t kProviderName[] = L"DREVOK_PROVIDER";
inline constexpr wchar_t kProviderClass[] = L"{6C1F0A52-3B7E-4E1B-9A55-0D6B7A3C8E20}";
inline constexpr wchar_t kAppId[] = L"{6C1F0A52-3B7E-4E1B-9A55-0D6B7A3C8E21}";
inline constexpr wchar_t kAgentClass[] = L"{6C1F0A52-3B7E-4E1B-9A55-0D6B7A3C8E10}";
inline constexpr wchar_t kTestAgentClass[] = L"{6C1F0A52-3B7E-4E1B-9A55-0D6B7A3C8E11}";

std::wstring ClassKey(const wchar_t* id);
std::wstring AppIdKey(const wchar_t* id);

// The value InstalledDir, or what the provider takes without it.
std::wstring DataFolder(const IMachine& machine);

// The program that a command line starts. Without quotes a blank may be part of the path.
std::wstring ProgramOf(const std::wstring& commandLine);

// The library that has the agent's texts in a language, such as "ENU_8023.dll".
std::wstring TextLibrary(unsigned long locale);

// The folder of a path, with its backslash; empty for a bare name.
std::wstring FolderOf(const std::wstring& path);
} // namespace zebdiag
