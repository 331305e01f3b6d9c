// One run of a responder: answers until it is stopped, and then for as long as a sender that is about to end
// its own run still sends.
#pragma once

#include "agent/host/stamp/Measurement.h"
#include "agent/host/stamp/Reflector.h"

struct CResponderPlan
{
    CStampMac* Mac = nullptr; // null without authentication
    USHORT Port = 0;          // in the network's order
    DWORD WaitForSender = 0;  // seconds; 0 is for ever
    CReflectorLimits Limits;
};

// S_OK once it was stopped. The line has the adapter's addresses.
HRESULT RunResponder(IStampLine& line, const CResponderPlan& plan, CMeasurement& measurement);
