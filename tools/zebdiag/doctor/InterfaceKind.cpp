#include "tools/zebdiag/doctor/InterfaceKind.h"
#include "tools/zebdiag/languages/Said.h"

namespace zebdiag
{
namespace
{
// Types that not every version of the system's headers names.
constexpr IFTYPE kMobileGsm = 243;
constexpr IFTYPE kMobileCdma = 244;

struct CReason
{
    bool (*Fits)(const MIB_IF_ROW2&);
    const wchar_t* Words;
};

// The first that fits is the one.
constexpr CReason kReasons[] = {
    {[](const MIB_IF_ROW2& row) { return row.Type == IF_TYPE_SOFTWARE_LOOPBACK; }, Marked(L"loopback")},
    {[](const MIB_IF_ROW2& row) { return row.Type == IF_TYPE_TUNNEL || row.TunnelType != TUNNEL_TYPE_NONE; },
     Marked(L"a tunnel")},
    {[](const MIB_IF_ROW2& row)
     {
         return row.Type == IF_TYPE_IEEE80211 || row.PhysicalMediumType == NdisPhysicalMediumWirelessLan ||
                row.PhysicalMediumType == NdisPhysicalMediumNative802_11;
     },
     Marked(L"wireless")},
    {[](const MIB_IF_ROW2& row) { return row.PhysicalMediumType == NdisPhysicalMediumBluetooth; },
     Marked(L"Bluetooth")},
    {[](const MIB_IF_ROW2& row)
     {
         return row.Type == kMobileGsm || row.Type == kMobileCdma ||
                row.PhysicalMediumType == NdisPhysicalMediumWirelessWan;
     },
     Marked(L"a mobile network")},
    {[](const MIB_IF_ROW2& row) { return row.Type == IF_TYPE_PPP; }, Marked(L"a dial-up or VPN connection")},
    {[](const MIB_IF_ROW2& row) { return row.Type != IF_TYPE_ETHERNET_CSMACD; }, Marked(L"not Ethernet")},
    {[](const MIB_IF_ROW2& row) { return !row.InterfaceAndOperStatusFlags.HardwareInterface; },
     Marked(L"software, such as a virtual switch or a VPN")},
    {[](const MIB_IF_ROW2& row) { return !row.InterfaceAndOperStatusFlags.ConnectorPresent; },
     Marked(L"without a connector")},
    {[](const MIB_IF_ROW2& row)
     {
         return row.PhysicalMediumType != NdisPhysicalMediumUnspecified &&
                row.PhysicalMediumType != NdisPhysicalMedium802_3;
     },
     Marked(L"of another medium")},
};
} // namespace

const wchar_t* WhyNotWired(const MIB_IF_ROW2& row) noexcept
{
    for (const CReason& reason : kReasons)
        if (reason.Fits(row))
            return reason.Words;
    return L"";
}
} // namespace zebdiag
