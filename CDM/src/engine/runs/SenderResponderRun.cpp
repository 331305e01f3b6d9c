#include "CDM/src/engine/runs/SenderResponderRun.h"

#include "CDM/src/ZebDebug.h"
#include "CDM/src/engine/EngineBoundary.h"
#include "CDM/src/engine/EngineStatus.h"

#include <algorithm>
#include <limits>

namespace
{
constexpr int kStopAttempts = 4;
constexpr DWORD kBetweenStops = 5000; // milliseconds
constexpr DWORD kEvent = WAIT_OBJECT_0;
constexpr DWORD kWorker = WAIT_OBJECT_0 + 1;
constexpr DWORD kOthersTurn = 50; // milliseconds

constexpr ULONG kStatusMessage = 0; // the string whose value is a status

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

ULONGLONG Total(const CRunTiming& timing, const CRunParameters& parameters) noexcept
{
    return static_cast<ULONGLONG>(parameters.Coverage) * timing.TimeoutSndRsp / 100;
}
} // namespace

CSenderResponderRun::CSenderResponderRun(CDiagTest& test, const CRunTiming& timing, CDiagAgent& agent,
                                         CDiagResult& result, CTestWorker& worker,
                                         IRunEnvironment& environment)
    : m_test(test), m_agent(agent), m_result(result), m_worker(worker), m_environment(environment),
      m_timing(timing)
{
}

bool CSenderResponderRun::IsUsable(const CRunTiming& timing, const CRunParameters& parameters) noexcept
{
    constexpr ULONGLONG kLimit = std::numeric_limits<LONG>::max();
    const ULONGLONG total = Total(timing, parameters);
    if (total == 0 || timing.CheckTime == 0)
        return false;
    if (static_cast<ULONGLONG>(parameters.Coverage) * timing.TimeoutSndRsp > kLimit ||
        static_cast<ULONGLONG>(timing.CheckTime) * 1000 > kLimit)
        return false;
    const ULONGLONG polls = (total + timing.CheckTime - 1) / timing.CheckTime;
    return polls * timing.CheckTime * 100 <= kLimit;
}

HRESULT CSenderResponderRun::Execute(BSTR testKey, BSTR adapterKey, const CRunParameters& parameters)
{
    const LONG checkTime = static_cast<LONG>(m_timing.CheckTime);
    const LONG total = static_cast<LONG>(Total(m_timing, parameters));
    LONG elapsed = 0;
    for (;;)
    {
        const DWORD woken = WaitForNews(checkTime * 1000);
        if (woken == WAIT_FAILED)
        {
            ZebDebug().Write("CDiagTest::StartTest:RunDiagTest failed, WAIT_FAILED");
            m_test.StopTest(&m_agent, testKey); // nobody else would: the worker stays behind
            return E_FAIL;
        }
        if (woken == kWorker)
        {
            const HRESULT status = m_worker.Status();
            // Written for a test that has ended well, too: support knows it so.
            ZebDebug().Write("CDiagTest::StartTest:RunDiagTest failed, threadParameters.hrTestStatus = <%x>.",
                             status);
            return status;
        }
        const bool requested = woken == kEvent;
        if (!requested && woken != WAIT_TIMEOUT)
            continue;

        const bool enoughPackets = Poll(adapterKey, parameters);
        elapsed += checkTime;
        if (FAILED(m_result.SetPercentComplete(elapsed * 100 / total)))
            ZebDebug().Write("CDiagTest::StartTest:SetPercentComplete failed.");
        if (elapsed >= total || enoughPackets || requested)
            return Stop(testKey, requested);
    }
}

// A wait for event or worker that a stop of somebody else's run does not end. Until that one has been taken,
// the event stays signalled.
DWORD CSenderResponderRun::WaitForNews(DWORD milliseconds)
{
    const ULONGLONG started = m_environment.ProcessMilliseconds();
    for (DWORD left = milliseconds;;)
    {
        const DWORD woken = m_environment.WaitForEither(m_test.Event(), m_worker.Thread(), left);
        if (woken != kEvent)
            return woken;
        const CStopSignal::Seen seen = m_test.TakeStop();
        if (seen == CStopSignal::Seen::Ours)
            return kEvent;
        if (seen == CStopSignal::Seen::Others &&
            m_environment.Wait(m_worker.Thread(), std::min(left, kOthersTurn)) == WAIT_OBJECT_0)
            return kWorker;
        const ULONGLONG passed = m_environment.ProcessMilliseconds() - started;
        if (passed >= milliseconds)
            return WAIT_TIMEOUT;
        left = milliseconds - static_cast<DWORD>(passed);
    }
}

// Whether enough packets have come to end a quick run.
bool CSenderResponderRun::Poll(BSTR adapterKey, const CRunParameters& parameters)
{
    if (!parameters.Report)
        return false;
    VormTestStatistics statistics{};
    CResultMessages messages;
    // A poll that fails is only traced: the test goes on and must be stopped in its time.
    const HRESULT hr = WithinMemory(
        [&]
        {
            const HRESULT got = m_agent.GetDiagTestStatistics(adapterKey, m_test.TestID(), statistics);
            if (SUCCEEDED(got))
                for (const StatisticMessage& message : kMessages)
                    messages.Add(message.StringID, message.Value(statistics));
            return got;
        });
    if (FAILED(hr))
    {
        ZebDebug().Write("CDiagTest::StartTest:GetDiagTestStatistics failed hr = <%x>", hr);
        statistics = {};
        messages = {};
    }
    m_result.SetMessages(std::move(messages));
    return parameters.Quick && statistics.Counter[0] >= m_timing.MaxPktsRcvd;
}

HRESULT CSenderResponderRun::Stop(BSTR testKey, bool requested)
{
    HRESULT hr = m_test.StopTest(&m_agent, testKey);
    for (int attempt = 1; FAILED(hr) && attempt < kStopAttempts; ++attempt)
    {
        m_environment.WaitForEither(m_test.Event(), m_worker.Thread(), kBetweenStops);
        hr = m_test.StopTest(&m_agent, testKey);
    }
    if (FAILED(hr))
        return GiveUp(hr);
    // This line and those of GiveUp name CDiagMgr::RunTest: support knows them so.
    if (m_environment.Wait(m_worker.Thread(), INFINITE) == WAIT_FAILED)
        ZebDebug().Write("CDiagMgr::RunTest:WaitForSingleObject failed");
    m_test.DropWorker();
    return requested ? engine::Stopped : S_OK;
}

// The agent does not stop: the thread is ended by force and the run has failed.
HRESULT CSenderResponderRun::GiveUp(HRESULT stopStatus)
{
    m_worker.Terminate();
    m_test.DropWorker();
    CResultMessages messages;
    messages.Add(kStatusMessage, stopStatus);
    m_result.SetMessages(std::move(messages));
    // The step that the text names is another one: support knows it so.
    if (FAILED(m_result.SetTestState(TestStateFailed)))
        ZebDebug().Write("CDiagMgr::RunTest:SetStatus failed.");
    const SYSTEMTIME now = m_environment.LocalTime();
    m_result.SetCompletionTime(now);
    m_result.SetTimeStamp(now);
    if (FAILED(m_result.SetPercentComplete(0)))
        ZebDebug().Write("CDiagMgr::RunTest:SetPercentComplete2 failed.");
    ZebDebug().Write("CDiagMgr::RunTest:StopTest failed hr = <%x>", stopStatus);
    return stopStatus;
}
