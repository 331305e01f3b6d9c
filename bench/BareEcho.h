// The least that sends packets over loopback and has them sent back: a socket that echoes on a thread, and
// one that sends, waits, and takes the time.
#pragma once

#include <winsock2.h>

#include <thread>
#include <ws2ipdef.h>

// Sockets are there while it lives.
class CSocketsScope
{
  public:
    CSocketsScope();
    ~CSocketsScope();
    CSocketsScope(const CSocketsScope&) = delete;
    CSocketsScope& operator=(const CSocketsScope&) = delete;
};

// 127.0.0.1, with a port in the network's order.
SOCKADDR_INET LoopbackAddress(USHORT port);
USHORT FreeLoopbackPort();

class CBareEcho
{
  public:
    explicit CBareEcho(size_t size);
    ~CBareEcho();
    CBareEcho(const CBareEcho&) = delete;
    CBareEcho& operator=(const CBareEcho&) = delete;

    // Packets a second that go and come back, one after the other.
    double Rate(unsigned seconds) const;
    // The median, in seconds, at so many packets a second.
    double RoundTrip(unsigned perSecond, unsigned seconds) const;

  private:
    // In seconds.
    double Exchange() const;

    const size_t m_size;
    SOCKET m_echo;
    SOCKET m_socket;
    std::thread m_thread;
};
