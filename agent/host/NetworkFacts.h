// What the tests of the real agent know of the machine's network. The one place where they touch the system;
// nothing behind it changes the machine's configuration. Free-threaded. Members may throw std::bad_alloc
// only.
#pragma once

#include "agent/host/AdapterFacts.h"

#include <optional>

// How a probe of another machine ended.
enum class Reply
{
    Answered,
    Refused,     // answered, but with a failure
    Silent,      // no answer in time, or the network said that there is no way
    NotSent,     // the system did not send the probe
    Unsupported, // the system has no such probe
    Stopped      // the stop event came first
};

class INetworkFacts
{
  public:
    virtual ~INetworkFacts() = default;

    // The wired adapters as they are now, in an order that stays from one start of the machine to the next.
    // A Win32 code; the list is empty after a failure.
    virtual DWORD ListAdapters(std::vector<CAdapterFacts>& adapters) = 0;
    // Whether the adapter's link is full duplex; absent where neither system nor driver tells.
    virtual std::optional<bool> IsFullDuplex(const std::wstring& adapterKey) = 0;

    // One echo request; `source` is the adapter's own address, all zero where it has none.
    virtual Reply Ping(const SOCKADDR_INET& target, const SOCKADDR_INET& source) = 0;
    // Asks the link for the hardware address of a neighbour.
    virtual Reply FindNeighbour(const SOCKADDR_INET& target, const SOCKADDR_INET& source) = 0;
    // Asks a DNS server for a name; the answer "no such name" is an answer.
    virtual Reply AskDnsServer(const SOCKADDR_INET& server, const SOCKADDR_INET& source,
                               const std::string& name, HANDLE stop) = 0;
};
