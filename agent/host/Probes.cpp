#include "agent/host/Probes.h"

#include "Common/src/com/Owned.h"

#include <algorithm>
#include <array>
#include <icmpapi.h>
#include <ipexport.h>
#include <iterator>
#include <winioctl.h>

#include <ntddndis.h>

// The toolchain's header lacks this one, which unlike IcmpSendEcho sends from a chosen address.
extern "C" DWORD WINAPI IcmpSendEcho2Ex(HANDLE icmp, HANDLE event, void* apcRoutine, void* apcContext,
                                        IPAddr source, IPAddr destination, void* data, WORD size,
                                        PIP_OPTION_INFORMATION options, void* reply, DWORD replySize,
                                        DWORD timeout);

namespace
{
// What Icmp6SendEcho2 fills; the header lacks it as well.
struct CEcho6Reply
{
    BYTE Address[26]; // of the one who answered, packed
    ULONG Status;
    UINT RoundTripTime;
};

constexpr DWORD kEchoTimeout = 1000;
constexpr char kEchoData[] = "ZEB Diagnostics reachability";

struct IcmpTraits
{
    using Type = HANDLE;
    static Type Empty() noexcept { return INVALID_HANDLE_VALUE; }
    static void Close(Type h) noexcept { IcmpCloseHandle(h); }
};
using CIcmp = COwned<IcmpTraits>;

bool IsUnsupported(DWORD error) noexcept
{
    return error == ERROR_NOT_SUPPORTED || error == ERROR_CALL_NOT_IMPLEMENTED ||
           error == ERROR_INVALID_FUNCTION;
}

Reply EchoFailure(DWORD error) noexcept
{
    if (IsUnsupported(error))
        return Reply::Unsupported;
    // No answer, or somebody said that the destination cannot be reached. IPv6 has codes of its own for that.
    constexpr DWORD kSilent[] = {IP_REQ_TIMED_OUT,         IP_DEST_NET_UNREACHABLE,  IP_DEST_HOST_UNREACHABLE,
                                 IP_DEST_PROT_UNREACHABLE, IP_DEST_PORT_UNREACHABLE, IP_TTL_EXPIRED_TRANSIT,
                                 IP_TTL_EXPIRED_REASSEM,   IP_DEST_UNREACHABLE,      IP_TIME_EXCEEDED};
    return std::find(std::begin(kSilent), std::end(kSilent), error) != std::end(kSilent) ? Reply::Silent
                                                                                         : Reply::NotSent;
}

Reply SendEcho4(const IN_ADDR& target, const IN_ADDR& source) noexcept
{
    const CIcmp icmp(IcmpCreateFile());
    if (!icmp)
        return EchoFailure(GetLastError());
    alignas(ICMP_ECHO_REPLY) std::array<BYTE, sizeof(ICMP_ECHO_REPLY) + sizeof kEchoData + 64> buffer = {};
    char data[sizeof kEchoData];
    std::copy(std::begin(kEchoData), std::end(kEchoData), data);
    const DWORD replies =
        IcmpSendEcho2Ex(icmp.Get(), nullptr, nullptr, nullptr, source.s_addr, target.s_addr, data,
                        sizeof data, nullptr, buffer.data(), static_cast<DWORD>(buffer.size()), kEchoTimeout);
    if (replies == 0)
        return EchoFailure(GetLastError());
    const DWORD status = reinterpret_cast<const ICMP_ECHO_REPLY*>(buffer.data())->Status;
    return status == IP_SUCCESS ? Reply::Answered : EchoFailure(status);
}

Reply SendEcho6(const SOCKADDR_IN6& target, const SOCKADDR_IN6& source) noexcept
{
    const CIcmp icmp(Icmp6CreateFile());
    if (!icmp)
        return EchoFailure(GetLastError());
    alignas(CEcho6Reply) std::array<BYTE, sizeof(CEcho6Reply) + sizeof kEchoData + 64> buffer = {};
    char data[sizeof kEchoData];
    std::copy(std::begin(kEchoData), std::end(kEchoData), data);
    SOCKADDR_IN6 from = source;
    SOCKADDR_IN6 to = target;
    const DWORD replies =
        Icmp6SendEcho2(icmp.Get(), nullptr, nullptr, nullptr, &from, &to, data, sizeof data, nullptr,
                       buffer.data(), static_cast<DWORD>(buffer.size()), kEchoTimeout);
    if (replies == 0)
        return EchoFailure(GetLastError());
    const ULONG status = reinterpret_cast<const CEcho6Reply*>(buffer.data())->Status;
    return status == IP_SUCCESS ? Reply::Answered : EchoFailure(status);
}
} // namespace

std::optional<bool> QueryFullDuplex(const std::wstring& adapterKey)
{
    const CFileHandle adapter(CreateFileW((L"\\\\.\\" + adapterKey).c_str(), 0,
                                          FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0,
                                          nullptr));
    DWORD question = OID_GEN_LINK_STATE;
    NDIS_LINK_STATE link = {};
    DWORD size = 0;
    if (!adapter || !DeviceIoControl(adapter.Get(), IOCTL_NDIS_QUERY_GLOBAL_STATS, &question, sizeof question,
                                     &link, sizeof link, &size, nullptr))
        return std::nullopt;
    if (size < sizeof link || link.MediaDuplexState == MediaDuplexStateUnknown)
        return std::nullopt;
    return link.MediaDuplexState == MediaDuplexStateFull;
}

Reply SendEcho(const SOCKADDR_INET& target, const SOCKADDR_INET& source) noexcept
{
    return target.si_family == AF_INET ? SendEcho4(target.Ipv4.sin_addr, source.Ipv4.sin_addr)
                                       : SendEcho6(target.Ipv6, source.Ipv6);
}

Reply SendArpRequest(const SOCKADDR_INET& target, const SOCKADDR_INET& source) noexcept
{
    if (target.si_family != AF_INET)
        return Reply::Unsupported;
    ULONG mac[2] = {};
    ULONG length = sizeof mac;
    const DWORD status = SendARP(target.Ipv4.sin_addr.s_addr, source.Ipv4.sin_addr.s_addr, mac, &length);
    if (status == NO_ERROR)
        return length > 0 ? Reply::Answered : Reply::Silent;
    if (IsUnsupported(status))
        return Reply::Unsupported;
    // How the system says that nobody answered.
    const bool silent = status == ERROR_BAD_NET_NAME || status == ERROR_GEN_FAILURE ||
                        status == ERROR_NOT_FOUND || status == ERROR_NETWORK_UNREACHABLE ||
                        status == ERROR_HOST_UNREACHABLE;
    return silent ? Reply::Silent : Reply::NotSent;
}
