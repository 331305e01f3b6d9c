#include "agent/host/stamp/SocketLine.h"

#include "agent/AgentCodes.h"

#include <algorithm>
#include <array>
#include <new>
#include <ws2tcpip.h>

namespace
{
constexpr DWORD kHopLimit = 255;     // what the protocol asks of senders
constexpr int kBuffer = 1024 * 1024; // bytes that may wait in a socket
constexpr DWORD kPreciseTimer = 2;   // CREATE_WAITABLE_TIMER_HIGH_RESOLUTION, which the headers lack
// A wait as long as this one needs no timer: the system's ordinary clock ticks often enough.
constexpr uint64_t kCoarse = 50 * kStampMillisecond;

int LengthOf(const SOCKADDR_INET& address) noexcept
{
    return address.si_family == AF_INET ? sizeof address.Ipv4 : sizeof address.Ipv6;
}
const sockaddr* AsSocketAddress(const SOCKADDR_INET& address) noexcept
{
    return reinterpret_cast<const sockaddr*>(&address);
}

bool SetNumber(SOCKET socket, int level, int option, DWORD value) noexcept
{
    return setsockopt(socket, level, option, reinterpret_cast<const char*>(&value), sizeof value) == 0;
}

// Windows reports a port that is closed on a socket as a connection that was reset, Wine as one refused.
bool IsRefusal(int error) noexcept
{
    return error == WSAECONNRESET || error == WSAECONNREFUSED;
}
bool IsUnreachable(int error) noexcept
{
    return error == WSAENETRESET || error == WSAENETUNREACH || error == WSAEHOSTUNREACH;
}

BYTE HopLimitOf(WSAMSG& message) noexcept
{
    for (WSACMSGHDR* header = WSA_CMSG_FIRSTHDR(&message); header; header = WSA_CMSG_NXTHDR(&message, header))
    {
        const bool v4 = header->cmsg_level == IPPROTO_IP &&
                        (header->cmsg_type == IP_TTL || header->cmsg_type == IP_RECVTTL);
        if (v4 || (header->cmsg_level == IPPROTO_IPV6 && header->cmsg_type == IPV6_HOPLIMIT))
            return static_cast<BYTE>(*reinterpret_cast<const int*>(WSA_CMSG_DATA(header)));
    }
    return kHopLimit; // what stands for "not known"
}

double TickOfSteadyClock() noexcept
{
    LARGE_INTEGER frequency = {};
    QueryPerformanceFrequency(&frequency);
    return static_cast<double>(kStampSecond) / static_cast<double>(frequency.QuadPart);
}

CHandle MakeTimer() noexcept
{
    HANDLE timer = CreateWaitableTimerExW(nullptr, nullptr, kPreciseTimer, TIMER_ALL_ACCESS);
    return CHandle(timer ? timer : CreateWaitableTimerExW(nullptr, nullptr, 0, TIMER_ALL_ACCESS));
}
} // namespace

CSocketLine::CSocketLine(const CLineSignals& signals)
    : m_signals(signals), m_arrived(WSACreateEvent()), m_timer(MakeTimer()), m_tick(TickOfSteadyClock())
{
    if (!m_arrived || !m_timer)
        throw std::bad_alloc();
}

int CSocketLine::Open(const SOCKADDR_INET& address)
{
    COwned<SocketTraits> owner(socket(address.si_family, SOCK_DGRAM, IPPROTO_UDP));
    if (!owner)
        return WSAGetLastError();
    const SOCKET socket = owner.Get();
    const bool v4 = address.si_family == AF_INET;
    const int level = v4 ? IPPROTO_IP : IPPROTO_IPV6;
    // Without these packets are sent and counted all the same.
    static_assert(IP_TTL == IPV6_UNICAST_HOPS && IP_RECVTTL == IPV6_HOPLIMIT);
    SetNumber(socket, level, IP_TTL, kHopLimit);
    SetNumber(socket, level, IP_RECVTTL, 1);
    SetNumber(socket, SOL_SOCKET, SO_RCVBUF, kBuffer);
    SetNumber(socket, SOL_SOCKET, SO_SNDBUF, kBuffer);
    SetNumber(socket, SOL_SOCKET, SO_EXCLUSIVEADDRUSE, 1);
    if (!v4)
        SetNumber(socket, IPPROTO_IPV6, IPV6_V6ONLY, 1);
    if (bind(socket, AsSocketAddress(address), LengthOf(address)) != 0 ||
        WSAEventSelect(socket, m_arrived.Get(), FD_READ) != 0)
        return WSAGetLastError();
    m_sockets.push_back(std::move(owner));
    return 0;
}

HRESULT CSocketLine::Connect(const SOCKADDR_INET& source, const SOCKADDR_INET& peer, DWORD dscp)
{
    SOCKADDR_INET any = source;
    any.Ipv4.sin_port = 0; // which stands in the same place in both families
    if (Open(any) != 0)
        return vorl::sender::NotBound;
    const SOCKET socket = m_sockets.back().Get();
    if (connect(socket, AsSocketAddress(peer), LengthOf(peer)) != 0)
        return vorl::sender::NotSent;
    return dscp == 0 || SetDscp(socket, dscp, m_qos) ? S_OK : vorl::sender::NoDscp;
}

int CSocketLine::Listen(const SOCKADDR_INET& address)
{
    const int error = Open(address);
    if (error != 0)
        return error;
    // One sender that has gone away shall not make the socket fail for the others.
    constexpr DWORD kReportReset = _WSAIOW(IOC_VENDOR, 12);
    BOOL report = FALSE;
    DWORD size = 0;
    const SOCKET socket = m_sockets.back().Get();
    WSAIoctl(socket, kReportReset, &report, sizeof report, nullptr, 0, &size, nullptr, nullptr);
    GUID id = WSAID_WSARECVMSG;
    if (!m_receiveMessage &&
        WSAIoctl(socket, SIO_GET_EXTENSION_FUNCTION_POINTER, &id, sizeof id, &m_receiveMessage,
                 sizeof m_receiveMessage, &size, nullptr, nullptr) != 0)
        m_receiveMessage = nullptr;
    return 0;
}

uint64_t CSocketLine::Now() noexcept
{
    FILETIME now = {};
    GetSystemTimePreciseAsFileTime(&now);
    return uint64_t{now.dwHighDateTime} << 32 | now.dwLowDateTime;
}

uint64_t CSocketLine::Steady() noexcept
{
    LARGE_INTEGER ticks = {};
    QueryPerformanceCounter(&ticks);
    return static_cast<uint64_t>(static_cast<double>(ticks.QuadPart) * m_tick);
}

Sending CSocketLine::Send(std::span<const BYTE> bytes, const CArrival* answered) noexcept
{
    const char* const data = reinterpret_cast<const char*>(bytes.data());
    const int size = static_cast<int>(bytes.size());
    const SOCKET socket = m_sockets[answered ? answered->Socket : 0].Get();
    const int sent =
        answered ? sendto(socket, data, size, 0, AsSocketAddress(answered->From), LengthOf(answered->From))
                 : send(socket, data, size, 0);
    if (sent == size)
        return Sending::Done;
    return IsRefusal(WSAGetLastError()) ? Sending::Refused : Sending::Failed;
}

// Sockets that listen are asked for the hop limit of what came; a sender does without, which is quicker.
Receiving CSocketLine::ReceiveOn(size_t index, std::span<BYTE> buffer, CArrival& arrival) noexcept
{
    const SOCKET socket = m_sockets[index].Get();
    WSABUF data = {static_cast<ULONG>(buffer.size()), reinterpret_cast<char*>(buffer.data())};
    alignas(WSACMSGHDR) std::array<char, 128> control;
    WSAMSG message = {reinterpret_cast<sockaddr*>(&arrival.From),
                      sizeof arrival.From,
                      &data,
                      1,
                      {static_cast<ULONG>(control.size()), control.data()},
                      0};
    DWORD size = 0;
    DWORD flags = 0;
    const int failed = m_receiveMessage ? m_receiveMessage(socket, &message, &size, nullptr, nullptr)
                                        : WSARecvFrom(socket, &data, 1, &size, &flags, message.name,
                                                      &message.namelen, nullptr, nullptr);
    arrival.Time = Now();
    if (failed == 0)
    {
        arrival.Size = size;
        arrival.Socket = index;
        arrival.HopLimit = m_receiveMessage ? HopLimitOf(message) : static_cast<BYTE>(kHopLimit);
        return Receiving::Packet;
    }
    const int error = WSAGetLastError();
    if (IsRefusal(error))
        return Receiving::Refused;
    return IsUnreachable(error) ? Receiving::Unreachable : Receiving::Nothing;
}

Receiving CSocketLine::Receive(std::span<BYTE> buffer, CArrival& arrival) noexcept
{
    // In turns, so that one address with much traffic does not silence the others.
    for (size_t i = 0; i < m_sockets.size(); ++i)
    {
        const size_t index = m_next;
        m_next = (m_next + 1) % m_sockets.size();
        const Receiving what = ReceiveOn(index, buffer, arrival);
        if (what != Receiving::Nothing)
            return what;
    }
    return Receiving::Nothing;
}

Woken CSocketLine::WaitFor(std::span<const HANDLE> events, uint64_t until) noexcept
{
    // The last ones are the packets and the timer; those before end the run.
    const uint64_t now = Steady();
    const uint64_t left = until > now ? until - now : 0;
    auto count = static_cast<DWORD>(events.size());
    DWORD wait = static_cast<DWORD>(std::min<uint64_t>(left / kStampMillisecond, 1000));
    if (left > 0 && left < kCoarse)
    {
        LARGE_INTEGER due = {};
        due.QuadPart = -static_cast<LONGLONG>(left);
        wait = SetWaitableTimer(m_timer.Get(), &due, 0, nullptr, nullptr, FALSE) ? INFINITE : 1;
    }
    else
        --count;
    const DWORD woken = WaitForMultipleObjects(count, events.data(), FALSE, wait);
    const size_t arrived = events.size() - 2;
    if (woken == WAIT_OBJECT_0 + arrived)
        WSAResetEvent(m_arrived.Get());
    if (woken < WAIT_OBJECT_0 + arrived)
        return events[woken - WAIT_OBJECT_0] == m_signals.Stop ? Woken::Stopped : Woken::LinkGone;
    return Woken::Ready;
}

Woken CSocketLine::Wait(uint64_t until) noexcept
{
    const HANDLE events[] = {m_signals.Stop, m_signals.LinkGone, m_arrived.Get(), m_timer.Get()};
    return WaitFor(events, until);
}

Woken CSocketLine::WaitStopped(uint64_t until) noexcept
{
    const HANDLE events[] = {m_signals.LinkGone, m_arrived.Get(), m_timer.Get()};
    return WaitFor(events, until);
}
