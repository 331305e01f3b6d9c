#include "agent/host/DnsQuestion.h"

#include "Common/src/com/Owned.h"

#include <algorithm>
#include <array>
#include <ws2tcpip.h>

namespace
{
constexpr int kAttempts = 2;
constexpr DWORD kPatience = 1500; // milliseconds for each
constexpr USHORT kDnsPort = 53;
constexpr BYTE kNoError = 0;
constexpr BYTE kNoSuchName = 3;
constexpr size_t kHeader = 12;

struct SocketTraits
{
    using Type = SOCKET;
    static Type Empty() noexcept { return INVALID_SOCKET; }
    static void Close(Type s) noexcept { closesocket(s); }
};
using CSocket = COwned<SocketTraits>;

struct SocketEventTraits
{
    using Type = WSAEVENT;
    static Type Empty() noexcept { return WSA_INVALID_EVENT; }
    static void Close(Type e) noexcept { WSACloseEvent(e); }
};
using CSocketEvent = COwned<SocketEventTraits>;

int SizeOf(const SOCKADDR_INET& address) noexcept
{
    return address.si_family == AF_INET ? sizeof address.Ipv4 : sizeof address.Ipv6;
}

const sockaddr* Raw(const SOCKADDR_INET& address) noexcept
{
    return reinterpret_cast<const sockaddr*>(&address);
}

bool IsLoopback(const SOCKADDR_INET& address) noexcept
{
    if (address.si_family == AF_INET)
        return address.Ipv4.sin_addr.s_net == 127;
    return IN6_IS_ADDR_LOOPBACK(&address.Ipv6.sin6_addr);
}

// A socket that hears of this server only; none where the system refuses.
CSocket Connect(const SOCKADDR_INET& server, const SOCKADDR_INET& source, WSAEVENT readable) noexcept
{
    CSocket socket(::socket(server.si_family, SOCK_DGRAM, IPPROTO_UDP));
    // Nothing leaves the machine through an adapter for a server that runs on it.
    const bool ready = socket &&
                       (IsLoopback(server) || bind(socket.Get(), Raw(source), SizeOf(source)) == 0) &&
                       connect(socket.Get(), Raw(server), SizeOf(server)) == 0 &&
                       WSAEventSelect(socket.Get(), readable, FD_READ) == 0;
    return ready ? std::move(socket) : CSocket();
}

// Reads until an answer to the question comes or the time is up.
Reply AwaitAnswer(SOCKET socket, WSAEVENT readable, USHORT id, HANDLE stop) noexcept
{
    const ULONGLONG end = GetTickCount64() + kPatience;
    const HANDLE events[] = {stop, readable};
    for (ULONGLONG now = GetTickCount64(); now < end; now = GetTickCount64())
    {
        const DWORD wait = WaitForMultipleObjects(2, events, FALSE, static_cast<DWORD>(end - now));
        if (wait == WAIT_OBJECT_0)
            return Reply::Stopped;
        if (wait != WAIT_OBJECT_0 + 1)
            return Reply::Silent;
        WSAResetEvent(readable);
        std::array<BYTE, 1500> message = {};
        const int size =
            recv(socket, reinterpret_cast<char*>(message.data()), static_cast<int>(message.size()), 0);
        // The server's machine says that nobody listens there.
        if (size == SOCKET_ERROR && WSAGetLastError() == WSAECONNRESET)
            return Reply::Silent;
        const Reply reply = ReadDnsAnswer({message.data(), static_cast<size_t>(std::max(size, 0))}, id);
        if (reply != Reply::Silent)
            return reply;
    }
    return Reply::Silent;
}
} // namespace

std::vector<BYTE> DnsQuestionFor(const std::string& name, USHORT id)
{
    // One question, recursion desired.
    std::vector<BYTE> message = {
        static_cast<BYTE>(id >> 8), static_cast<BYTE>(id), 1, 0, 0, 1, 0, 0, 0, 0, 0, 0};
    for (size_t begin = 0; begin < name.size();)
    {
        const size_t end = std::min(name.find('.', begin), name.size());
        message.push_back(static_cast<BYTE>(end - begin));
        message.insert(message.end(), name.begin() + static_cast<std::ptrdiff_t>(begin),
                       name.begin() + static_cast<std::ptrdiff_t>(end));
        begin = end + 1;
    }
    // The root, type PTR, class Internet.
    message.insert(message.end(), {0, 0, 12, 0, 1});
    return message;
}

Reply ReadDnsAnswer(std::span<const BYTE> message, USHORT id) noexcept
{
    const bool answer = message.size() >= kHeader && message[0] == (id >> 8) && message[1] == (id & 0xFF) &&
                        (message[2] & 0x80) != 0;
    if (!answer)
        return Reply::Silent;
    const BYTE code = message[3] & 15;
    return code == kNoError || code == kNoSuchName ? Reply::Answered : Reply::Refused;
}

Reply SendDnsQuestion(const SOCKADDR_INET& server, const SOCKADDR_INET& source, const std::string& name,
                      HANDLE stop)
{
    SOCKADDR_INET to = server;
    USHORT& port = to.si_family == AF_INET ? to.Ipv4.sin_port : to.Ipv6.sin6_port;
    if (port == 0)
        port = htons(kDnsPort);
    const CSocketEvent readable(WSACreateEvent());
    const CSocket socket = readable ? Connect(to, source, readable.Get()) : CSocket();
    if (!socket)
        return Reply::NotSent;
    Reply reply = Reply::Silent;
    for (int i = 0; i < kAttempts && reply == Reply::Silent; ++i)
    {
        const auto id = static_cast<USHORT>(GetTickCount64() + static_cast<ULONGLONG>(i));
        const std::vector<BYTE> question = DnsQuestionFor(name, id);
        const int sent = send(socket.Get(), reinterpret_cast<const char*>(question.data()),
                              static_cast<int>(question.size()), 0);
        reply = sent == SOCKET_ERROR ? Reply::NotSent : AwaitAnswer(socket.Get(), readable.Get(), id, stop);
    }
    return reply;
}
