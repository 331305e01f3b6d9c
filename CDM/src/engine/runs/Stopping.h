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

// The stop of one sender/responder test. Everything must outlive the object.
class CStopping
{
  public:
    CStopping(CDiagTest& test, CDiagAgent& agent, BSTR testKey, IRunEnvironment& environment) noexcept
        : m_test(test), m_agent(agent), m_testKey(testKey), m_environment(environment)
    {
    }

    // Ends the run of this worker. If the agent refuses to stop it, the thread is ended by force, and the
    // refusal is returned.
    HRESULT EndWorker(CTestWorker& worker);
    // Ends the worker that the run before has left, because two runs of one test must not meet in the agent.
    // False if the agent keeps it.
    bool EndLeftWorker();

  private:
    void DropWorker();

    CDiagTest& m_test;
    CDiagAgent& m_agent;
    const BSTR m_testKey;
    IRunEnvironment& m_environment;
};

// Lets no run begin any more and stops those that are going on, and what an earlier run has left in the
// agent. Does not wait for the agent itself: what it does not end goes on, and E_FAIL is returned.
HRESULT StopAll(CActiveRuns& runs, const CDiagMap<CDiagTest>& tests, const std::shared_ptr<CDiagAgent>& agent,
                IRunEnvironment& environment);
