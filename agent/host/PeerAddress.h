// Which of a peer's addresses a sender can reach from its adapter, and from which of the adapter's own.
#pragma once

#include "agent/host/AdapterFacts.h"

struct CPath
{
    SOCKADDR_INET Source = {};
    SOCKADDR_INET Peer = {}; // with the port
};

// All addresses of a name or of a text that is an address, in the system's order; empty if there are none, or
// once `stop` is signalled. Needs started sockets. Throws std::bad_alloc.
std::vector<SOCKADDR_INET> ResolvePeer(const std::wstring& peer, HANDLE stop);

// S_OK or one of PeerUnknown, BadPeer, NoSource of vorl::sender. `port` in the machine's order.
HRESULT ChoosePath(const CAdapterFacts& adapter, const std::vector<SOCKADDR_INET>& addresses, USHORT port,
                   CPath& path);
