#include "standin/locator/ServiceProgram.h"

#include "Common/src/com/ComBoundary.h"

#include <objbase.h>

namespace standin
{
namespace
{
std::wstring ServiceProgram()
{
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<const wchar_t*>(&ServiceProgram), &module);
    wchar_t path[MAX_PATH] = {};
    GetModuleFileNameW(module, path, MAX_PATH);
    const std::wstring full = path;
    return full.substr(0, full.rfind(L'\\') + 1) + L"WmiStandin.exe";
}
} // namespace

HRESULT StartServiceProgram(const std::wstring& arguments, CHandle& process) noexcept
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            const std::wstring program = ServiceProgram();
            std::wstring line = L"\"" + program + L"\" " + arguments;
            STARTUPINFOW start = {};
            start.cb = sizeof start;
            PROCESS_INFORMATION started = {};
            if (!CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, FALSE, DETACHED_PROCESS,
                                nullptr, nullptr, &start, &started))
                return CO_E_SERVER_EXEC_FAILURE; // as COM calls it
            CloseHandle(started.hThread);
            process.Reset(started.hProcess);
            return S_OK;
        });
}
} // namespace standin
