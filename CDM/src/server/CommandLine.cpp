#include "CDM/src/server/CommandLine.h"

#include "Common/src/com/ComBoundary.h"
#include "Common/src/com/Owned.h"

#include <cstdio>
#include <string.h>

namespace
{
struct Switch
{
    const char* word;
    ServerAction action;
};

constexpr Switch kSwitches[] = {
    {"UnregServer", ServerAction::Unregister},
    {"RegServer", ServerAction::Register},
};

std::string SystemWords(HRESULT hr)
{
    char words[512];
    DWORD size = FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                static_cast<DWORD>(hr), 0, words, sizeof(words), nullptr);
    while (size > 0 && (words[size - 1] == '\n' || words[size - 1] == '\r' || words[size - 1] == '.'))
        --size;
    return size > 0 ? std::string(words, size) : std::string("the system has no words for the code");
}

bool WriteText(HANDLE to, const std::string& text) noexcept
{
    DWORD written = 0;
    return to && to != INVALID_HANDLE_VALUE &&
           WriteFile(to, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
}
} // namespace

ServerAction ScanCommandLine(const char* line) noexcept
{
    for (const char* at = line; *at;)
    {
        const bool introducer = *at == '-' || *at == '/';
        at = CharNextA(at);
        if (!introducer)
            continue;
        for (const Switch& known : kSwitches)
            if (_stricmp(at, known.word) == 0)
                return known.action;
    }
    return ServerAction::Serve;
}

std::string RegistrationFailureText(ServerAction action, HRESULT hr)
{
    const bool registering = action == ServerAction::Register;
    char code[16];
    std::snprintf(code, sizeof(code), "0x%08lX", static_cast<unsigned long>(hr));
    return std::string("Drevok.EXE could not be ") + (registering ? "registered" : "unregistered") + ": " +
           SystemWords(hr) + " (" + code + ").\r\nRun \"Drevok.EXE /" +
           (registering ? "RegServer" : "UnregServer") +
           "\" as an administrator, from the folder of the installation.\r\n";
}

void ReportRegistrationFailure(ServerAction action, HRESULT hr) noexcept
{
    (void)AtComBoundary(
        [&]
        {
            const std::string text = RegistrationFailureText(action, hr);
            if (WriteText(GetStdHandle(STD_ERROR_HANDLE), text) || !AttachConsole(ATTACH_PARENT_PROCESS))
                return S_OK;
            const CFileHandle console(CreateFileW(L"CONOUT$", GENERIC_WRITE,
                                                  FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                                                  0, nullptr));
            WriteText(console.Get(), text);
            return S_OK;
        });
}
