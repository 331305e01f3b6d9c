#include "agent/host/WiredAdapters.h"

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

bool IsWiredAdapter(const MIB_IF_ROW2& row, HostKind host, bool hasGateway) noexcept
{
    const auto& flags = row.InterfaceAndOperStatusFlags;
    const bool ethernet = row.Type == IF_TYPE_ETHERNET_CSMACD && row.TunnelType == TUNNEL_TYPE_NONE &&
                          // Bluetooth and some mobile networks pass for Ethernet; drivers of real cards may
                          // leave the medium open.
                          (row.PhysicalMediumType == NdisPhysicalMediumUnspecified ||
                           row.PhysicalMediumType == NdisPhysicalMedium802_3);
    if (!ethernet || !flags.HardwareInterface || !flags.ConnectorPresent || flags.FilterInterface)
        return false;
    return host == HostKind::NotTold || host == HostKind::Device || (host == HostKind::Virtual && hasGateway);
}
