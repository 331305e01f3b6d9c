#include "CDM/src/engine/catalogue/DiagTest.h"

#include "CDM/src/ZebDebug.h"
#include "CDM/src/ZebRegistry.h"
#include "CDM/src/ZebTrace.h"
#include "CDM/src/engine/DiagAgent.h"
#include "CDM/src/engine/naming/DiagKeys.h"

#include <utility>

namespace
{
constexpr USHORT kCharacteristicOfEveryTest = 2;
constexpr USHORT kCharacteristicOfPairedTest = 7;
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

CRunTiming CDiagTest::Timing() const
{
    const CReadScope held(Lock());
    return m_timing;
}

std::shared_ptr<CTestWorker> CDiagTest::KeepWorker(std::shared_ptr<CTestWorker> worker)
{
    const CWriteScope held(Lock());
    std::swap(m_worker, worker);
    return worker;
}

std::shared_ptr<CTestWorker> CDiagTest::Worker() const
{
    const CReadScope held(Lock());
    return m_worker;
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

HRESULT CDiagTest::StartTest(const std::shared_ptr<CDiagAgent>& agent, BSTR testKey, ITestRun& run)
{
    const CZebTrace trace("CDiagTest::StartTest");
    if (!testKey || !*testKey || !agent)
        return E_INVALIDARG;
    const CBstr adapterKey = ParseForAdapterKey(CBstr(testKey).View());
    if (!adapterKey)
        return OutOfMemory("CDiagTest::StartTest:ParseForAdapterKey failed");
    return run.Execute(agent, testKey, adapterKey.Get(), ReadTiming());
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
            Failed(hr, "CDiagTest::StopTest failed, hr = <%x>");
            return hr;
        });
}
