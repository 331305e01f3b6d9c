// The real network and the real clocks: UDP sockets of one adapter's addresses.
#pragma once

#include "Common/src/com/Owned.h"
#include "agent/host/stamp/Dscp.h"
#include "agent/host/stamp/StampLine.h"

#include <mswsock.h>
#include <vector>

// What ends a wait besides packets and time.
struct CLineSignals
{
    HANDLE Stop = nullptr;
    HANDLE LinkGone = nullptr;
};

class CSocketLine final : public IStampLine
{
  public:
    explicit CSocketLine(const CLineSignals& signals);

    // For a sender: one socket that hears of `peer` only. S_OK or a code of vorl::sender.
    HRESULT Connect(const SOCKADDR_INET& source, const SOCKADDR_INET& peer, DWORD dscp);
    // For a responder: one more address, with its port, to listen on. A Windows Sockets code.
    int Listen(const SOCKADDR_INET& address);

    uint64_t Now() noexcept override;
    uint64_t Steady() noexcept override;
    Sending Send(std::span<const BYTE> bytes, const CArrival* answered) noexcept override;
    Receiving Receive(std::span<BYTE> buffer, CArrival& arrival) noexcept override;
    Woken Wait(uint64_t until) noexcept override;
    Woken WaitStopped(uint64_t until) noexcept override;

  private:
    struct SocketTraits
    {
        using Type = SOCKET;
        static Type Empty() noexcept { return INVALID_SOCKET; }
        static void Close(Type s) noexcept { closesocket(s); }
    };
    struct EventTraits
    {
        using Type = WSAEVENT;
        static Type Empty() noexcept { return WSA_INVALID_EVENT; }
        static void Close(Type e) noexcept { WSACloseEvent(e); }
    };

    int Open(const SOCKADDR_INET& address);
    Woken WaitFor(std::span<const HANDLE> events, uint64_t until) noexcept;
    Receiving ReceiveOn(size_t index, std::span<BYTE> buffer, CArrival& arrival) noexcept;

    const CLineSignals m_signals;
    const COwned<EventTraits> m_arrived;
    CHandle m_timer;
    LPFN_WSARECVMSG m_receiveMessage = nullptr;
    std::vector<COwned<SocketTraits>> m_sockets;
    CQosHandle m_qos;    // goes before its socket
    size_t m_next = 0;   // the socket that is read next
    const double m_tick; // of the steady clock, in 100 nanoseconds
};
