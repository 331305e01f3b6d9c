#include "CDM/src/engine/DiagMgr.h"

#include "CDM/src/ZebTrace.h"
#include "CDM/src/engine/EngineStatus.h"
#include "CDM/src/engine/catalogue/Catalogue.h"
#include "CDM/src/engine/results/Results.h"
#include "CDM/src/engine/results/store/StoreFiles.h"
#include "CDM/src/engine/runs/RunEnvironment.h"
#include "CDM/src/engine/runs/Runs.h"
#include "Common/src/com/ComBoundary.h"

// Shared with the runs that are going on: one that cannot be ended while the manager goes keeps what it works
// with.
struct CDiagMgr::CState
{
    CState(const CHostPaths& paths, const CEngineSeams& seams)
        : results(paths, seams.store ? *seams.store : PlatformStoreFiles(), catalogue),
          runs(catalogue, results, seams.run ? *seams.run : SystemRunEnvironment())
    {
    }

    CCatalogue catalogue;
    CResults results;
    CRuns runs;
};

CDiagMgr::CDiagMgr(const CHostPaths& paths, const CEngineSeams& seams)
    : m_state(std::make_shared<CState>(paths, seams))
{
}

CDiagMgr::~CDiagMgr()
{
    Failed(AtComBoundary([&] { return m_state->runs.EndAll(); }),
           "CDiagMgr::~CDiagMgr: a run could not be ended");
    Failed(AtComBoundary([&] { return m_state->results.StoreAll(); }),
           "CDiagMgr::~CDiagMgr:StoreResults failed, hr = <%x>");
}

HRESULT CDiagMgr::Initialize(const CVormAgentMgr* agents)
{
    return WithinMemory(
        [&]
        {
            CCatalogue& catalogue = m_state->catalogue;
            CResults& results = m_state->results;
            HRESULT hr = catalogue.Connect(agents);
            if (SUCCEEDED(hr))
                hr = catalogue.CreateTests();
            if (SUCCEEDED(hr))
                hr = results.Create();
            if (SUCCEEDED(hr))
                hr = catalogue.CreateSettings();
            if (FAILED(hr))
                return hr;
            CVormArray<BSTR> adapters;
            hr = catalogue.Agent()->EnumAdapters(adapters);
            if (Failed(hr, "CDiagMgr::Initialize:EnumAdapters failed, hr = <%x>"))
                return hr;
            CStoreSession store = results.OpenStore(CStoreSession::Purpose::Read);
            hr = catalogue.Fill(adapters,
                                [&](BSTR adapterKey, BSTR testKey, const VormTestDescriptor& descriptor)
                                { return results.AddStored(adapterKey, testKey, descriptor, store); });
            return SUCCEEDED(hr) ? results.ReadConfiguration() : hr;
        });
}

HRESULT CDiagMgr::EnumTests(CVormArray<BSTR>& keys)
{
    return EnumKeys(m_state->catalogue.Tests(), "CDiagMgr::EnumTests:EnumObj failed, hr = <%x>", keys);
}

HRESULT CDiagMgr::EnumSettings(CVormArray<BSTR>& keys)
{
    return EnumKeys(m_state->catalogue.Settings(), "CDiagMgr::EnumSettings:EnumObj failed, hr = <%x>", keys);
}

HRESULT CDiagMgr::EnumResults(CVormArray<BSTR>& keys)
{
    return m_state->results.Enum(keys);
}

HRESULT CDiagMgr::GetTestData(BSTR testKey, CTestData* data)
{
    return ReadObject(m_state->catalogue.Tests(), testKey, "CDiagMgr::GetTestData:GetObj failed, hr = <%x>",
                      data);
}

HRESULT CDiagMgr::GetSettingData(BSTR testKey, CSettingData* data)
{
    return m_state->catalogue.GetSettingData(testKey, data);
}

HRESULT CDiagMgr::GetResultData(BSTR testKey, CResultData* data)
{
    return m_state->results.GetData(testKey, data);
}

BOOL CDiagMgr::SettingExists(BSTR settingKey)
{
    return m_state->catalogue.Settings().Contains(settingKey);
}

BOOL CDiagMgr::ResultExists(BSTR resultKey)
{
    return m_state->results.Exists(resultKey);
}

HRESULT CDiagMgr::LockTest(BSTR testKey)
{
    return WithObject(m_state->catalogue.Tests(), testKey, "CDiagMgr::LockTest:GetObj failed, hr = <%x>",
                      [](CDiagTest& test) { return test.LockTest(); });
}

HRESULT CDiagMgr::UnlockTest(BSTR testKey)
{
    return WithObject(m_state->catalogue.Tests(), testKey,
                      "CDiagMgr::LockTest:GetObj failed, hr = <%x>", // sic
                      [](CDiagTest& test) { return test.UnlockTest(); });
}

HRESULT CDiagMgr::RunTest(BSTR testKey, CBstr& resultKey, ULONG mode)
{
    const CZebTrace trace("CDiagMgr::RunTest");
    const std::shared_ptr<CState> state = m_state; // the run may outlive the manager
    return state->runs.RunTest(testKey, resultKey, mode);
}

HRESULT CDiagMgr::StopTest(BSTR testKey)
{
    return m_state->runs.StopTest(testKey);
}

HRESULT CDiagMgr::SignalStop(BSTR testKey)
{
    return m_state->runs.SignalStop(testKey);
}

HRESULT CDiagMgr::UpdateSetting(BSTR settingKey, CWomClassObject& instance)
{
    return m_state->catalogue.UpdateSetting(settingKey, instance);
}

HRESULT CDiagMgr::ClearResults(BSTR resultKey)
{
    return WithinMemory([&] { return m_state->results.Clear(resultKey); });
}

HRESULT CDiagMgr::LogResults(BSTR resultKey)
{
    return WithinMemory([&] { return m_state->results.Log(resultKey); });
}
