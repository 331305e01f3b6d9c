// What a sender or a responder sees of the network and of time. One thread at a time uses a line.
#pragma once

#include "agent/host/stamp/StampTime.h"

#include <span>
#include <winsock2.h>

#include <ws2ipdef.h>

struct CArrival
{
    size_t Size = 0;
    SOCKADDR_INET From = {};
    BYTE HopLimit = 255;
    uint64_t Time = 0; // of the system's precise clock, in 100 nanoseconds since 1601
    size_t Socket = 0; // which of the line's addresses it came to
};

enum class Receiving
{
    Packet,
    Nothing,    // for now
    Refused,    // the peer's machine says that nobody listens there
    Unreachable // somebody on the way says that there is no way
};

enum class Sending
{
    Done,
    Refused,
    Failed
};

enum class Woken
{
    Ready, // something may have arrived, or the time has come
    Stopped,
    LinkGone
};

class IStampLine
{
  public:
    virtual ~IStampLine() = default;

    // The system's precise clock, in 100 nanoseconds since 1601.
    virtual uint64_t Now() noexcept = 0;
    // A clock that nobody sets, in 100 nanoseconds.
    virtual uint64_t Steady() noexcept = 0;

    // To the line's peer, or to the one that a packet came from.
    virtual Sending Send(std::span<const BYTE> bytes, const CArrival* answered) noexcept = 0;
    // Does not wait. Packets that do not fit into `buffer` are passed over.
    virtual Receiving Receive(std::span<BYTE> buffer, CArrival& arrival) noexcept = 0;
    // Waits until something may have arrived, Steady() is `until`, or the run is to end.
    virtual Woken Wait(uint64_t until) noexcept = 0;
    // The same for a run that has been stopped and has something left to do.
    virtual Woken WaitStopped(uint64_t until) noexcept = 0;
};
