#include "tests/support/RegistryScope.h"

#include <stdexcept>

namespace
{
HKEY g_current = nullptr;

void Require(LSTATUS status, const char* step)
{
    if (status != ERROR_SUCCESS)
        throw std::runtime_error(std::string("test registry: ") + step + " failed with " +
                                 std::to_string(status));
}

CRegKey Create(HKEY parent, const char* path)
{
    CRegKey key;
    Require(RegCreateKeyExA(parent, path, 0, nullptr, REG_OPTION_VOLATILE, KEY_ALL_ACCESS, nullptr, key.Put(),
                            nullptr),
            "creating a key");
    return key;
}
} // namespace

CRegistryScope::CRegistryScope() : m_outer(g_current)
{
    static int s_made = 0;
    m_path = "Software\\ZebTests-" + std::to_string(GetCurrentProcessId()) + "-" + std::to_string(++s_made);
    m_root = Create(HKEY_CURRENT_USER, m_path.c_str());
    Require(RegOverridePredefKey(HKEY_LOCAL_MACHINE, m_root.Get()), "redirecting");
    g_current = m_root.Get();
}

CRegistryScope::~CRegistryScope()
{
    RegOverridePredefKey(HKEY_LOCAL_MACHINE, m_outer);
    g_current = m_outer;
    m_root.Reset();
    RegDeleteTreeA(HKEY_CURRENT_USER, m_path.c_str());
}

void CRegistryScope::CreateKey(const char* subkey)
{
    Create(m_root.Get(), subkey);
}

void CRegistryScope::SetString(const char* subkey, const char* name, const char* value)
{
    SetRaw(subkey, name, REG_SZ, std::string_view(value, std::string_view(value).size() + 1));
}

void CRegistryScope::SetNumber(const char* subkey, const char* name, DWORD value)
{
    SetRaw(subkey, name, REG_DWORD, {reinterpret_cast<const char*>(&value), sizeof(value)});
}

void CRegistryScope::SetBinary(const char* subkey, const char* name, std::string_view bytes)
{
    SetRaw(subkey, name, REG_BINARY, bytes);
}

void CRegistryScope::SetRaw(const char* subkey, const char* name, DWORD type, std::string_view bytes)
{
    // The system counts a NUL that follows the given bytes as forgotten and adds it; this one has none.
    const std::string data = std::string(bytes) + "X";
    const CRegKey key = Create(m_root.Get(), subkey);
    Require(RegSetValueExA(key.Get(), name, 0, type, reinterpret_cast<const BYTE*>(data.data()),
                           static_cast<DWORD>(bytes.size())),
            "setting a value");
}
