// How clients name computers, namespaces and languages.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <wbemcli.h>

namespace standin
{
// A machine and a namespace, such as \\server\root\cimv2, with backslashes or slashes.
struct CNetworkPath
{
    std::wstring Server;    // "." where none is named
    std::wstring NameSpace; // with backslashes; "root\\cimv2" where none is named
};

// Nothing where the text names no namespace in any form.
std::optional<CNetworkPath> ParseNetworkPath(std::wstring_view text);

// Whether the name means the computer that this runs on.
bool IsThisComputer(std::wstring_view server);

// Locales are "MS_" and a language identifier in hexadecimal, such as MS_409.
bool IsLocale(std::wstring_view text) noexcept;
} // namespace standin
