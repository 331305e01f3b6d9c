#include "standin/locator/DllRegistration.h"

#include "Common/src/com/Owned.h"
#include "standin/object/StandinIds.h"
#include "standin/proxy/HeldReference.h"

#include <olectl.h>
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

std::wstring ClassKey(const CLSID& clsid)
{
    wchar_t text[40] = {};
    StringFromGUID2(clsid, text, static_cast<int>(std::size(text)));
    return std::wstring(L"SOFTWARE\\Classes\\CLSID\\") + text;
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
    CRegKey classKey;
    CRegKey server;
    const std::wstring path = ClassKey(row.Clsid);
    return CreateKey(path, classKey) && CreateKey(path + L"\\InprocServer32", server) &&
           WriteText(classKey.Get(), nullptr, row.Name) && WriteText(server.Get(), nullptr, module) &&
           WriteText(server.Get(), L"ThreadingModel", L"Both");
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
} // namespace standin
