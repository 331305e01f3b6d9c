#include "CDM/src/ZebDebugPath.h"

#include "CDM/src/ZebRegistry.h"

#include <cstdio>

namespace
{
constexpr DWORD kImagePathMax = 256;

std::string PerProcessName(const std::string& fileName)
{
    std::string name(fileName.size() + 16, '\0');
    const int length = _snprintf(name.data(), name.size(), "%d-%s", static_cast<int>(GetCurrentProcessId()),
                                 fileName.c_str());
    name.resize(static_cast<size_t>(length));
    return name;
}
} // namespace

std::string ZebDebugPath(const std::string& fileName)
{
    CRegKey key;
    if (RegOpenKeyExA(HKEY_LOCAL_MACHINE, kZebKey, 0, KEY_READ, key.Put()) != ERROR_SUCCESS)
        return fileName;
    DWORD perProcess = 0;
    const bool asked = ReadNumber(key.Get(), "LogFilePerProcess", perProcess) && perProcess != 0;
    const std::string name = asked ? PerProcessName(fileName) : fileName;
    const std::optional<std::string> folder = ReadTerminatedString(key.Get(), "ImagePath", kImagePathMax);
    return folder ? *folder + "\\DebugLog\\" + name : name;
}
