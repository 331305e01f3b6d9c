#include "agent/wine/WineOnly.h"

namespace
{
bool HostHas(const wchar_t* interfaceName, const wchar_t* entry) noexcept
{
    wchar_t path[MAX_PATH] = {};
    _snwprintf(path, MAX_PATH - 1, L"\\\\?\\unix\\sys\\class\\net\\%ls%ls", interfaceName, entry);
    return GetFileAttributesW(path) != INVALID_FILE_ATTRIBUTES;
}
} // namespace

HostKind AskHost(const wchar_t* interfaceName) noexcept
{
    if (!HostHas(interfaceName, L""))
        return HostKind::NotTold;
    if (HostHas(interfaceName, L"\\wireless"))
        return HostKind::Wireless;
    return HostHas(interfaceName, L"\\device") ? HostKind::Device : HostKind::Virtual;
}

bool IsWiredOnHost(const CInterface& candidate, HostKind host) noexcept
{
    return IsWiredAdapter(candidate) && host != HostKind::Wireless &&
           (host != HostKind::Virtual || !candidate.Gateways.empty());
}

bool IsWiredUnderWine(const CInterface& candidate) noexcept
{
    return IsWiredOnHost(candidate, AskHost(candidate.Row.Alias));
}
