// The program without its entry point: from the arguments to the exit code.
#pragma once

#include "tools/zebdiag/Commands.h"
#include "tools/zebdiag/Console.h"
#include "tools/zebdiag/WmiSession.h"
#include "tools/zebdiag/doctor/Machine.h"

#include <functional>
#include <string>
#include <vector>

namespace zebdiag
{
// What a test of the whole program replaces.
struct CApplicationSeams
{
    std::function<CWmiSession(const CTarget&, const std::wstring& password)> Connect;
    std::wstring Locale; // of the user, in the form MS_409; empty: as the system says
    CRunControl Control;
    CSurroundings Surroundings;
    const IMachine* Machine = &ThisMachine(); // this computer
};

// `arguments` without the program's name. Data goes to standard output, failures in words to standard error.
// With --json a failure is a document as well, and standard error is used only where a person watches it.
// That standard output did not take everything is said on standard error in any case, and is no success.
ExitCode RunApplication(const std::vector<std::wstring>& arguments, IConsole& console,
                        const CApplicationSeams& seams);
} // namespace zebdiag
