// A network of the test's own: what the tests of the real agent see is what the test says.
#pragma once

#include "agent/host/NetworkFacts.h"

#include <atomic>
#include <deque>
#include <map>
#include <ws2tcpip.h>

inline SOCKADDR_INET Address(const wchar_t* text)
{
    SOCKADDR_INET address = {};
    if (InetPtonW(AF_INET, text, &address.Ipv4.sin_addr) == 1)
        address.si_family = AF_INET;
    else if (InetPtonW(AF_INET6, text, &address.Ipv6.sin6_addr) == 1)
        address.si_family = AF_INET6;
    return address;
}

inline constexpr wchar_t kAdapterKey[] = L"{00000004-0000-0000-0000-0000000000AB}";

// An adapter with which nothing is wrong.
inline CAdapterFacts HealthyAdapter()
{
    CAdapterFacts adapter;
    adapter.Key = kAdapterKey;
    adapter.OperStatus = IfOperStatusUp;
    adapter.AdminStatus = NET_IF_ADMIN_STATUS_UP;
    adapter.Media = MediaConnectStateConnected;
    adapter.TransmitSpeed = adapter.ReceiveSpeed = 1'000'000'000;
    adapter.Mtu = 1500;
    adapter.MacAddress = {0x02, 0xFC, 0, 0, 0, 1};
    adapter.Traffic = {5, 6, 7, 8, 9000, 9000};
    adapter.Moment = 60'000;
    adapter.Addresses = {{Address(L"192.0.2.2"), 24, IpDadStatePreferred},
                         {Address(L"fe80::1"), 64, IpDadStatePreferred}};
    adapter.Gateways = {Address(L"192.0.2.1")};
    adapter.DnsServers = {Address(L"192.0.2.53"), Address(L"192.0.2.54")};
    return adapter;
}

class CFakeNetwork final : public INetworkFacts
{
  public:
    // What each look at the adapters shows, in turn; the last one stays.
    std::deque<std::vector<CAdapterFacts>> Looks = {{HealthyAdapter()}};
    DWORD ListStatus = NO_ERROR;
    std::atomic<bool> GoneFromNowOn = false; // no adapter is left; may be set while a test runs
    std::optional<bool> FullDuplex = true;
    // In turn, the last one stays.
    std::deque<Reply> Pings = {Reply::Answered};
    Reply Neighbour = Reply::Answered;
    std::deque<Reply> Dns = {Reply::Answered};

    // What was asked for.
    std::vector<std::pair<SOCKADDR_INET, SOCKADDR_INET>> Pinged; // target and source
    int NeighboursAsked = 0;
    std::vector<std::string> NamesAsked;
    // Signalled at every look, and at every ping.
    HANDLE Looked = nullptr;
    HANDLE PingMade = nullptr;

    DWORD ListAdapters(std::vector<CAdapterFacts>& adapters) override
    {
        if (Looked)
            SetEvent(Looked);
        adapters.clear();
        if (ListStatus == NO_ERROR)
            adapters = GoneFromNowOn ? std::vector<CAdapterFacts>{} : Next(Looks);
        return ListStatus;
    }
    std::optional<bool> IsFullDuplex(const std::wstring&) override { return FullDuplex; }
    Reply Ping(const SOCKADDR_INET& target, const SOCKADDR_INET& source) override
    {
        Pinged.emplace_back(target, source);
        if (PingMade)
            SetEvent(PingMade);
        return Next(Pings);
    }
    Reply FindNeighbour(const SOCKADDR_INET&, const SOCKADDR_INET&) override
    {
        ++NeighboursAsked;
        return Neighbour;
    }
    Reply AskDnsServer(const SOCKADDR_INET&, const SOCKADDR_INET&, const std::string& name, HANDLE) override
    {
        NamesAsked.push_back(name);
        return Next(Dns);
    }

  private:
    template <class T>
    static T Next(std::deque<T>& values)
    {
        T value = values.front();
        if (values.size() > 1)
            values.pop_front();
        return value;
    }
};
