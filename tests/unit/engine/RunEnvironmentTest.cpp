#include "CDM/src/engine/runs/RunEnvironment.h"

#include "CDM/src/engine/DiagAgent.h"
#include "CDM/src/engine/runs/TestRun.h"
#include "tests/support/CaseName.h"
#include "tests/unit/engine/EngineFixture.h"

namespace
{
struct Signals
{
    const char* name;
    bool event;
    bool worker;
    DWORD woken;
};

class WaitTest : public testing::TestWithParam<Signals>
{
};

TEST_P(WaitTest, TheEventComesBeforeTheWorkersEnd)
{
    const CHandle event(CreateEventW(nullptr, TRUE, GetParam().event, nullptr));
    const CHandle worker(CreateEventW(nullptr, TRUE, GetParam().worker, nullptr));
    EXPECT_EQ(GetParam().woken, SystemRunEnvironment().WaitForEither(event.Get(), worker.Get(), 0));
}

const Signals kSignals[] = {
    {"Neither", false, false, WAIT_TIMEOUT},
    {"Event", true, false, WAIT_OBJECT_0},
    {"Worker", false, true, WAIT_OBJECT_0 + 1},
    {"Both", true, true, WAIT_OBJECT_0},
};
INSTANTIATE_TEST_SUITE_P(Signals, WaitTest, testing::ValuesIn(kSignals), NameOf<Signals>);

// Waits as the system does, but only when the worker has ended.
class CWorkerEndsFirst : public CFakeRunEnvironment
{
  public:
    DWORD WaitForEither(HANDLE event, HANDLE worker, DWORD milliseconds) override
    {
        WaitForSingleObject(worker, INFINITE);
        return SystemRunEnvironment().WaitForEither(event, worker, milliseconds);
    }
};

class TogetherTest : public CEngineTest
{
  protected:
    TogetherTest()
    {
        agent->AddAdapter(L"{aaa}", {9});
        agent->SetOutcomes(9, {E_ACCESSDENIED});
    }
    // Of a run whose agent has failed by the time of the first wait.
    HRESULT RunBesideEvent(bool signalled)
    {
        const CBstr key(L"9@{AAA}");
        CDiagTest test(key.Get(), {9, 0, 0});
        CDiagResult result(key.Get(), 0, true);
        std::shared_ptr<CDiagAgent> boundary;
        EXPECT_EQ(S_OK, CDiagAgent::Query(agent.Get(), boundary));
        CWorkerEndsFirst ended;
        if (signalled)
            SetEvent(test.Event());
        const HRESULT hr = CTestRun(test, result, 0, ended).Start(boundary, key.Get());
        eventLeft = WaitForSingleObject(test.Event(), 0);
        return hr;
    }

    DWORD eventLeft = WAIT_FAILED;
};

TEST_F(TogetherTest, ARunThatIsStoppedAsItsWorkerEndsIsAStoppedRun)
{
    EXPECT_EQ(engine::Stopped, RunBesideEvent(true));
    EXPECT_EQ(static_cast<DWORD>(WAIT_TIMEOUT), eventLeft);
    EXPECT_EQ(1, agent->Count(CFakeAgent::Method::StopTest));
    EXPECT_FALSE(trace.Has("threadParameters.hrTestStatus"));
}

TEST_F(TogetherTest, WithoutTheEventItHasTheWorkersOutcome)
{
    EXPECT_EQ(E_ACCESSDENIED, RunBesideEvent(false));
    EXPECT_EQ(0, agent->Count(CFakeAgent::Method::StopTest));
}
} // namespace
