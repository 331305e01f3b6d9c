#include "CDM/src/ZebHelpers.h"

#include "CDM/src/ZebDebug.h"
#include "CDM/src/ZebRegistry.h"
#include "CDM/src/ZebTrace.h"

#include <cwchar>

namespace
{
// -1 for what is no digit.
int HexDigit(wchar_t c) noexcept
{
    if (c >= L'0' && c <= L'9')
        return c - L'0';
    if (c >= L'a' && c <= L'f')
        return c - L'a' + 10;
    if (c >= L'A' && c <= L'F')
        return c - L'A' + 10;
    return -1;
}
} // namespace

DWORD ParseHex(const wchar_t* text) noexcept
{
    DWORD value = 0;
    for (const wchar_t* c = text; *c; ++c)
    {
        value <<= 4;
        const int digit = HexDigit(*c);
        if (digit >= 0)
            value += static_cast<DWORD>(digit);
        else
            ZebDebug().Write(L"Unexpected hex char in %s", text);
    }
    return value;
}

DWORD ReadAgentSelector() noexcept
{
    CRegKey key;
    if (RegOpenKeyExA(HKEY_LOCAL_MACHINE, kProvidersKey, 0, KEY_READ, key.Put()) != ERROR_SUCCESS)
    {
        ZebDebug().Write("Failed to get WMI base path - using real Vorl");
        return 0;
    }
    DWORD selector = 0;
    if (!ReadNumber(key.Get(), "TestVorl", selector))
    {
        ZebDebug().Write("Failed to get TestVorl value - using real Vorl");
        return 0;
    }
    ZebDebug().Write("TestVorl value %d", selector);
    return selector;
}

bool ReadRegistryString(const char* subkey, const char* name, char* buffer, DWORD size)
{
    CRegKey key;
    if (OpenForQuery(subkey, key) != ERROR_SUCCESS)
    {
        ZebDebug().Write("Open Key failed.");
        return false;
    }
    if (const LSTATUS status = ReadText(key.Get(), name, buffer, size); status != ERROR_SUCCESS)
    {
        ZebDebug().Write("Query Value failed, <%d>", status);
        return false;
    }
    return true;
}

const wchar_t* CComputerName::Get() noexcept
{
    {
        CZebLock lock(m_lock);
        if (!m_name[0])
        {
            char name[MAX_COMPUTERNAME_LENGTH + 2] = {}; // ends in a NUL, whatever the answer
            DWORD size = MAX_COMPUTERNAME_LENGTH + 1;
            if (!m_ask(name, &size) ||
                !MultiByteToWideChar(CP_ACP, 0, name, -1, m_name, static_cast<int>(std::size(m_name))))
            {
                ZebDebug().Write("Get computer name failed with %d", GetLastError());
                std::wcscpy(m_name, L"error");
            }
        }
    }
    ZebDebug().Write(L"Computer name is %s", m_name);
    return m_name;
}

const wchar_t* ComputerName() noexcept
{
    static CComputerName name(GetComputerNameA);
    return name.Get();
}
