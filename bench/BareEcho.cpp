#include "bench/BareEcho.h"

#include "Common/src/com/Owned.h"
#include "bench/Measure.h"
#include "bench/Must.h"

#include <vector>

namespace
{
constexpr DWORD kPreciseTimer = 2; // CREATE_WAITABLE_TIMER_HIGH_RESOLUTION
constexpr DWORD kPatience = 1000;  // milliseconds, after which a lost packet is given up
constexpr size_t kLargest = 2048;
constexpr double kTick = 1e-7; // seconds

ULONGLONG PreciseNow()
{
    FILETIME now = {};
    GetSystemTimePreciseAsFileTime(&now);
    return ULONGLONG{now.dwHighDateTime} << 32 | now.dwLowDateTime;
}

const sockaddr* Generic(const SOCKADDR_INET& address)
{
    return reinterpret_cast<const sockaddr*>(&address);
}

SOCKET BindLoopback(SOCKADDR_INET& address)
{
    const SOCKET bound = socket(AF_INET, SOCK_DGRAM, IPPROTO_UDP);
    address = LoopbackAddress(0);
    int size = sizeof address.Ipv4;
    Must(bind(bound, Generic(address), size) == 0 &&
             getsockname(bound, reinterpret_cast<sockaddr*>(&address), &size) == 0,
         "binding a socket to loopback");
    setsockopt(bound, SOL_SOCKET, SO_RCVTIMEO, reinterpret_cast<const char*>(&kPatience), sizeof kPatience);
    return bound;
}
} // namespace

CSocketsScope::CSocketsScope()
{
    WSADATA data = {};
    Must(WSAStartup(MAKEWORD(2, 2), &data) == 0, "starting sockets");
}

CSocketsScope::~CSocketsScope()
{
    WSACleanup();
}

SOCKADDR_INET LoopbackAddress(USHORT port)
{
    SOCKADDR_INET address = {};
    address.Ipv4.sin_family = AF_INET;
    address.Ipv4.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.Ipv4.sin_port = port;
    return address;
}

USHORT FreeLoopbackPort()
{
    SOCKADDR_INET address = {};
    closesocket(BindLoopback(address));
    return address.Ipv4.sin_port;
}

CBareEcho::CBareEcho(size_t size) : m_size(size)
{
    SOCKADDR_INET echo = {};
    SOCKADDR_INET own = {};
    m_echo = BindLoopback(echo);
    m_socket = BindLoopback(own);
    Must(connect(m_socket, Generic(echo), sizeof echo.Ipv4) == 0, "connecting over loopback");
    m_thread = std::thread(
        [this]
        {
            char packet[kLargest];
            for (;;)
            {
                SOCKADDR_INET from = {};
                int length = sizeof from;
                const int read =
                    recvfrom(m_echo, packet, sizeof packet, 0, reinterpret_cast<sockaddr*>(&from), &length);
                if (read == 1)
                    return;
                if (read > 0)
                    sendto(m_echo, packet, read, 0, Generic(from), length);
            }
        });
}

CBareEcho::~CBareEcho()
{
    const char end = 0;
    send(m_socket, &end, 1, 0);
    m_thread.join();
    closesocket(m_socket);
    closesocket(m_echo);
}

double CBareEcho::Exchange() const
{
    char packet[kLargest] = {};
    const ULONGLONG begin = PreciseNow();
    send(m_socket, packet, static_cast<int>(m_size), 0);
    Must(recv(m_socket, packet, sizeof packet, 0) == static_cast<int>(m_size), "an echo over loopback");
    return static_cast<double>(PreciseNow() - begin) * kTick;
}

double CBareEcho::Rate(unsigned seconds) const
{
    double count = 0;
    const ULONGLONG begin = GetTickCount64();
    while (GetTickCount64() - begin < seconds * 1000)
    {
        Exchange();
        ++count;
    }
    return count * 1000 / static_cast<double>(GetTickCount64() - begin);
}

double CBareEcho::RoundTrip(unsigned perSecond, unsigned seconds) const
{
    const CHandle timer(CreateWaitableTimerExW(nullptr, nullptr, kPreciseTimer, TIMER_ALL_ACCESS));
    Must(static_cast<bool>(timer), "making a timer");
    std::vector<double> times;
    for (unsigned i = 0; i < perSecond * seconds; ++i)
    {
        LARGE_INTEGER due = {};
        due.QuadPart = -static_cast<LONGLONG>(1 / kTick / perSecond);
        SetWaitableTimer(timer.Get(), &due, 0, nullptr, nullptr, FALSE);
        WaitForSingleObject(timer.Get(), INFINITE);
        times.push_back(Exchange());
    }
    return Median(times);
}
