// The mark (DSCP) of what a socket sends.
#pragma once

#include "Common/src/com/Owned.h"

#include <winsock2.h>

struct QosTraits
{
    using Type = HANDLE;
    static Type Empty() noexcept { return nullptr; }
    static void Close(Type h) noexcept;
};
// The system marks packets for as long as this is held.
using CQosHandle = COwned<QosTraits>;

// Marks what `socket`, which is connected, sends. `qos` stays empty where the socket itself keeps the mark.
// False if the system does not let this account do it.
bool SetDscp(SOCKET socket, DWORD dscp, CQosHandle& qos) noexcept;
