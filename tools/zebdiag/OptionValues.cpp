#include "tools/zebdiag/OptionValues.h"

#include "Common/src/com/Text.h"
#include "tools/zebdiag/LocaleName.h"
#include "tools/zebdiag/languages/Said.h"

#include <CLI/CLI.hpp>

namespace zebdiag
{
namespace
{
// What is wrong with a value; empty if nothing is.
std::wstring FaultOfName(const std::wstring& value)
{
    if (value.empty())
        return Said(L"a name is missing.");
    // The name has been forgotten, and the next option stands in its place.
    return value.starts_with(L"--") ? Said(L"\"{1}\" is no name.", {value}) : L"";
}

std::wstring FaultOfLocale(const std::wstring& value)
{
    return LocaleArgument(value).empty() ? Said(L"there is no language \"{1}\".", {value}) : L"";
}

std::wstring FaultOfSwitch(const std::wstring& value)
{
    return value == L"on" || value == L"off" ? L"" : Said(L"\"{1}\" is neither on nor off.", {value});
}

std::wstring FaultOfNumber(const std::wstring& value, unsigned least, unsigned most)
{
    if (value.empty() || value.find_first_not_of(L"0123456789") != std::wstring::npos)
        return Said(L"\"{1}\" is no number.", {value});
    // No limit has ten digits.
    if (value.size() > 9 || std::stoul(value) < least || std::stoul(value) > most)
        return Said(L"{1} is not between {2} and {3}.",
                    {value, std::to_wstring(least), std::to_wstring(most)});
    return {};
}

template <class Fault>
CLI::Validator Unless(Fault fault)
{
    return {[fault](std::string& value) { return Utf8Text(fault(WidenUtf8(value))); }, ""};
}
} // namespace

CLI::Option* AddFlag(CLI::App& command, const std::string& names, bool& to)
{
    return command.add_flag(names, to)->disable_flag_override();
}

CLI::Option* AddName(CLI::App& command, const std::string& names, std::wstring& to)
{
    return command
        .add_option_function<std::string>(names, [&to](const std::string& value) { to = WidenUtf8(value); })
        ->check(Unless(FaultOfName));
}

CLI::Option* AddNameOrFlag(CLI::App& command, const std::string& names, std::wstring& to, bool& flag)
{
    return command
        .add_option_function<std::string>(names,
                                          [&](const std::string& value)
                                          {
                                              to = WidenUtf8(value);
                                              flag = value.empty();
                                          })
        ->expected(0, 1);
}

CLI::Option* AddLocale(CLI::App& command, const std::string& names, std::wstring& to)
{
    return command
        .add_option_function<std::string>(names, [&to](const std::string& value)
                                          { to = LocaleArgument(WidenUtf8(value)); })
        ->check(Unless(FaultOfLocale));
}

CLI::Option* AddSwitch(CLI::App& command, const std::string& names, std::optional<bool>& to)
{
    return command.add_option(names, to)->check(Unless(FaultOfSwitch));
}

CLI::Option* AddNumber(CLI::App& command, const std::string& names, std::optional<unsigned>& to,
                       unsigned least, unsigned most)
{
    // Read here, because the library takes a leading 0 for the sign of an octal number.
    return command
        .add_option_function<std::string>(names, [&to](const std::string& value)
                                          { to = static_cast<unsigned>(std::stoul(value)); })
        ->check(Unless([=](const std::wstring& value) { return FaultOfNumber(value, least, most); }));
}
} // namespace zebdiag
