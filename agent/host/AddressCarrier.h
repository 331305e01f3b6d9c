// An adapter that belongs to a virtual switch, a team or a bridge has no addresses: an interface on top of it
// carries them.
#pragma once

#include "agent/host/MachineFacts.h"

struct CAddressCarrier
{
    const CInterface* Interface; // one of the machine's
    Carrier Kind;
};

// The adapter itself where it has an address, or where nothing above it has one. Of several interfaces above,
// one with a gateway comes first, then one with an address that others can reach, then the nearest one.
// Throws std::bad_alloc only.
CAddressCarrier FindCarrier(const CMachineFacts& machine, const CInterface& adapter);

// What a test of the addresses ends with when it has found `outcome` on the carrier: the same, with a word on
// who the carrier is.
HRESULT CarriedOutcome(Carrier kind, HRESULT outcome) noexcept;
