#include "tools/zebdiag/Options.h"
#include "tools/zebdiag/languages/Said.h"

#include <windows.h>

namespace zebdiag
{
namespace
{
constexpr const char* kCommandNames[] = {"list",  "run",    "stop",   "results",  "settings", "set",
                                         "clear", "report", "doctor", "profiles", "metrics"};

std::wstring NameOfThisComputer()
{
    wchar_t name[MAX_COMPUTERNAME_LENGTH + 1] = {};
    DWORD size = MAX_COMPUTERNAME_LENGTH + 1;
    return GetComputerNameW(name, &size) ? name : L"";
}
} // namespace

const char* CommandName(Command command) noexcept
{
    return kCommandNames[static_cast<int>(command)];
}

bool CTarget::IsLocal() const
{
    return Computer.empty() || Computer == L"." || _wcsicmp(Computer.c_str(), L"localhost") == 0 ||
           _wcsicmp(Computer.c_str(), NameOfThisComputer().c_str()) == 0;
}

std::wstring CTarget::ComputerInWords() const
{
    return IsLocal() ? Said(L"this computer") : Computer;
}
} // namespace zebdiag
