#include "CDM/src/engine/runs/Runs.h"

#include "CDM/src/ZebTrace.h"
#include "CDM/src/engine/EngineStatus.h"
#include "CDM/src/engine/naming/DiagKeys.h"
#include "CDM/src/engine/runs/RunOutcome.h"
#include "CDM/src/engine/runs/Stopping.h"
#include "CDM/src/engine/runs/TestRun.h"

namespace
{
bool IsEmpty(BSTR key) noexcept
{
    return !key || !*key;
}
} // namespace

HRESULT CRuns::RunTest(BSTR testKey, CBstr& resultKey, ULONG mode)
{
    if (IsEmpty(testKey) || IsEmpty(resultKey.Get()))
        return E_INVALIDARG;
    return WithinMemory(
        [&]
        {
            resultKey = FoldedKey(resultKey.Get());
            return Run(FoldedKey(testKey).Get(), resultKey.Get(), mode);
        });
}

HRESULT CRuns::Run(BSTR testKey, BSTR resultKey, ULONG mode)
{
    std::shared_ptr<CDiagTest> test;
    HRESULT hr = m_catalogue.Tests().GetObj(testKey, test);
    if (Failed(hr, "CDiagMgr::RunTest:GetObj for DiagTest failed, hr = <%x>"))
        return hr;
    const CActiveRun run(m_active, test);
    if (!run.Entered())
        return engine::Stopped;
    std::shared_ptr<CDiagResult> result;
    hr = m_results.TakeForRun(*test, resultKey, result);
    if (FAILED(hr))
        return hr;
    result->SetChanged();
    const ULONGLONG started = m_environment.ProcessMilliseconds();
    hr = BeginResult(testKey, *result);
    if (FAILED(hr))
        return hr;

    const HRESULT status = WithinMemory(
        [&] { return CTestRun(*test, *result, mode, m_environment).Start(m_catalogue.Agent(), testKey); });

    m_results.FileAgain(resultKey, result);
    result->SetChanged();
    hr = CompleteResult(OutcomeOf(status, *test), *test, m_environment.ProcessMilliseconds() - started,
                        m_environment, *result);
    m_results.StoreAfterRun(resultKey);
    if (SUCCEEDED(hr) && m_results.LogEnabled())
        Failed(WithinMemory([&] { return m_results.Log(resultKey); }),
               "CDiagMgr::RunTest:LogResults failed.");
    return hr;
}

HRESULT CRuns::BeginResult(BSTR testKey, CDiagResult& result)
{
    const auto setting = TryMake<CSettingData>();
    if (!setting)
        return OutOfMemory("CDiagMgr::RunTest:Cannot allocate memory for SettingData");
    HRESULT hr = result.SetTestState(TestStateInProgress);
    if (Failed(hr, "CDiagMgr::RunTest:AddObj failed, hr = <%x>")) // sic
        return hr;
    result.SetStartTime(m_environment.LocalTime());
    result.RemoveCompletionTime();
    hr = result.SetPercentComplete(0);
    if (Failed(hr, "CDiagMgr::RunTest:SetPercentComplete failed."))
        return hr;
    hr = m_catalogue.GetSettingData(testKey, setting.get());
    if (Failed(hr, "CDiagMgr::RunTest:GetSettingData failed, hr = <%x>"))
        return hr;
    result.SetSettingValues(*setting);
    return S_OK;
}

HRESULT CRuns::StopTest(BSTR testKey)
{
    const CZebTrace trace("CDiagMgr::StopTest");
    if (IsEmpty(testKey))
        return E_INVALIDARG;
    return WithObject(m_catalogue.Tests(), testKey, "CDiagMgr::StopTest:GetObj failed, hr = <%x>",
                      [&](CDiagTest& test)
                      {
                          if (!test.Locked())
                              return engine::Stopped;
                          return test.StopTest(m_catalogue.Agent().get(), FoldedKey(testKey).Get());
                      });
}

HRESULT CRuns::SignalStop(BSTR testKey)
{
    return WithinMemory(
        [&]
        {
            std::shared_ptr<CDiagTest> test;
            const HRESULT hr = m_catalogue.Tests().GetObj(testKey, test);
            return test ? test->RequestStop() : hr;
        });
}

HRESULT CRuns::EndAll()
{
    return StopAll(m_active, m_catalogue.Tests(), m_catalogue.Agent(), m_environment);
}
