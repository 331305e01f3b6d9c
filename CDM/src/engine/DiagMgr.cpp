#include "CDM/src/engine/DiagMgr.h"

#include "CDM/src/ZebDebug.h"
#include "CDM/src/ZebTrace.h"
#include "CDM/src/engine/DiagMgrState.h"
#include "CDM/src/engine/EngineBoundary.h"
#include "Common/src/com/ComBoundary.h"

namespace
{
// Asks a map for an object; `trace` is the text of the operation that asks.
template <class T>
std::shared_ptr<T> Find(const CDiagMap<T>& map, BSTR key, const char* trace, HRESULT& hr)
{
    std::shared_ptr<T> object;
    hr = map.GetObj(key, object);
    if (FAILED(hr))
        ZebDebug().Write(trace, hr);
    return object;
}

template <class T>
HRESULT Enumerate(const CDiagMap<T>& map, CVormArray<BSTR>& keys, const char* trace)
{
    const HRESULT hr = WithinMemory([&] { return map.EnumObj(keys); });
    if (FAILED(hr))
        ZebDebug().Write(trace, hr);
    return hr;
}
} // namespace

CDiagMgr::CState::CState(const CHostPaths& hostPaths, const CEngineSeams& seams)
    : paths(hostPaths), environment(seams.run ? *seams.run : SystemRunEnvironment()),
      files(seams.store ? *seams.store : PlatformStoreFiles())
{
}

CDiagMgr::CDiagMgr(const CHostPaths& paths, const CEngineSeams& seams)
    : m_state(std::make_shared<CState>(paths, seams))
{
}

CDiagMgr::~CDiagMgr()
{
    if (FAILED(AtComBoundary([&] { return m_state->EndRuns(); })))
        ZebDebug().Write("CDiagMgr::~CDiagMgr: a run could not be ended");
    const HRESULT hr = AtComBoundary([&] { return m_state->StoreResults(); });
    if (FAILED(hr))
        ZebDebug().Write("CDiagMgr::~CDiagMgr:StoreResults failed, hr = <%x>", hr);
}

HRESULT CDiagMgr::EnumTests(CVormArray<BSTR>& keys)
{
    return Enumerate(m_state->tests, keys, "CDiagMgr::EnumTests:EnumObj failed, hr = <%x>");
}

HRESULT CDiagMgr::EnumSettings(CVormArray<BSTR>& keys)
{
    return Enumerate(m_state->settings, keys, "CDiagMgr::EnumSettings:EnumObj failed, hr = <%x>");
}

HRESULT CDiagMgr::EnumResults(CVormArray<BSTR>& keys)
{
    return m_state->EnumResults(keys);
}

HRESULT CDiagMgr::CState::EnumResults(CVormArray<BSTR>& keys) const
{
    const CZebTrace trace("CDiagMgr::EnumResults");
    return Enumerate(results, keys, "CDiagMgr::EnumResults:EnumObj failed, hr = <%x>");
}

HRESULT CDiagMgr::GetTestData(BSTR testKey, CTestData* data)
{
    if (!data)
        return E_POINTER;
    return WithinMemory(
        [&]
        {
            HRESULT hr = S_OK;
            const auto test =
                Find(m_state->tests, testKey, "CDiagMgr::GetTestData:GetObj failed, hr = <%x>", hr);
            if (test)
                *data = test->Data();
            return hr;
        });
}

HRESULT CDiagMgr::GetSettingData(BSTR testKey, CSettingData* data)
{
    if (!data)
        return E_POINTER;
    return WithinMemory([&] { return m_state->GetSettingData(testKey, *data); });
}

HRESULT CDiagMgr::CState::GetSettingData(BSTR testKey, CSettingData& data) const
{
    HRESULT hr = S_OK;
    const auto setting = Find(settings, testKey, "CDiagMgr::GetSettingData:GetObj failed, hr = <%x>", hr);
    if (setting)
        data = setting->Data();
    return hr;
}

HRESULT CDiagMgr::GetResultData(BSTR testKey, CResultData* data)
{
    if (!data)
        return E_POINTER;
    return WithinMemory([&] { return m_state->GetResultData(testKey, *data); });
}

HRESULT CDiagMgr::CState::GetResultData(BSTR testKey, CResultData& data) const
{
    HRESULT hr = S_OK;
    const auto result = Find(results, testKey, "CDiagMgr::GetResultData:GetObj failed, hr = <%x>", hr);
    if (result)
        data = result->Data();
    return hr;
}

BOOL CDiagMgr::SettingExists(BSTR settingKey)
{
    std::shared_ptr<CDiagSetting> setting;
    return WithinMemory([&] { return m_state->settings.GetObj(settingKey, setting); }) == S_OK;
}

BOOL CDiagMgr::ResultExists(BSTR resultKey)
{
    std::shared_ptr<CDiagResult> result;
    return WithinMemory([&] { return m_state->results.GetObj(resultKey, result); }) == S_OK;
}

HRESULT CDiagMgr::LockTest(BSTR testKey)
{
    return WithinMemory(
        [&]
        {
            HRESULT hr = S_OK;
            const auto test =
                Find(m_state->tests, testKey, "CDiagMgr::LockTest:GetObj failed, hr = <%x>", hr);
            return test ? test->LockTest() : hr;
        });
}

// An unknown key is traced with the text of LockTest: support knows it so.
HRESULT CDiagMgr::UnlockTest(BSTR testKey)
{
    return WithinMemory(
        [&]
        {
            HRESULT hr = S_OK;
            const auto test =
                Find(m_state->tests, testKey, "CDiagMgr::LockTest:GetObj failed, hr = <%x>", hr);
            return test ? test->UnlockTest() : hr;
        });
}
