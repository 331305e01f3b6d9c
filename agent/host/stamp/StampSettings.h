// What sender and responder are told by registry values under
// HKEY_LOCAL_MACHINE\SOFTWARE\Veltrane\Halvern\ZEB\ZebDiag. A value that is absent, or of another type than
// it should be, has its default; one outside its limits makes the test fail with a code of its own.
#pragma once

#include "agent/host/stamp/SenderVerdict.h"

#include <string>

struct CStampSettings
{
    std::wstring Peer; // name or address; empty where none is set
    DWORD PeerPort = kStampPort;
    DWORD ResponderPort = kStampPort;
    DWORD PacketsPerSecond = 100;
    DWORD PacketSize = 0; // octets of UDP data
    DWORD Dscp = 0;
    CLossRule Loss = {1, 200};
    DWORD WaitForSender = 60; // seconds; 0 is for ever
    StampMode Mode = StampMode::Open;
    std::wstring KeyFile;
};

// S_OK or one of the codes vorl::setting. Throws std::bad_alloc.
HRESULT ReadStampSettings(CStampSettings& settings);
