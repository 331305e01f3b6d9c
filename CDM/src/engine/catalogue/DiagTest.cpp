#include "CDM/src/engine/catalogue/DiagTest.h"

#include "CDM/src/ZebDebug.h"
#include "CDM/src/ZebRegistry.h"
#include "CDM/src/ZebTrace.h"
#include "CDM/src/engine/EngineBoundary.h"
#include "CDM/src/engine/EngineStatus.h"
#include "CDM/src/engine/naming/DiagKeys.h"
#include "CDM/src/engine/naming/References.h"
#include "CDM/src/engine/runs/SenderResponderRun.h"

#include <utility>

namespace
{
constexpr USHORT kCharacteristicOfEveryTest = 2;
constexpr USHORT kCharacteristicOfPairedTest = 7;

constexpr int kStopAttempts = 4;
constexpr DWORD kBetweenStops = 5000; // milliseconds
} // namespace

CDiagTest::CDiagTest(BSTR key, const VormTestDescriptor& descriptor)
    : CDiagObject(key), m_testId(descriptor.TestID),
      m_senderResponder(IsSenderResponder(descriptor.TestID)), m_characteristics{kCharacteristicOfEveryTest}
{
    if (!m_senderResponder)
        return;
    m_characteristics.push_back(kCharacteristicOfPairedTest);
    if (!m_stop.Create())
        ZebDebug().Write("CDiagTest::CDiagTest:CreateEvent failed.");
}

CTestData CDiagTest::Data() const
{
    CTestData data;
    data.TestID = m_testId;
    data.NameStringID = NameStringID();
    data.Key = Key();
    data.DescriptionStringID = DescriptionStringID();
    data.Characteristics = m_characteristics;
    data.Value = m_value;
    data.Locked = Locked() ? 1 : 0;
    data.ResourcesUsed = m_resourcesUsed;
    data.Event = Event();
    data.SenderResponder = m_senderResponder ? 1 : 0;
    return data;
}

HRESULT CDiagTest::LockTest() noexcept
{
    return m_stop.Lock() ? S_OK : engine::AlreadyLocked;
}

HRESULT CDiagTest::UnlockTest() noexcept
{
    return m_stop.Unlock() ? S_OK : engine::NotLocked;
}

CRunTiming CDiagTest::Timing() const
{
    const CReadScope held(Lock());
    return m_timing;
}

void CDiagTest::KeepWorker(std::shared_ptr<CTestWorker> worker)
{
    const CWriteScope held(Lock());
    std::swap(m_worker, worker);
}

void CDiagTest::DropWorker()
{
    std::shared_ptr<CTestWorker> worker;
    {
        const CWriteScope held(Lock());
        std::swap(m_worker, worker);
    }
    if (worker)
        worker->CloseThread();
}

std::shared_ptr<CTestWorker> CDiagTest::LeftWorker() const
{
    std::shared_ptr<CTestWorker> worker;
    {
        const CReadScope held(Lock());
        worker = m_worker;
    }
    const bool atWork = worker && WaitForSingleObject(worker->Thread(), 0) == WAIT_TIMEOUT;
    return atWork ? worker : nullptr;
}

// Two runs of one test must not meet in the agent.
bool CDiagTest::EndLeftWorker(CDiagAgent& agent, BSTR testKey, IRunEnvironment& environment)
{
    std::shared_ptr<CTestWorker> left = LeftWorker();
    for (int attempt = 0; left && attempt < kStopAttempts; ++attempt)
    {
        StopTest(&agent, testKey);
        environment.Wait(left->Thread(), kBetweenStops);
        left = LeftWorker();
    }
    if (!left)
        DropWorker();
    return !left;
}

CRunTiming CDiagTest::ReadTiming()
{
    CRunTiming timing;
    CRegKey key;
    if (RegOpenKeyExA(HKEY_LOCAL_MACHINE, kZebDiagKey, 0, KEY_QUERY_VALUE, key.Put()) == ERROR_SUCCESS)
    {
        ReadNumber(key.Get(), "TimeoutSndRsp", timing.TimeoutSndRsp);
        ReadNumber(key.Get(), "CheckTime", timing.CheckTime);
        ReadNumber(key.Get(), "MaxPktsRcvd", timing.MaxPktsRcvd);
    }
    const CWriteScope held(Lock());
    m_timing = timing;
    return timing;
}

HRESULT CDiagTest::StartTest(const std::shared_ptr<CDiagAgent>& agent, CDiagResult& result, ULONG mode,
                             BSTR testKey, IRunEnvironment& environment)
{
    const CZebTrace trace("CDiagTest::StartTest");
    if (!testKey || !*testKey || !agent)
        return E_INVALIDARG;
    const CBstr adapterKey = ParseForAdapterKey(CBstr(testKey).View());
    if (!adapterKey)
    {
        ZebDebug().Write("CDiagTest::StartTest:ParseForAdapterKey failed");
        return wmi::OutOfMemory;
    }
    const CRunTiming timing = ReadTiming();
    if (m_senderResponder)
        return RunOnWorker(agent, result, mode, timing, testKey, adapterKey.Get(), environment);

    const HRESULT hr = agent->RunDiagTest(adapterKey.Get(), m_testId);
    if (FAILED(hr))
        ZebDebug().Write("CDiagTest::StartTest:RunTest failed, hr = <%x>", hr);
    return hr;
}

HRESULT CDiagTest::RunOnWorker(const std::shared_ptr<CDiagAgent>& agent, CDiagResult& result, ULONG mode,
                               const CRunTiming& timing, BSTR testKey, BSTR adapterKey,
                               IRunEnvironment& environment)
{
    CRunParameters parameters;
    if (mode == 1)
    {
        const CResultData setting = result.Data();
        parameters.Report = setting.ReportStatusMessages != 0;
        parameters.Coverage = setting.PercentOfTestCoverage;
        parameters.Quick = setting.QuickMode != 0;
    }
    if (!CSenderResponderRun::IsUsable(timing, parameters))
    {
        ZebDebug().Write("CDiagTest::StartTest:Run timing cannot be used, TimeoutSndRsp = <%u>, "
                         "CheckTime = <%u>, coverage = <%u>",
                         timing.TimeoutSndRsp, timing.CheckTime, parameters.Coverage);
        return engine::UnusableTiming;
    }
    if (!EndLeftWorker(*agent, testKey, environment))
    {
        ZebDebug().Write("CDiagTest::StartTest:The agent is still busy with the run before");
        return HRESULT_FROM_WIN32(ERROR_BUSY);
    }
    const auto worker = std::make_shared<CTestWorker>(agent, CBstr(adapterKey), m_testId);
    if (!CTestWorker::Start(worker, environment))
    {
        ZebDebug().Write("CDiagTest::StartTest:CreateThread failed.");
        return E_FAIL;
    }
    KeepWorker(worker);
    return CSenderResponderRun(*this, timing, *agent, result, *worker, environment)
        .Execute(testKey, adapterKey, parameters);
}

HRESULT CDiagTest::StopTest(CDiagAgent* agent, BSTR testKey)
{
    const CZebTrace trace("CDiagTest::StopTest");
    if (!testKey || !*testKey || !agent)
        return E_INVALIDARG;
    return WithinMemory(
        [&]
        {
            const CBstr adapterKey = ParseForAdapterKey(CBstr(testKey).View());
            if (!adapterKey)
                return wmi::OutOfMemory;
            const HRESULT hr = agent->StopTest(adapterKey.Get(), m_testId);
            if (FAILED(hr))
                ZebDebug().Write("CDiagTest::StopTest failed, hr = <%x>", hr);
            return hr;
        });
}
