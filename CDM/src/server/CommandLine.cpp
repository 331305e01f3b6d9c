#include "CDM/src/server/CommandLine.h"

#include <string.h>
#include <windows.h>

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
