#include "standin/service/Settings.h"

#include "Common/src/com/Owned.h"
#include "standin/object/Strictness.h"

namespace standin
{
namespace
{
constexpr wchar_t kMofFiles[] = L"MofFiles";
constexpr wchar_t kIdleTime[] = L"IdleMilliseconds";
constexpr DWORD kDefaultIdleTime = 5 * 60 * 1000; // as the management service

bool WriteValue(const wchar_t* name, DWORD type, const void* data, size_t size)
{
    CRegKey key;
    return RegCreateKeyExW(HKEY_LOCAL_MACHINE, kSettingsKey, 0, nullptr, 0, KEY_SET_VALUE, nullptr, key.Put(),
                           nullptr) == ERROR_SUCCESS &&
           RegSetValueExW(key.Get(), name, 0, type, static_cast<const BYTE*>(data),
                          static_cast<DWORD>(size)) == ERROR_SUCCESS;
}

DWORD ReadNumber(const wchar_t* name, DWORD otherwise)
{
    DWORD number = 0;
    DWORD size = sizeof number;
    return RegGetValueW(HKEY_LOCAL_MACHINE, kSettingsKey, name, RRF_RT_REG_DWORD, nullptr, &number, &size) ==
                   ERROR_SUCCESS
               ? number
               : otherwise;
}
} // namespace

std::vector<std::wstring> ReadMofFiles()
{
    DWORD size = 0;
    if (RegGetValueW(HKEY_LOCAL_MACHINE, kSettingsKey, kMofFiles, RRF_RT_REG_MULTI_SZ, nullptr, nullptr,
                     &size) != ERROR_SUCCESS)
        return {};
    std::wstring list(size / sizeof(wchar_t) + 1, L'\0');
    if (RegGetValueW(HKEY_LOCAL_MACHINE, kSettingsKey, kMofFiles, RRF_RT_REG_MULTI_SZ, nullptr, list.data(),
                     &size) != ERROR_SUCCESS)
        return {};
    std::vector<std::wstring> files;
    for (const wchar_t* file = list.c_str(); *file; file += files.back().size() + 1)
        files.emplace_back(file);
    return files;
}

bool WriteMofFiles(const std::vector<std::wstring>& files)
{
    std::wstring list;
    for (const std::wstring& file : files)
        (list += file) += L'\0';
    return WriteValue(kMofFiles, REG_MULTI_SZ, list.c_str(), (list.size() + 1) * sizeof(wchar_t));
}

DWORD ReadIdleTime()
{
    return ReadNumber(kIdleTime, kDefaultIdleTime);
}

void NoteStartFailure(HRESULT hr, const wchar_t* step)
{
    WriteValue(L"LastStartStep", REG_SZ, step, (wcslen(step) + 1) * sizeof(wchar_t));
    WriteValue(L"LastStartFailure", REG_DWORD, &hr, sizeof hr);
}

void Count(const wchar_t* name)
{
    const DWORD count = ReadNumber(name, 0) + 1;
    WriteValue(name, REG_DWORD, &count, sizeof count);
}
} // namespace standin
