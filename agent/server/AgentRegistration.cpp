#include "agent/server/AgentRegistration.h"

#include "Common/src/com/Owned.h"

#include <objbase.h>
#include <string>

namespace
{
std::wstring ClassKey(const CAgentClass& agent)
{
    wchar_t id[39] = {};
    StringFromGUID2(agent.Id, id, 39);
    return std::wstring(L"SOFTWARE\\Classes\\CLSID\\") + id;
}

const wchar_t* ServerKey(ServerKind kind) noexcept
{
    return kind == ServerKind::InProcess ? L"\\InprocServer32" : L"\\LocalServer32";
}

std::wstring ModulePath()
{
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<const wchar_t*>(&ModulePath), &module);
    std::wstring path(32768, L'\0');
    path.resize(GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size())));
    return path;
}

LSTATUS SetText(const std::wstring& key, const wchar_t* name, const std::wstring& text)
{
    return RegSetKeyValueW(HKEY_LOCAL_MACHINE, key.c_str(), name, REG_SZ, text.c_str(),
                           static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
}

bool HasSubkeys(const std::wstring& path)
{
    CRegKey key;
    DWORD count = 0;
    return RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, key.Put()) == ERROR_SUCCESS &&
           RegQueryInfoKeyW(key.Get(), nullptr, nullptr, nullptr, &count, nullptr, nullptr, nullptr, nullptr,
                            nullptr, nullptr, nullptr) == ERROR_SUCCESS &&
           count > 0;
}

HRESULT Outcome(LSTATUS status) noexcept
{
    return HRESULT_FROM_WIN32(static_cast<DWORD>(status));
}

HRESULT Removed(LSTATUS status) noexcept
{
    return status == ERROR_FILE_NOT_FOUND ? S_OK : Outcome(status);
}
} // namespace

HRESULT RegisterAgent(const CAgentClass& agent, ServerKind kind)
{
    const std::wstring server = ClassKey(agent) + ServerKey(kind);
    const std::wstring path = ModulePath();
    LSTATUS status = SetText(ClassKey(agent), nullptr, agent.Description);
    if (status == ERROR_SUCCESS && kind == ServerKind::InProcess)
        status = SetText(server, L"ThreadingModel", L"Both");
    if (status == ERROR_SUCCESS)
        status = SetText(server, nullptr, kind == ServerKind::InProcess ? path : L'"' + path + L'"');
    return Outcome(status);
}

HRESULT UnregisterAgent(const CAgentClass& agent, ServerKind kind)
{
    const HRESULT hr =
        Removed(RegDeleteTreeW(HKEY_LOCAL_MACHINE, (ClassKey(agent) + ServerKey(kind)).c_str()));
    if (FAILED(hr) || HasSubkeys(ClassKey(agent)))
        return hr;
    return Removed(RegDeleteTreeW(HKEY_LOCAL_MACHINE, ClassKey(agent).c_str()));
}
