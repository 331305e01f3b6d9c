// WmiStandin.exe: the service process of the WMI stand-in, and the commands that set it up.
#include "standin/service/Activation.h"
#include "standin/service/CompileMof.h"
#include "standin/service/Serve.h"
#include "standin/service/Settings.h"

#include "Common/src/com/Text.h"

#include <cstdio>
#include <cwchar>

namespace
{
using Arguments = std::vector<std::wstring>;

int SetIdleTime(const Arguments& arguments)
{
    wchar_t* end = nullptr;
    const unsigned long milliseconds = arguments.empty() ? 0 : std::wcstoul(arguments[0].c_str(), &end, 10);
    if (arguments.size() != 1 || *end != L'\0' || end == arguments[0].c_str())
    {
        std::fprintf(stderr, "/idle takes a number of milliseconds.\n");
        return 1;
    }
    return standin::WriteIdleTime(milliseconds) ? 0 : 1;
}

struct SwitchRow
{
    const wchar_t* Name;
    int (*Run)(const Arguments& arguments);
    const char* Help;
};

constexpr SwitchRow kSwitches[] = {
    {L"serve", [](const Arguments&) { return standin::Serve(); }, "serve; this is how the locator starts it"},
    {L"activate", standin::ActivateForService,
     "CLASS INTERFACE NAME  start a local server for the service"},
    {L"compile", [](const Arguments& files) { return standin::CompileMof(files); },
     "FILE ...  check MOF files and remember them for the repository"},
    {L"idle", SetIdleTime, "MILLISECONDS  how long to hold on to what nobody uses"},
    {L"forget", [](const Arguments&) { return standin::ForgetSettings() ? 0 : 1; },
     "forget the MOF files and the idle time"},
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
