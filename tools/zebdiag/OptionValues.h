// The kinds of values that options take, and the words in which a wrong one is refused.
#pragma once

#include <optional>
#include <string>

namespace CLI
{
class App;
class Option;
} // namespace CLI

namespace zebdiag
{
// Each adds an option to the command, which writes its value to `to` when the line is read.
CLI::Option* AddFlag(CLI::App& command, const std::string& names, bool& to);
CLI::Option* AddName(CLI::App& command, const std::string& names, std::wstring& to);
// Without a value it is the flag.
CLI::Option* AddNameOrFlag(CLI::App& command, const std::string& names, std::wstring& to, bool& flag);
CLI::Option* AddLocale(CLI::App& command, const std::string& names, std::wstring& to);
CLI::Option* AddSwitch(CLI::App& command, const std::string& names, std::optional<bool>& to);
CLI::Option* AddNumber(CLI::App& command, const std::string& names, std::optional<unsigned>& to,
                       unsigned least, unsigned most);
} // namespace zebdiag
