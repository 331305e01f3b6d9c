// How tests are stopped: when a run is, how the agent is asked and how often, and what becomes of a worker
// that does not come back.
#pragma once

#include "CDM/src/engine/DiagMap.h"
#include "CDM/src/engine/catalogue/DiagTest.h"

#include <memory>

class CActiveRuns;
class CDiagAgent;
class CRunProgress;
class CTestWorker;
class IRunEnvironment;

enum class StopReason
{
    None,
    TimeIsUp,
    EnoughPackets,
    Requested // which makes it a stopped run
};

// Decides after each poll whether a sender/responder run is stopped now.
StopReason DecideStop(const CRunProgress& progress, bool enoughPackets, bool requested) noexcept;

// Ends the run of a sender/responder test on this worker. If the agent refuses to stop it, the thread is
// ended by force, and the refusal is returned.
HRESULT EndWorker(CDiagTest& test, CTestWorker& worker, CDiagAgent& agent, BSTR testKey,
                  IRunEnvironment& environment);

// Ends the worker that the test's last run has left, because two runs of one test must not meet in the agent.
// False if the agent keeps it.
bool EndLeftWorker(CDiagTest& test, CDiagAgent& agent, BSTR testKey, IRunEnvironment& environment);

// Lets no run begin any more and stops those that are going on, and what an earlier run has left in the
// agent. Does not wait for the agent itself: what it does not end goes on, and E_FAIL is returned.
HRESULT StopAll(CActiveRuns& runs, const CDiagMap<CDiagTest>& tests, const std::shared_ptr<CDiagAgent>& agent,
                IRunEnvironment& environment);
