// Whether what a sender has counted can still pass.
#pragma once

#include "agent/host/stamp/SenderTally.h"

#include <windows.h>

struct CLossRule
{
    DWORD LimitPercent;
    DWORD EnoughPackets; // with which a run would pass
};

// S_OK, or the code of what is wrong with so many packets. Fails once more packets are lost than the limit
// allows of those that were sent, or of as many as are enough if that is more: then it does not matter what
// would come.
HRESULT JudgeLoss(const CSenderCounts& counts, const CLossRule& rule) noexcept;
