// One test of one adapter: what it is, whether a run of it is in progress, and how it runs.
#pragma once

#include "CDM/src/engine/DiagObject.h"
#include "CDM/src/engine/DiagRecords.h"
#include "CDM/src/engine/runs/StopSignal.h"
#include "agent/Vorl.h"

#include <memory>

class CDiagAgent;
class CDiagResult;
class CTestWorker;
class IRunEnvironment;

// How a sender/responder run is paced. Read from the registry at every start of a run.
struct CRunTiming
{
    DWORD TimeoutSndRsp = 100; // seconds: the whole run at full coverage
    DWORD CheckTime = 2;       // seconds: between two polls
    DWORD MaxPktsRcvd = 200;   // packets that end a run in quick mode
};

class CDiagTest : public CDiagObject
{
  public:
    CDiagTest(BSTR key, const VormTestDescriptor& descriptor);

    ULONG TestID() const noexcept { return m_testId; }
    ULONG NameStringID() const noexcept { return 3500 + (m_testId & 15); }
    ULONG DescriptionStringID() const noexcept { return 3600 + (m_testId & 15); }
    bool SenderResponder() const noexcept { return m_senderResponder; }
    // Null for an ordinary test, and where the event could not be made.
    HANDLE Event() const noexcept { return m_stop.Event(); }
    CTestData Data() const;

    bool Locked() const noexcept { return m_stop.Locked(); }
    // engine::AlreadyLocked / engine::NotLocked: exactly one of two concurrent callers succeeds.
    HRESULT LockTest() noexcept;
    HRESULT UnlockTest() noexcept;
    // Asks the run of a test that has an event to stop: the one under way, or the one that the lock is for.
    // engine::Stopped for a test that is not locked.
    HRESULT RequestStop() noexcept { return m_stop.Request(); }
    CStopSignal::Seen TakeStop() noexcept { return m_stop.Take(); }

    CRunTiming Timing() const;

    // Runs the test to its end: S_OK passed, engine::Stopped stopped, else why it failed. `mode` 1: a
    // sender/responder run takes its parameters from `result`.
    HRESULT StartTest(const std::shared_ptr<CDiagAgent>& agent, CDiagResult& result, ULONG mode, BSTR testKey,
                      IRunEnvironment& environment);
    // Asks the agent to stop the test.
    HRESULT StopTest(CDiagAgent* agent, BSTR testKey);
    // Closes the handle of the worker that the last run left, if it left one.
    void DropWorker();
    // The worker that the last run left in the agent; null where it has come back. For when no run is going
    // on.
    std::shared_ptr<CTestWorker> LeftWorker() const;

  private:
    CRunTiming ReadTiming();
    void KeepWorker(std::shared_ptr<CTestWorker> worker);
    bool EndLeftWorker(CDiagAgent& agent, BSTR testKey, IRunEnvironment& environment);
    HRESULT RunOnWorker(const std::shared_ptr<CDiagAgent>& agent, CDiagResult& result, ULONG mode,
                        const CRunTiming& timing, BSTR testKey, BSTR adapterKey,
                        IRunEnvironment& environment);

    const ULONG m_testId;
    const bool m_senderResponder;
    std::vector<USHORT> m_characteristics;
    std::vector<USHORT> m_resourcesUsed;
    const ULONG m_value = 0;
    CStopSignal m_stop;
    CRunTiming m_timing;
    std::shared_ptr<CTestWorker> m_worker; // the last run's, where that run ended without stopping it
};
