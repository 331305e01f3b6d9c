#include "standin/locator/Names.h"

#include "Common/src/com/Text.h"

#include <algorithm>

namespace standin
{
std::optional<CNetworkPath> ParseNetworkPath(std::wstring_view text)
{
    std::wstring path(text);
    std::replace(path.begin(), path.end(), L'/', L'\\');
    CNetworkPath parsed{L".", L"root\\cimv2"};
    if (path.starts_with(L"\\\\"))
    {
        const size_t end = path.find(L'\\', 2);
        parsed.Server = path.substr(2, end == std::wstring::npos ? end : end - 2);
        if (parsed.Server.empty() || end == std::wstring::npos)
            return std::nullopt;
        path.erase(0, end + 1);
    }
    if (path.empty())
        return parsed;
    if (path.starts_with(L'\\') || path.ends_with(L'\\') || path.find(L"\\\\") != std::wstring::npos ||
        path.find_first_of(L":=\"") != std::wstring::npos)
        return std::nullopt;
    parsed.NameSpace = std::move(path);
    return parsed;
}

bool IsThisComputer(std::wstring_view server)
{
    if (server == L"." || server == L"127.0.0.1" || server == L"::1" ||
        EqualNoCaseAscii(server, L"localhost"))
        return true;
    for (const COMPUTER_NAME_FORMAT format :
         {ComputerNameNetBIOS, ComputerNameDnsHostname, ComputerNameDnsFullyQualified})
    {
        wchar_t name[256] = {};
        DWORD size = static_cast<DWORD>(std::size(name));
        if (GetComputerNameExW(format, name, &size) &&
            EqualNoCaseAscii(server, std::wstring_view(name, size)))
            return true;
    }
    return false;
}

bool IsLocale(std::wstring_view text) noexcept
{
    constexpr std::wstring_view prefix = L"MS_";
    return text.size() > prefix.size() && text.size() <= prefix.size() + 8 &&
           EqualNoCaseAscii(text.substr(0, prefix.size()), prefix) &&
           text.find_first_not_of(L"0123456789ABCDEFabcdef", prefix.size()) == text.npos;
}
} // namespace standin
