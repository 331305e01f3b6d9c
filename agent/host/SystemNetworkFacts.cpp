#include "agent/host/SystemNetworkFacts.h"

#include "Common/src/com/Owned.h"
#include "agent/host/DnsQuestion.h"
#include "agent/host/Probes.h"

#include <algorithm>
#include <cstring>
#include <memory>

namespace
{
struct InterfaceTableTraits
{
    using Type = MIB_IF_TABLE2*;
    static Type Empty() noexcept { return nullptr; }
    static void Close(Type table) noexcept { FreeMibTable(table); }
};

// The adapters' addresses, as the list that the system hands out.
class CAddressList
{
  public:
    DWORD Read()
    {
        constexpr ULONG kFlags = GAA_FLAG_INCLUDE_GATEWAYS | GAA_FLAG_INCLUDE_ALL_INTERFACES |
                                 GAA_FLAG_SKIP_ANYCAST | GAA_FLAG_SKIP_MULTICAST;
        // The list may grow between two calls.
        DWORD status = ERROR_BUFFER_OVERFLOW;
        ULONG size = 16 * 1024;
        for (int attempt = 0; attempt < 4 && status == ERROR_BUFFER_OVERFLOW; ++attempt)
        {
            m_memory.reset(new std::max_align_t[size / sizeof(std::max_align_t) + 1]);
            status = GetAdaptersAddresses(AF_UNSPEC, kFlags, nullptr, Head(), &size);
        }
        m_valid = status == NO_ERROR;
        return status == ERROR_NO_DATA ? NO_ERROR : status;
    }
    // Null where the interface has no addresses at all.
    const IP_ADAPTER_ADDRESSES* Find(const NET_LUID& luid) const noexcept
    {
        for (const IP_ADAPTER_ADDRESSES* entry = m_valid ? Head() : nullptr; entry; entry = entry->Next)
            if (entry->Luid.Value == luid.Value)
                return entry;
        return nullptr;
    }

  private:
    IP_ADAPTER_ADDRESSES* Head() const noexcept
    {
        return reinterpret_cast<IP_ADAPTER_ADDRESSES*>(m_memory.get());
    }

    std::unique_ptr<std::max_align_t[]> m_memory;
    bool m_valid = false;
};

SOCKADDR_INET ToAddress(const SOCKET_ADDRESS& from) noexcept
{
    SOCKADDR_INET address = {};
    const auto size = std::min(static_cast<size_t>(from.iSockaddrLength), sizeof address);
    std::memcpy(&address, from.lpSockaddr, size);
    return address;
}

void AddAddresses(const IP_ADAPTER_ADDRESSES& from, CInterface& to)
{
    for (const auto* own = from.FirstUnicastAddress; own; own = own->Next)
        to.Addresses.push_back(
            {ToAddress(own->Address), own->OnLinkPrefixLength, static_cast<NL_DAD_STATE>(own->DadState)});
    for (const auto* gateway = from.FirstGatewayAddress; gateway; gateway = gateway->Next)
        to.Gateways.push_back(ToAddress(gateway->Address));
    for (const auto* server = from.FirstDnsServerAddress; server; server = server->Next)
        to.DnsServers.push_back(ToAddress(server->Address));
}

struct StackTableTraits
{
    using Type = MIB_IFSTACK_TABLE*;
    static Type Empty() noexcept { return nullptr; }
    static void Close(Type table) noexcept { FreeMibTable(table); }
};

// Looked up by name, so that the agent loads and lists adapters where the system has no such table.
std::vector<MIB_IFSTACK_ROW> ReadStack()
{
    using Function = NETIO_STATUS(WINAPI*)(MIB_IFSTACK_TABLE**);
    const auto read = reinterpret_cast<Function>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"iphlpapi.dll"), "GetIfStackTable")));
    COwned<StackTableTraits> table;
    if (!read || read(table.Put()) != NO_ERROR)
        return {};
    return {table.Get()->Table, table.Get()->Table + table.Get()->NumEntries};
}
} // namespace

CSystemNetworkFacts::CSystemNetworkFacts(WiredRule isWired) noexcept : m_isWired(isWired)
{
    WSADATA data = {};
    m_sockets = WSAStartup(MAKEWORD(2, 2), &data) == 0;
}

CSystemNetworkFacts::~CSystemNetworkFacts()
{
    if (m_sockets)
        WSACleanup();
}

DWORD CSystemNetworkFacts::ListAdapters(std::vector<CAdapterFacts>& adapters)
{
    adapters.clear();
    COwned<InterfaceTableTraits> table;
    CAddressList addresses;
    CMachineFacts machine;
    DWORD status = GetIfTable2(table.Put());
    machine.Moment = GetTickCount64();
    if (status == NO_ERROR)
        status = addresses.Read();
    if (status != NO_ERROR)
        return status;
    machine.Stack = ReadStack();
    for (ULONG i = 0; i < table.Get()->NumEntries; ++i)
    {
        CInterface& each = machine.Interfaces.emplace_back();
        each.Row = table.Get()->Table[i];
        if (const IP_ADAPTER_ADDRESSES* own = addresses.Find(each.Row.InterfaceLuid))
            AddAddresses(*own, each);
    }
    adapters = WiredAdapters(machine, m_isWired);
    return NO_ERROR;
}

std::optional<bool> CSystemNetworkFacts::IsFullDuplex(const std::wstring& adapterKey)
{
    return QueryFullDuplex(adapterKey);
}

Reply CSystemNetworkFacts::Ping(const SOCKADDR_INET& target, const SOCKADDR_INET& source)
{
    return SendEcho(target, source);
}

Reply CSystemNetworkFacts::FindNeighbour(const SOCKADDR_INET& target, const SOCKADDR_INET& source)
{
    return SendArpRequest(target, source);
}

Reply CSystemNetworkFacts::AskDnsServer(const SOCKADDR_INET& server, const SOCKADDR_INET& source,
                                        const std::string& name, HANDLE stop)
{
    return SendDnsQuestion(server, source, name, stop);
}
