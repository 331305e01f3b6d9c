// Reads the command line. What it cannot read, and requests for help, end the program with a text.
#pragma once

#include "tools/zebdiag/ExitCode.h"
#include "tools/zebdiag/Options.h"

#include <optional>
#include <string>
#include <vector>

namespace zebdiag
{
struct CCommandLine
{
    std::optional<COptions> Options; // absent: show Text and end with Code
    std::wstring Text;
    ExitCode Code = ExitCode::Passed; // Passed for help, Usage for what cannot be read
};

// `arguments` without the program's name. Help goes to a terminal of `width` columns, what cannot be read to
// one of `errorWidth`; 0 is none.
CCommandLine ParseCommandLine(const std::vector<std::wstring>& arguments, unsigned width = 0,
                              unsigned errorWidth = 0);

// What has to be known before the line is read, even of a line that cannot be read.
struct CFirstLook
{
    bool Json = false;
    std::wstring Locale; // in the form MS_409; empty: none is asked for
};
CFirstLook FirstLookAt(const std::vector<std::wstring>& arguments);
} // namespace zebdiag
