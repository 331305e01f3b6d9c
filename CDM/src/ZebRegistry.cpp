#include "CDM/src/ZebRegistry.h"

#include <cstring>

namespace
{
bool IsTerminated(const std::string& data, DWORD type) noexcept
{
    const size_t size = data.size();
    if (type == REG_SZ || type == REG_EXPAND_SZ)
        return size >= 1 && data[size - 1] == '\0';
    return type == REG_MULTI_SZ && size >= 2 && data[size - 1] == '\0' && data[size - 2] == '\0';
}

// The bytes of a value as they stand, at most `maxBytes` of them.
LSTATUS ReadBytes(HKEY key, const char* name, DWORD maxBytes, DWORD& type, std::string& data)
{
    data.assign(maxBytes, '\0');
    DWORD size = maxBytes;
    const LSTATUS status =
        RegQueryValueExA(key, name, nullptr, &type, reinterpret_cast<BYTE*>(data.data()), &size);
    data.resize(status == ERROR_SUCCESS ? size : 0);
    return status;
}
} // namespace

LSTATUS OpenForQuery(const char* subkey, CRegKey& key) noexcept
{
    return RegOpenKeyExA(HKEY_LOCAL_MACHINE, subkey, 0, KEY_QUERY_VALUE, key.Put());
}

std::optional<std::string> ReadTerminatedString(HKEY key, const char* name, DWORD maxBytes)
{
    DWORD type = REG_NONE;
    std::string data;
    if (ReadBytes(key, name, maxBytes, type, data) != ERROR_SUCCESS || !IsTerminated(data, type))
        return std::nullopt;
    data.resize(std::strlen(data.c_str()));
    return data;
}

std::optional<std::string> ReadTerminatedString(const char* subkey, const char* name, DWORD maxBytes)
{
    CRegKey key;
    if (OpenForQuery(subkey, key) != ERROR_SUCCESS)
        return std::nullopt;
    return ReadTerminatedString(key.Get(), name, maxBytes);
}

bool ReadNumber(HKEY key, const char* name, DWORD& value) noexcept
{
    DWORD type = REG_NONE;
    DWORD read = 0;
    DWORD size = sizeof(read);
    if (RegQueryValueExA(key, name, nullptr, &type, reinterpret_cast<BYTE*>(&read), &size) != ERROR_SUCCESS ||
        type != REG_DWORD || size != sizeof(read))
        return false;
    value = read;
    return true;
}

LSTATUS ReadText(HKEY key, const char* name, char* buffer, DWORD size)
{
    DWORD type = REG_NONE;
    std::string data;
    if (const LSTATUS status = ReadBytes(key, name, size, type, data); status != ERROR_SUCCESS)
        return status;
    if (type != REG_SZ && type != REG_EXPAND_SZ)
        return ERROR_UNSUPPORTED_TYPE;
    // A text may stand in the registry without its NUL; it must then leave room for one.
    const size_t length = std::strlen(data.c_str());
    if (length >= size)
        return ERROR_MORE_DATA;
    std::memcpy(buffer, data.c_str(), length + 1);
    return ERROR_SUCCESS;
}

bool ReadRegistryNumber(const char* subkey, const char* name, DWORD& value) noexcept
{
    CRegKey key;
    return OpenForQuery(subkey, key) == ERROR_SUCCESS && ReadNumber(key.Get(), name, value);
}
