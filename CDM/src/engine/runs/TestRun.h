// One run of one test. An ordinary test runs on the calling thread. For a sender or responder test a worker
// sits in the agent while the calling thread polls, reports progress and stops the test when its time is up,
// when enough packets came or when someone asks.
#pragma once

#include "CDM/src/engine/catalogue/DiagTest.h"
#include "CDM/src/engine/results/DiagResult.h"
#include "CDM/src/engine/runs/RunEnvironment.h"

class CTestRun final : public ITestRun
{
  public:
    // `mode` 1: a sender/responder run takes its parameters from `result`. Everything must outlive the run.
    CTestRun(CDiagTest& test, CDiagResult& result, ULONG mode, IRunEnvironment& environment) noexcept
        : m_test(test), m_result(result), m_mode(mode), m_environment(environment)
    {
    }

    // As CDiagTest::StartTest. Throws std::bad_alloc.
    HRESULT Start(const std::shared_ptr<CDiagAgent>& agent, BSTR testKey)
    {
        return m_test.StartTest(agent, testKey, *this);
    }

    HRESULT Execute(const std::shared_ptr<CDiagAgent>& agent, BSTR testKey, BSTR adapterKey,
                    const CRunTiming& timing) override;

  private:
    HRESULT RunOnWorker(const std::shared_ptr<CDiagAgent>& agent, BSTR testKey, BSTR adapterKey,
                        const CRunTiming& timing);

    CDiagTest& m_test;
    CDiagResult& m_result;
    const ULONG m_mode;
    IRunEnvironment& m_environment;
};
