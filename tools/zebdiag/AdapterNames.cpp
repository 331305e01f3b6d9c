#include "Common/src/com/Text.h"

#include <winsock2.h>

#include <ws2tcpip.h>

#include <iphlpapi.h>

#include "tools/zebdiag/AdapterNames.h"
#include "tools/zebdiag/WmiValue.h"

#include <algorithm>
#include <cwctype>
#include <memory>

namespace zebdiag
{
namespace
{
constexpr wchar_t kAdapterClass[] = L"Win32_NetworkAdapter";
// What GetAdaptersAddresses recommends to start with, and how often it may ask for more.
constexpr ULONG kFirstSize = 16 * 1024;
constexpr int kAttempts = 4;
} // namespace

std::wstring AdapterNameKey(std::wstring_view adapterKey)
{
    std::wstring key(adapterKey);
    std::transform(key.begin(), key.end(), key.begin(),
                   [](wchar_t c) { return static_cast<wchar_t>(std::towupper(c)); });
    return key;
}

AdapterNames AdapterNamesOfService(const CWmiSession& session)
{
    AdapterNames names;
    for (const WmiObject& adapter :
         session.Query(L"SELECT GUID, NetConnectionID, Name FROM Win32_NetworkAdapter", kAdapterClass))
        if (const auto guid = ReadText(adapter.Get(), L"GUID"))
            names[AdapterNameKey(*guid)] = {
                ReadText(adapter.Get(), L"NetConnectionID").value_or(std::wstring()),
                ReadText(adapter.Get(), L"Name").value_or(std::wstring())};
    return names;
}

AdapterNames AdapterNamesOfSystem()
{
    constexpr ULONG flags = GAA_FLAG_SKIP_UNICAST | GAA_FLAG_SKIP_ANYCAST | GAA_FLAG_SKIP_MULTICAST |
                            GAA_FLAG_SKIP_DNS_SERVER | GAA_FLAG_INCLUDE_ALL_INTERFACES;
    ULONG size = kFirstSize;
    for (int attempt = 0; attempt < kAttempts; ++attempt)
    {
        const auto block = std::make_unique<std::byte[]>(size);
        const auto first = reinterpret_cast<IP_ADAPTER_ADDRESSES*>(block.get());
        const ULONG status = GetAdaptersAddresses(AF_UNSPEC, flags, nullptr, first, &size);
        if (status == ERROR_BUFFER_OVERFLOW)
            continue;
        AdapterNames names;
        for (const IP_ADAPTER_ADDRESSES* one = status == NO_ERROR ? first : nullptr; one; one = one->Next)
        {
            CAdapterName& name = names[AdapterNameKey(WidenText(one->AdapterName))];
            if (one->FriendlyName)
                name.Name = one->FriendlyName;
            if (one->Description)
                name.Description = one->Description;
        }
        return names;
    }
    return {};
}

AdapterNames FindAdapterNames(const CWmiSession& session)
{
    AdapterNames names;
    try
    {
        names = AdapterNamesOfService(session);
    }
    catch (const CFailure&)
    {
        // The service has no such class, or does not let us read it. Names are a comfort, not a need.
        names.clear();
    }
    if (names.empty() && session.Target().IsLocal())
        names = AdapterNamesOfSystem();
    return names;
}
} // namespace zebdiag
