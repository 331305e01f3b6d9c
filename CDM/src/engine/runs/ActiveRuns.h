// The runs that are going on, so that the manager can end them before it goes.
#pragma once

#include "CDM/src/engine/DiagObject.h"
#include "CDM/src/engine/catalogue/DiagTest.h"

#include <memory>
#include <vector>

class CActiveRuns
{
  public:
    // Throws std::bad_alloc.
    bool Enter(std::shared_ptr<CDiagTest> test); // false once Close was called
    void Leave(const CDiagTest* test) noexcept;
    void Close() noexcept
    {
        const CWriteScope held(m_lock);
        m_closed = true;
    }
    std::vector<std::shared_ptr<CDiagTest>> Running()
    {
        const CReadScope held(m_lock);
        return m_tests;
    }
    // Signalled while no run is going on.
    HANDLE Idle() const noexcept { return m_idle.Get(); }

  private:
    CSharedLock m_lock;
    bool m_closed = false;
    std::vector<std::shared_ptr<CDiagTest>> m_tests;
    CHandle m_idle{CreateEventW(nullptr, TRUE, TRUE, nullptr)};
};

// One run, from its start to its end.
class CActiveRun
{
  public:
    CActiveRun(CActiveRuns& runs, const std::shared_ptr<CDiagTest>& test)
        : m_runs(runs), m_test(test.get()), m_entered(runs.Enter(test))
    {
    }
    ~CActiveRun()
    {
        if (m_entered)
            m_runs.Leave(m_test);
    }
    CActiveRun(const CActiveRun&) = delete;
    CActiveRun& operator=(const CActiveRun&) = delete;

    bool Entered() const noexcept { return m_entered; }

  private:
    CActiveRuns& m_runs;
    const CDiagTest* m_test;
    const bool m_entered;
};
