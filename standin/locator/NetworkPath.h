// The text by which a client names a machine and a namespace, such as \\server\root\cimv2, with backslashes
// or slashes.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace standin
{
struct CNetworkPath
{
    std::wstring Server;    // "." where none is named
    std::wstring NameSpace; // with backslashes; "root\\cimv2" where none is named
};

// Nothing where the text names no namespace in any form.
std::optional<CNetworkPath> ParseNetworkPath(std::wstring_view text);

// Whether the name means the computer that this runs on.
bool IsThisComputer(std::wstring_view server);
} // namespace standin
