// One run of a sender or responder test: a worker thread sits in the agent while the starting thread polls,
// reports progress and stops the test when its time is up, when enough packets came or when somebody asks.
#pragma once

#include "CDM/src/engine/catalogue/DiagTest.h"
#include "CDM/src/engine/results/DiagResult.h"
#include "CDM/src/engine/runs/RunEnvironment.h"
#include "CDM/src/engine/runs/TestWorker.h"

#include <memory>

struct CRunParameters
{
    bool Report = true;  // statistics become messages of the result
    BYTE Coverage = 100; // percent of the whole length
    bool Quick = true;   // enough packets end the run
};

class CSenderResponderRun
{
  public:
    // `timing` must be usable. Everything must outlive the run, which happens on the calling thread.
    CSenderResponderRun(CDiagTest& test, const CRunTiming& timing, CDiagAgent& agent, CDiagResult& result,
                        CTestWorker& worker, IRunEnvironment& environment);

    // Whether the run can be computed with: nothing divides by zero, nothing leaves 32 bits.
    static bool IsUsable(const CRunTiming& timing, const CRunParameters& parameters) noexcept;

    // Polls until the run ends. S_OK when time was up or packets were enough, engine::Stopped on request, the
    // worker's status where the agent ended by itself, else why the run could not be stopped.
    HRESULT Execute(BSTR testKey, BSTR adapterKey, const CRunParameters& parameters);

  private:
    DWORD WaitForNews(DWORD milliseconds);
    bool Poll(BSTR adapterKey, const CRunParameters& parameters);
    HRESULT Stop(BSTR testKey, bool requested);
    HRESULT GiveUp(HRESULT stopStatus);

    CDiagTest& m_test;
    CDiagAgent& m_agent;
    CDiagResult& m_result;
    CTestWorker& m_worker;
    IRunEnvironment& m_environment;
    const CRunTiming m_timing;
};
