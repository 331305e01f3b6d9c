// The options of the commands: what is fed to the parser and what the help shows.
#pragma once

#include "tools/zebdiag/CommandTable.h"

#include <span>
#include <string>

namespace CLI
{
class App;
class Option;
} // namespace CLI

namespace zebdiag
{
struct COptionRow
{
    const char* Names;    // as the parser reads them, such as "-a,--adapter"
    const wchar_t* Value; // what the help calls its value; empty for an option without
    CommandSet Commands;  // that have it
    const wchar_t* Summary;
    const wchar_t* Example; // {1}: the command's own example, {2}: the command alone
    CLI::Option* (*Add)(CLI::App& command, const char* names, COptions& options);
};

std::span<const COptionRow> OptionRows() noexcept;

// Gives the command its options. The line that is read then fills `options`.
void AddOptions(CLI::App& app, Command command, COptions& options);
} // namespace zebdiag
