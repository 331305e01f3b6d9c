// WmiStandin.exe: the service process of the WMI stand-in, and the commands that set it up.
#include "standin/service/Activation.h"
#include "standin/service/CompileMof.h"
#include "standin/service/Serve.h"

#include "Common/src/com/Text.h"

#include <cstdio>

namespace
{
using Arguments = std::vector<std::wstring>;

struct SwitchRow
{
    const wchar_t* Name;
    int (*Run)(const Arguments& arguments);
    const char* Help;
};

constexpr SwitchRow kSwitches[] = {
    {L"serve", [](const Arguments&) { return standin::Serve(); }, "serve; this is how the locator starts it"},
    {L"activate", standin::ActivateForService, "CLASS INTERFACE NAME  start a local server for the service"},
    {L"compile", [](const Arguments& files) { return standin::CompileMof(files); },
     "FILE ...  check MOF files and remember them for the repository"},
};

int ShowUsage()
{
    std::fprintf(stderr, "WmiStandin.exe, the service process of the WMI stand-in\n\n");
    for (const SwitchRow& row : kSwitches)
        std::fprintf(stderr, "  /%-12ls %s\n", row.Name, row.Help);
    return 2;
}
} // namespace

int wmain(int count, wchar_t** arguments)
{
    if (count < 2 || (arguments[1][0] != L'/' && arguments[1][0] != L'-'))
        return ShowUsage();
    for (const SwitchRow& row : kSwitches)
        if (EqualNoCaseAscii(arguments[1] + 1, row.Name))
            return row.Run(Arguments(arguments + 2, arguments + count));
    return ShowUsage();
}
