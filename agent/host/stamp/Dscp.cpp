#include "agent/host/stamp/Dscp.h"

#include <ws2tcpip.h>

namespace
{
// Of the system's qos2.h, which the toolchain's does not compile.
struct CQosVersion
{
    USHORT Major = 1;
    USHORT Minor = 0;
};
constexpr int kBestEffort = 0;
constexpr DWORD kNonAdaptiveFlow = 2;
constexpr int kSetOutgoingDscp = 2;

// Looked up by name: not every edition of Windows has the library.
struct CQosFunctions
{
    BOOL(WINAPI* Create)(CQosVersion*, HANDLE*) = nullptr;
    BOOL(WINAPI* Close)(HANDLE) = nullptr;
    BOOL(WINAPI* AddSocket)(HANDLE, SOCKET, sockaddr*, int, DWORD, ULONG*) = nullptr;
    BOOL(WINAPI* Set)(HANDLE, ULONG, int, ULONG, void*, DWORD, OVERLAPPED*) = nullptr;

    CQosFunctions() noexcept
    {
        const HMODULE library = LoadLibraryExW(L"qwave.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
        if (!library)
            return;
        Find(library, "QOSCreateHandle", Create);
        Find(library, "QOSCloseHandle", Close);
        Find(library, "QOSAddSocketToFlow", AddSocket);
        Find(library, "QOSSetFlow", Set);
    }
    bool AreThere() const noexcept { return Create && Close && AddSocket && Set; }

  private:
    template <class Function>
    static void Find(HMODULE library, const char* name, Function& function) noexcept
    {
        function = reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(library, name)));
    }
};

const CQosFunctions& Qos() noexcept
{
    static const CQosFunctions functions;
    return functions;
}

// Under Wine, which has no such service, the option of the socket counts; Windows takes it and does nothing.
bool SetOption(SOCKET socket, DWORD dscp) noexcept
{
    SOCKADDR_STORAGE own = {};
    int size = sizeof own;
    if (getsockname(socket, reinterpret_cast<sockaddr*>(&own), &size) != 0)
        return false;
    const DWORD octet = dscp << 2;
    const bool v4 = own.ss_family == AF_INET;
    return setsockopt(socket, v4 ? IPPROTO_IP : IPPROTO_IPV6, v4 ? IP_TOS : IPV6_TCLASS,
                      reinterpret_cast<const char*>(&octet), sizeof octet) == 0;
}
} // namespace

void QosTraits::Close(Type h) noexcept
{
    Qos().Close(h);
}

bool SetDscp(SOCKET socket, DWORD dscp, CQosHandle& qos) noexcept
{
    CQosVersion version;
    if (!Qos().AreThere() || !Qos().Create(&version, qos.Put()))
        return SetOption(socket, dscp);
    ULONG flow = 0;
    return Qos().AddSocket(qos.Get(), socket, nullptr, kBestEffort, kNonAdaptiveFlow, &flow) &&
           Qos().Set(qos.Get(), flow, kSetOutgoingDscp, sizeof dscp, &dscp, 0, nullptr);
}
