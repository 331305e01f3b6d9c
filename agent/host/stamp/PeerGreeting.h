// What a sender finds out before it measures: whether the peer answers at all, and whether it counts packets
// itself or copies the sender's numbers. For that it sends single packets with numbers that a peer which
// counts cannot have reached. They belong to a session of their own, as they are sent from another port.
#pragma once

#include "agent/host/stamp/SenderTally.h"
#include "agent/host/stamp/StampExchange.h"

struct CGreeting
{
    // S_OK, or why there is nothing to measure. If the run was stopped meanwhile, S_OK and Stopped.
    HRESULT Outcome = S_OK;
    bool Stopped = false;
    bool PeerCounts = false;
    CSenderCounts Counts; // of the packets that it took
};

CGreeting GreetPeer(IStampLine& line, const CPacketForm& form) noexcept;
