#include "agent/scripted/ScriptSource.h"

#include "Common/src/com/Owned.h"
#include "Common/src/com/Text.h"
#include "agent/AgentCodes.h"
#include "agent/scripted/ScriptValue.h"

namespace
{
// Empty if the registry names no file.
std::wstring ScriptFile()
{
    DWORD size = 0;
    const LSTATUS status =
        RegGetValueW(HKEY_LOCAL_MACHINE, kScriptKey, L"Script", RRF_RT_REG_SZ, nullptr, nullptr, &size);
    if (status == ERROR_FILE_NOT_FOUND)
        return {};
    std::wstring file(size / sizeof(wchar_t), L'\0');
    if (status != ERROR_SUCCESS || RegGetValueW(HKEY_LOCAL_MACHINE, kScriptKey, L"Script", RRF_RT_REG_SZ,
                                                nullptr, file.data(), &size) != ERROR_SUCCESS)
        throw CScriptError(vorl::script::Unreadable, "the registry value Script is no text");
    file.resize(wcsnlen(file.c_str(), file.size()));
    return file;
}

std::string ReadWhole(const std::wstring& file)
{
    const CFileHandle handle(CreateFileW(file.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_DELETE,
                                         nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    LARGE_INTEGER size = {};
    constexpr LONGLONG kLargest = 16 * 1024 * 1024;
    std::string text;
    DWORD read = 0;
    if (handle && GetFileSizeEx(handle.Get(), &size) && size.QuadPart <= kLargest)
    {
        text.resize(static_cast<size_t>(size.QuadPart));
        if (ReadFile(handle.Get(), text.data(), static_cast<DWORD>(text.size()), &read, nullptr) &&
            read == text.size())
            return text;
    }
    throw CScriptError(vorl::script::Unreadable,
                       Utf8Text(file) + ": Windows error " + std::to_string(GetLastError()));
}

// Whoever looks for the cause of a refused Initialize finds it in one of these two places.
void Publish(const std::wstring& reason)
{
    OutputDebugStringW((L"The scripted agent cannot use its script: " + reason + L"\n").c_str());
    RegSetKeyValueW(HKEY_LOCAL_MACHINE, kScriptKey, L"ScriptError", REG_SZ, reason.c_str(),
                    static_cast<DWORD>((reason.size() + 1) * sizeof(wchar_t)));
}
} // namespace

CScript LoadScript()
{
    try
    {
        const std::wstring file = ScriptFile();
        CScript script = file.empty() ? ParseScript(DefaultScriptText()) : ParseScript(ReadWhole(file));
        RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, kScriptKey, L"ScriptError");
        return script;
    }
    catch (const CScriptError& error)
    {
        Publish(WidenUtf8(error.what()));
        throw;
    }
}
