// The commands, as the command line is read and as the help shows them.
#pragma once

#include "tools/zebdiag/Options.h"

#include <span>

namespace zebdiag
{
struct CCommandRow
{
    Command Id;
    const wchar_t* Summary;
    const wchar_t* Example; // the shortest line that does something
    const wchar_t* Text;    // what else the help says; null for nothing
};

std::span<const CCommandRow> CommandRows() noexcept;
const CCommandRow& RowOf(Command command) noexcept;

// Sets of commands: which ones have an option, or obey a rule.
using CommandSet = unsigned;

constexpr CommandSet Only(Command command)
{
    return 1U << static_cast<unsigned>(command);
}

constexpr CommandSet kList = Only(Command::List);
constexpr CommandSet kRun = Only(Command::Run);
constexpr CommandSet kStop = Only(Command::Stop);
constexpr CommandSet kResults = Only(Command::Results);
constexpr CommandSet kSettings = Only(Command::Settings);
constexpr CommandSet kSet = Only(Command::Set);
constexpr CommandSet kClear = Only(Command::Clear);
constexpr CommandSet kReport = Only(Command::Report);
constexpr CommandSet kDoctor = Only(Command::Doctor);
constexpr CommandSet kProfiles = Only(Command::Profiles);
constexpr CommandSet kMetrics = Only(Command::Metrics);
constexpr CommandSet kRemote =
    kList | kRun | kStop | kResults | kSettings | kSet | kClear | kReport | kDoctor;
} // namespace zebdiag
