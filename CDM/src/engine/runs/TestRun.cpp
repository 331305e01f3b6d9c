#include "CDM/src/engine/runs/TestRun.h"

#include "CDM/src/ZebDebug.h"
#include "CDM/src/ZebTrace.h"
#include "CDM/src/engine/EngineStatus.h"
#include "CDM/src/engine/runs/RunProgress.h"
#include "CDM/src/engine/runs/Stopping.h"
#include "CDM/src/engine/runs/TestWorker.h"

#include <algorithm>

namespace
{
constexpr DWORD kEvent = WAIT_OBJECT_0;
constexpr DWORD kWorker = WAIT_OBJECT_0 + 1;
constexpr DWORD kOthersTurn = 50; // milliseconds

// The messages of a poll in their order: the string, and the statistic that is its value.
struct StatisticMessage
{
    ULONG StringID;
    ULONG (*Value)(const VormTestStatistics& statistics);
};

template <int Index>
ULONG Counter(const VormTestStatistics& statistics)
{
    return statistics.Counter[Index];
}

constexpr StatisticMessage kMessages[] = {
    {12, [](const VormTestStatistics& s) -> ULONG { return s.ByteA; }},
    {13, [](const VormTestStatistics& s) -> ULONG { return s.ByteB; }},
    {10, &Counter<7>},
    {3, &Counter<0>},
    {4, &Counter<1>},
    {5, &Counter<2>},
    {7, &Counter<4>},
    {9, &Counter<6>},
    {6, &Counter<3>},
    {8, &Counter<5>},
    {11, [](const VormTestStatistics& s) -> ULONG { return s.Word; }},
};

// A sender/responder run whose worker is in the agent.
struct CPolledRun
{
    // Polls until the run ends. S_OK when time was up or packets were enough, engine::Stopped on request, the
    // worker's status if the agent ended by itself, else why the run could not be stopped.
    HRESULT Execute(BSTR testKey, BSTR adapterKey, const CRunTiming& timing, const CRunParameters& parameters)
    {
        CRunProgress progress(timing, parameters);
        for (;;)
        {
            const DWORD woken = WaitForNews(progress.PollMilliseconds());
            if (woken == WAIT_FAILED)
            {
                ZebDebug().Write("CDiagTest::StartTest:RunDiagTest failed, WAIT_FAILED");
                Test.StopTest(&Agent, testKey); // no one else would: the worker stays behind
                return E_FAIL;
            }
            if (woken == kWorker)
            {
                const HRESULT status = Worker.Status();
                // sic: for a test that has ended well, too
                ZebDebug().Write(
                    "CDiagTest::StartTest:RunDiagTest failed, threadParameters.hrTestStatus = <%x>.", status);
                return status;
            }
            if (woken != kEvent && woken != WAIT_TIMEOUT)
                continue;

            const bool enoughPackets = Poll(adapterKey, timing, parameters);
            progress.CountPoll();
            Failed(Result.SetPercentComplete(progress.PercentComplete()),
                   "CDiagTest::StartTest:SetPercentComplete failed.");
            const StopReason reason = DecideStop(progress, enoughPackets, woken == kEvent);
            if (reason != StopReason::None)
                return Stop(testKey, reason);
        }
    }

    // A wait for event or worker that a stop of another run does not end. Until that one has been taken, the
    // event stays signalled.
    DWORD WaitForNews(DWORD milliseconds)
    {
        const ULONGLONG started = Environment.ProcessMilliseconds();
        for (DWORD left = milliseconds;;)
        {
            const DWORD woken = Environment.WaitForEither(Test.Event(), Worker.Thread(), left);
            if (woken != kEvent)
                return woken;
            const CStopSignal::Seen seen = Test.TakeStop();
            if (seen == CStopSignal::Seen::Ours)
                return kEvent;
            if (seen == CStopSignal::Seen::Others &&
                Environment.Wait(Worker.Thread(), std::min(left, kOthersTurn)) == WAIT_OBJECT_0)
                return kWorker;
            const ULONGLONG passed = Environment.ProcessMilliseconds() - started;
            if (passed >= milliseconds)
                return WAIT_TIMEOUT;
            left = milliseconds - static_cast<DWORD>(passed);
        }
    }

    // Whether enough packets have come to end a quick run.
    bool Poll(BSTR adapterKey, const CRunTiming& timing, const CRunParameters& parameters)
    {
        if (!parameters.Report)
            return false;
        VormTestStatistics statistics{};
        CResultMessages messages;
        // A poll that fails is only traced: the test goes on and must be stopped in its time.
        const HRESULT hr = WithinMemory(
            [&]
            {
                const HRESULT got = Agent.GetDiagTestStatistics(adapterKey, Test.TestID(), statistics);
                if (SUCCEEDED(got))
                    for (const StatisticMessage& message : kMessages)
                        messages.Add(message.StringID, message.Value(statistics));
                return got;
            });
        if (Failed(hr, "CDiagTest::StartTest:GetDiagTestStatistics failed hr = <%x>"))
        {
            statistics = {};
            messages = {};
        }
        Result.SetMessages(std::move(messages));
        return parameters.Quick && statistics.Counter[0] >= timing.MaxPktsRcvd;
    }

    HRESULT Stop(BSTR testKey, StopReason reason)
    {
        const HRESULT hr = EndWorker(Test, Worker, Agent, testKey, Environment);
        if (SUCCEEDED(hr))
            return reason == StopReason::Requested ? engine::Stopped : S_OK;
        // They stay if the refusal itself counts as a stop.
        CResultMessages messages;
        messages.Add(strings::Status, hr);
        Result.SetMessages(std::move(messages));
        Failed(hr, "CDiagMgr::RunTest:StopTest failed hr = <%x>"); // sic
        return hr;
    }

    CDiagTest& Test;
    CDiagAgent& Agent;
    CDiagResult& Result;
    CTestWorker& Worker;
    IRunEnvironment& Environment;
};
} // namespace

HRESULT CTestRun::Execute(const std::shared_ptr<CDiagAgent>& agent, BSTR testKey, BSTR adapterKey,
                          const CRunTiming& timing)
{
    if (m_test.SenderResponder())
        return RunOnWorker(agent, testKey, adapterKey, timing);
    const HRESULT hr = agent->RunDiagTest(adapterKey, m_test.TestID());
    Failed(hr, "CDiagTest::StartTest:RunTest failed, hr = <%x>");
    return hr;
}

HRESULT CTestRun::RunOnWorker(const std::shared_ptr<CDiagAgent>& agent, BSTR testKey, BSTR adapterKey,
                              const CRunTiming& timing)
{
    CRunParameters parameters;
    if (m_mode == 1)
    {
        const CResultData setting = m_result.Data();
        parameters.Report = setting.ReportStatusMessages != 0;
        parameters.Coverage = setting.PercentOfTestCoverage;
        parameters.Quick = setting.QuickMode != 0;
    }
    if (!CRunProgress::IsUsable(timing, parameters))
    {
        ZebDebug().Write(
            "CDiagTest::StartTest:Run timing cannot be used, TimeoutSndRsp = <%u>, CheckTime = <%u>, coverage = <%u>",
            timing.TimeoutSndRsp, timing.CheckTime, parameters.Coverage);
        return engine::UnusableTiming;
    }
    if (!EndLeftWorker(m_test, *agent, testKey, m_environment))
    {
        ZebDebug().Write("CDiagTest::StartTest:The agent is still busy with the run before");
        return HRESULT_FROM_WIN32(ERROR_BUSY);
    }
    const auto worker = std::make_shared<CTestWorker>(agent, CBstr(adapterKey), m_test.TestID());
    if (!CTestWorker::Start(worker, m_environment))
    {
        ZebDebug().Write("CDiagTest::StartTest:CreateThread failed.");
        return E_FAIL;
    }
    m_test.KeepWorker(worker);
    CPolledRun run{m_test, *agent, m_result, *worker, m_environment};
    return run.Execute(testKey, adapterKey, timing, parameters);
}
