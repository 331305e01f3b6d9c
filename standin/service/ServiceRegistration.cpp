#include "standin/service/ServiceRegistration.h"

#include "Common/src/com/Owned.h"
#include "standin/locator/ServiceIds.h"

#include <objbase.h>
#include <string>

namespace standin
{
namespace
{
std::wstring ClassKey()
{
    wchar_t text[40] = {};
    StringFromGUID2(kServiceClass, text, static_cast<int>(std::size(text)));
    return std::wstring(L"SOFTWARE\\Classes\\CLSID\\") + text;
}

bool SetDefault(const std::wstring& path, const std::wstring& value)
{
    CRegKey key;
    return RegCreateKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, nullptr, 0, KEY_SET_VALUE, nullptr, key.Put(),
                           nullptr) == ERROR_SUCCESS &&
           RegSetValueExW(key.Get(), nullptr, 0, REG_SZ, reinterpret_cast<const BYTE*>(value.c_str()),
                          static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t))) == ERROR_SUCCESS;
}
} // namespace

bool RegisterService()
{
    wchar_t module[MAX_PATH] = {};
    const DWORD length = GetModuleFileNameW(nullptr, module, MAX_PATH);
    return length != 0 && length < MAX_PATH && SetDefault(ClassKey(), L"WMI stand-in: service") &&
           SetDefault(ClassKey() + L"\\LocalServer32", std::wstring(L"\"") + module + L"\"");
}

bool UnregisterService()
{
    const LSTATUS status = RegDeleteTreeW(HKEY_LOCAL_MACHINE, ClassKey().c_str());
    return status == ERROR_SUCCESS || status == ERROR_FILE_NOT_FOUND;
}
} // namespace standin
