// One test of one adapter: what it is, whether it is in use, and the signal that stops its run.
#pragma once

#include "CDM/src/engine/DiagObject.h"
#include "CDM/src/engine/DiagRecords.h"
#include "CDM/src/engine/EngineStatus.h"
#include "CDM/src/engine/catalogue/StopSignal.h"
#include "agent/AgentCodes.h"
#include "agent/Vorl.h"

#include <memory>

class CDiagAgent;
class CTestWorker;

// How a sender/responder run is paced. Read from the registry at every start of a run.
struct CRunTiming
{
    DWORD TimeoutSndRsp = 100; // seconds: the whole run at full coverage
    DWORD CheckTime = 2;       // seconds: between two polls
    DWORD MaxPktsRcvd = 200;   // packets that end a run in quick mode
};

// How a test is run, which the test itself does not know.
class ITestRun
{
  public:
    virtual HRESULT Execute(const std::shared_ptr<CDiagAgent>& agent, BSTR testKey, BSTR adapterKey,
                            const CRunTiming& timing) = 0;

  protected:
    ~ITestRun() = default;
};

class CDiagTest : public CDiagObject
{
  public:
    CDiagTest(BSTR key, const VormTestDescriptor& descriptor);

    ULONG TestID() const noexcept { return m_testId; }
    ULONG NameStringID() const noexcept { return vorl::NameString(m_testId); }
    ULONG DescriptionStringID() const noexcept { return strings::TestDescription + (m_testId & 15); }
    bool SenderResponder() const noexcept { return m_senderResponder; }
    // Null for an ordinary test, and if the event could not be made.
    HANDLE Event() const noexcept { return m_stop.Event(); }
    CTestData Data() const;

    bool Locked() const noexcept { return m_stop.Locked(); }
    // engine::AlreadyLocked / engine::NotLocked: exactly one of two concurrent callers succeeds.
    HRESULT LockTest() noexcept { return m_stop.Lock() ? S_OK : engine::AlreadyLocked; }
    HRESULT UnlockTest() noexcept { return m_stop.Unlock() ? S_OK : engine::NotLocked; }
    // Asks the run of a test that has an event to stop: the one under way, or the one that the lock is for.
    // engine::Stopped for a test that is not locked.
    HRESULT RequestStop() noexcept { return m_stop.Request(); }
    CStopSignal::Seen TakeStop() noexcept { return m_stop.Take(); }

    // Has the test run to its end, with timing that is read anew: S_OK passed, engine::Stopped stopped, else
    // why it failed.
    HRESULT StartTest(const std::shared_ptr<CDiagAgent>& agent, BSTR testKey, ITestRun& run);
    // Asks the agent to stop the test.
    HRESULT StopTest(CDiagAgent* agent, BSTR testKey);

    // Of the last start.
    CRunTiming Timing() const;
    // The last sender/responder run's worker, if that run ended without it. Gives back the one before.
    std::shared_ptr<CTestWorker> KeepWorker(std::shared_ptr<CTestWorker> worker);
    std::shared_ptr<CTestWorker> Worker() const;

  private:
    CRunTiming ReadTiming();

    const ULONG m_testId;
    const bool m_senderResponder;
    std::vector<USHORT> m_characteristics;
    std::vector<USHORT> m_resourcesUsed;
    const ULONG m_value = 0;
    CStopSignal m_stop;
    CRunTiming m_timing;
    std::shared_ptr<CTestWorker> m_worker;
};
