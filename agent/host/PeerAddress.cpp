#include "agent/host/PeerAddress.h"

#include "Common/src/com/Owned.h"
#include "agent/AgentCodes.h"
#include "agent/host/Addresses.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <ws2tcpip.h>

namespace
{
struct AddressInfoTraits
{
    using Type = ADDRINFOEXW*;
    static Type Empty() noexcept { return nullptr; }
    static void Close(Type info) noexcept { FreeAddrInfoExW(info); }
};

// The headers lack it.
void CancelResolving(HANDLE request) noexcept
{
    using Function = INT(WSAAPI*)(HANDLE*);
    const auto cancel = reinterpret_cast<Function>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ws2_32.dll"), "GetAddrInfoExCancel")));
    if (cancel)
        cancel(&request);
}

bool IsLoopback(const SOCKADDR_INET& address) noexcept
{
    if (IsV4(address))
        return address.Ipv4.sin_addr.s_net == 127;
    return IN6_IS_ADDR_LOOPBACK(&address.Ipv6.sin6_addr);
}

// No machine's own address: none, a group's, or everybody's.
bool IsOneMachines(const SOCKADDR_INET& address) noexcept
{
    if (IsV4(address))
    {
        const ULONG number = ntohl(address.Ipv4.sin_addr.s_addr);
        return number != 0 && (number >> 28) < 0xE;
    }
    return !IN6_IS_ADDR_UNSPECIFIED(&address.Ipv6.sin6_addr) &&
           !IN6_IS_ADDR_MULTICAST(&address.Ipv6.sin6_addr);
}

bool IsSameAddress(const SOCKADDR_INET& a, const SOCKADDR_INET& b) noexcept
{
    return InSamePrefix(a, b, IsV4(a) ? 32 : 128);
}

// Nothing passes through an adapter on the way to this machine itself.
bool IsOfThisMachine(const CAdapterFacts& adapter, const SOCKADDR_INET& address) noexcept
{
    const auto isSame = [&](const COwnAddress& own) { return IsSameAddress(own.Address, address); };
    const auto isLoopback = [](const COwnAddress& own) { return IsLoopback(own.Address); };
    const auto& own = adapter.Addresses;
    return std::any_of(own.begin(), own.end(), isSame) ||
           (IsLoopback(address) && std::none_of(own.begin(), own.end(), isLoopback));
}

bool IsEverybodys(const CAdapterFacts& adapter, const SOCKADDR_INET& address) noexcept
{
    return std::any_of(adapter.Addresses.begin(), adapter.Addresses.end(),
                       [&](const COwnAddress& own)
                       {
                           return InSamePrefix(own.Address, address, own.PrefixLength) &&
                                  IsNetworkOrBroadcast(address, own.PrefixLength);
                       });
}
} // namespace

std::vector<SOCKADDR_INET> ResolvePeer(const std::wstring& peer, HANDLE stop)
{
    const CHandle done(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    if (!done)
        throw std::bad_alloc();
    ADDRINFOEXW hints = {};
    hints.ai_socktype = SOCK_DGRAM;
    OVERLAPPED overlapped = {};
    overlapped.hEvent = done.Get();
    HANDLE request = nullptr;
    COwned<AddressInfoTraits> found;
    const INT status = GetAddrInfoExW(peer.c_str(), nullptr, NS_DNS, nullptr, &hints, found.Put(), nullptr,
                                      &overlapped, nullptr, &request);
    if (status == WSA_IO_PENDING)
    {
        const HANDLE events[] = {done.Get(), stop};
        if (WaitForMultipleObjects(2, events, FALSE, INFINITE) != WAIT_OBJECT_0)
        {
            // What the system writes into stays until it has let go.
            CancelResolving(request);
            WaitForSingleObject(done.Get(), INFINITE);
            return {};
        }
    }
    std::vector<SOCKADDR_INET> addresses;
    // The headers give one structure two names.
    const auto next = [](const ADDRINFOEXW* each)
    { return reinterpret_cast<const ADDRINFOEXW*>(each->ai_next); };
    for (const ADDRINFOEXW* each = found.Get(); each; each = next(each))
    {
        SOCKADDR_INET address = {};
        if ((each->ai_family == AF_INET || each->ai_family == AF_INET6) && each->ai_addrlen <= sizeof address)
        {
            std::memcpy(&address, each->ai_addr, each->ai_addrlen);
            addresses.push_back(address);
        }
    }
    return addresses;
}

HRESULT ChoosePath(const CAdapterFacts& adapter, const std::vector<SOCKADDR_INET>& addresses, USHORT port,
                   CPath& path)
{
    HRESULT hr = vorl::sender::PeerUnknown;
    for (const SOCKADDR_INET& address : addresses)
    {
        if (!IsOneMachines(address) || IsOfThisMachine(adapter, address) || IsEverybodys(adapter, address))
        {
            if (hr != vorl::sender::NoSource)
                hr = vorl::sender::BadPeer;
            continue;
        }
        const std::optional<SOCKADDR_INET> source = SourceFor(adapter, address);
        if (!source)
        {
            hr = vorl::sender::NoSource;
            continue;
        }
        path.Source = *source;
        path.Peer = address;
        path.Peer.Ipv4.sin_port = htons(port); // which stands in the same place in both families
        // A link-local address without a scope is meant to be on the adapter's own link.
        if (!IsV4(address) && IsLinkLocal(address) && address.Ipv6.sin6_scope_id == 0)
            path.Peer.Ipv6.sin6_scope_id = source->Ipv6.sin6_scope_id;
        return S_OK;
    }
    return hr;
}
