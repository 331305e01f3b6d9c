#include "standin/locator/DllRegistration.h"

#include "Common/src/com/Owned.h"
#include "standin/object/StandinIds.h"
#include "standin/proxy/HeldReference.h"

#include <olectl.h>
#include <optional>
#include <string>
#include <wbemcli.h>

namespace standin
{
namespace
{
struct ClassRow
{
    const CLSID& Clsid;
    const wchar_t* Name;
};

const ClassRow kClasses[] = {
    {CLSID_WbemLocator, L"WMI stand-in: locator"},
    {CLSID_WbemContext, L"WMI stand-in: call context"},
    {kObjectUnmarshaler, L"WMI stand-in: objects by value"},
    {kContextUnmarshaler, L"WMI stand-in: call contexts by value"},
    {kHeldUnmarshaler, L"WMI stand-in: a provider's hold on its namespace"},
};

// The server that stood here before ours.
constexpr wchar_t kReplaced[] = L"WmiStandin.Replaced";

std::wstring ClassKey(const CLSID& clsid)
{
    wchar_t text[40] = {};
    StringFromGUID2(clsid, text, static_cast<int>(std::size(text)));
    return std::wstring(L"SOFTWARE\\Classes\\CLSID\\") + text;
}

std::optional<std::wstring> ReadText(HKEY key, const wchar_t* name)
{
    wchar_t text[1024] = {};
    DWORD size = sizeof text;
    if (RegGetValueW(key, nullptr, name, RRF_RT_REG_SZ | RRF_RT_REG_EXPAND_SZ | RRF_NOEXPAND, nullptr, text,
                     &size) != ERROR_SUCCESS)
        return std::nullopt;
    return text;
}

bool WriteText(HKEY key, const wchar_t* name, const std::wstring& text)
{
    return RegSetValueExW(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()),
                          static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t))) == ERROR_SUCCESS;
}

bool CreateKey(const std::wstring& path, CRegKey& key)
{
    return RegCreateKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                           key.Put(), nullptr) == ERROR_SUCCESS;
}

bool RegisterClass(const ClassRow& row, const std::wstring& module)
{
    const std::wstring path = ClassKey(row.Clsid);
    CRegKey classKey;
    CRegKey server;
    if (!CreateKey(path, classKey) || !CreateKey(path + L"\\InprocServer32", server))
        return false;
    const auto before = ReadText(server.Get(), nullptr);
    if (before && *before != module && !ReadText(server.Get(), kReplaced) &&
        !WriteText(server.Get(), kReplaced, *before))
        return false;
    if (!before && !WriteText(classKey.Get(), nullptr, row.Name))
        return false;
    return WriteText(server.Get(), nullptr, module) && WriteText(server.Get(), L"ThreadingModel", L"Both");
}

bool UnregisterClass(const ClassRow& row)
{
    const std::wstring path = ClassKey(row.Clsid);
    {
        CRegKey server;
        const std::wstring serverPath = path + L"\\InprocServer32";
        const LSTATUS opened =
            RegOpenKeyExW(HKEY_LOCAL_MACHINE, serverPath.c_str(), 0, KEY_ALL_ACCESS, server.Put());
        if (opened == ERROR_FILE_NOT_FOUND)
            return true;
        if (opened != ERROR_SUCCESS)
            return false;
        if (const auto replaced = ReadText(server.Get(), kReplaced))
            return WriteText(server.Get(), nullptr, *replaced) &&
                   RegDeleteValueW(server.Get(), kReplaced) == ERROR_SUCCESS;
    }
    return RegDeleteTreeW(HKEY_LOCAL_MACHINE, path.c_str()) == ERROR_SUCCESS;
}
} // namespace

HRESULT RegisterClasses(HINSTANCE dll)
{
    wchar_t module[MAX_PATH] = {};
    const DWORD length = GetModuleFileNameW(dll, module, MAX_PATH);
    if (length == 0 || length == MAX_PATH)
        return E_UNEXPECTED;
    for (const ClassRow& row : kClasses)
        if (!RegisterClass(row, module))
            return SELFREG_E_CLASS;
    return S_OK;
}

HRESULT UnregisterClasses()
{
    bool all = true;
    for (const ClassRow& row : kClasses)
        all = UnregisterClass(row) && all;
    return all ? S_OK : SELFREG_E_CLASS;
}
} // namespace standin
