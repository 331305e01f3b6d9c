// The manager's way to the result store.
#include "CDM/src/ZebDebug.h"
#include "CDM/src/ZebHelpers.h"
#include "CDM/src/ZebTrace.h"
#include "CDM/src/engine/DiagMgrState.h"
#include "CDM/src/engine/EngineBoundary.h"
#include "CDM/src/engine/naming/References.h"
#include "CDM/src/engine/results/store/ResultChanges.h"
#include "CDM/src/engine/results/store/ResultsStore.h"
#include "Common/src/com/ComBoundary.h"

// What was stored before a failure is kept, and so is what the file held of the results after it.
HRESULT CDiagMgr::CState::StoreResults()
{
    const CZebTrace trace("CDiagMgr::StoreResults");
    return ChangeStore([&](CStoreSession& session) { return StoreEach(session); });
}

// The system does not wait for this process when it shuts down. A failure costs no more than that: the result
// is stored when the manager goes.
void CDiagMgr::CState::StoreAfterRun(BSTR resultKey) noexcept
{
    if (!storeAfterRun)
        return;
    (void)AtComBoundary(
        [&]
        {
            // Whoever may run a test need not be allowed to write the file.
            const CProcessIdentity process;
            return ChangeStore(
                [&](CStoreSession& session) {
                    return session.WorksOnFile() ? StoreOne(session, resultKey, 0, true) : StoreEach(session);
                });
        });
}

HRESULT CDiagMgr::CState::ChangeStore(const std::function<HRESULT(CStoreSession&)>& change)
{
    CStoreSession session(files, paths.ResultStorePath, CStoreSession::Purpose::Change);
    HRESULT hr = change(session);
    // Some damage shows only when the storage is written to.
    if (CStoreSession::IsDamage(hr) && session.StartAnew(hr) == S_OK)
        hr = StoreEach(session);
    const HRESULT published = Publish(session);
    return FAILED(hr) ? hr : published;
}

HRESULT CDiagMgr::CState::Publish(CStoreSession& session)
{
    const HRESULT hr = CResultsStore(session).Publish();
    if (FAILED(hr))
        ZebDebug().Write("CDiagMgr::StoreResults:StoreResult failed, hr = <%x>", hr);
    return hr;
}

HRESULT CDiagMgr::CState::StoreEach(CStoreSession& session)
{
    CVormArray<BSTR> keys;
    HRESULT hr = EnumResults(keys);
    if (FAILED(hr))
    {
        ZebDebug().Write("CDiagMgr::StoreResults:EnumResults failed, hr = <%x>", hr);
        return hr;
    }
    const bool fileIsKept = keys.Count() > 0 && session.WorksOnFile();
    for (ULONG i = 0; i < keys.Count() && SUCCEEDED(hr); ++i)
        hr = WithinMemory([&] { return StoreOne(session, keys.Items()[i], i, fileIsKept); });
    return hr;
}

// What no run has changed came from the file. It is there in the same or in a newer state, or somebody has
// cleared it, unless the whole file is lost.
HRESULT CDiagMgr::CState::StoreOne(CStoreSession& session, BSTR key, ULONG iteration, bool fileIsKept)
{
    std::shared_ptr<CDiagResult> result;
    HRESULT hr = WithinMemory([&] { return results.GetObj(key, result); });
    if (FAILED(hr))
    {
        ZebDebug().Write("CDiagMgr::StoreResults:GetObj for <%d> iteration failed <%x>", iteration, hr);
        return hr;
    }
    const CBstr testName = TryMakeText([&] { return ParseForTestName(key); });
    if (!testName)
    {
        ZebDebug().Write("CDiagMgr::StoreResults:ParseForTestName failed");
        return wmi::OutOfMemory;
    }
    const CBstr adapterKey = TryMakeText([&] { return ParseForAdapterKey(key); });
    if (!adapterKey)
    {
        ZebDebug().Write("CDiagMgr::StoreResults:ParseForAdapterKey failed");
        return wmi::OutOfMemory;
    }
    const CBstr index = TryMakeText([&] { return indexes.GetIndexFromMap(adapterKey.Get()); });
    if (!index)
    {
        ZebDebug().Write("CDiagMgr::StoreResults:GetIndexFromMap failed");
        return wmi::OutOfMemory;
    }
    const CBstr resultId = JoinKey(testName.View(), index.View());
    if ((result->IsAsLoaded() && fileIsKept) ||
        !ResultChanges::Claim(paths.ResultStorePath, resultId.Text(), result->Change()))
        return S_OK;
    hr = WithinMemory([&] { return CResultsStore(session).StoreResult(resultId, adapterKey, *result); });
    if (FAILED(hr))
        ZebDebug().Write("CDiagMgr::StoreResults:StoreResult failed, hr = <%x>", hr);
    return hr;
}

HRESULT CDiagMgr::ClearResults(BSTR resultKey)
{
    return WithinMemory([&] { return m_state->ClearResults(resultKey); });
}

HRESULT CDiagMgr::CState::ClearResults(BSTR resultKey)
{
    const CZebTrace trace("CDiagMgr::ClearResults");
    const CBstr folded = FoldedKey(resultKey);
    const CBstr testName = ParseForTestName(folded.View());
    if (!testName)
    {
        ZebDebug().Write("CDiagMgr::ClearResults:ParseForTestName failed");
        return wmi::OutOfMemory;
    }
    const CBstr adapterKey = ParseForAdapterKey(folded.View());
    if (!adapterKey)
    {
        ZebDebug().Write("CDiagMgr::ClearResults:ParseForAdapterKey failed");
        return wmi::OutOfMemory;
    }
    const CBstr testKey = JoinKey(testName.View(), adapterKey.View());
    const CBstr resultId = JoinKey(testName.View(), indexes.GetIndexFromMap(adapterKey.Get()).View());

    std::shared_ptr<CDiagTest> test;
    HRESULT hr = tests.GetObj(testKey.Get(), test);
    if (FAILED(hr))
    {
        ZebDebug().Write("CDiagMgr::ClearResults:GetObj failed, hr = <%x>", hr);
        return hr;
    }
    if (test->Locked())
        return engine::ClearWhileRunning;
    std::shared_ptr<CDiagResult> result;
    if (FAILED(results.GetObj(testKey.Get(), result)))
    {
        ZebDebug().Write("CDiagMgr::ClearResults:Object not found");
        return wmi::NotFound;
    }
    hr = results.RemoveObj(testKey.Get());
    if (FAILED(hr))
    {
        ZebDebug().Write("CDiagMgr::ClearResults:RemoveObj failed, hr = <%x>", hr);
        return hr;
    }
    // Failures of the store have the text of the map's: support knows it so.
    CStoreSession session(files, paths.ResultStorePath, CStoreSession::Purpose::Change);
    (void)ResultChanges::Claim(paths.ResultStorePath, resultId.Text(), ResultChanges::Next());
    hr = CResultsStore(session).RemoveResult(resultId);
    if (FAILED(hr) && hr != STG_E_FILENOTFOUND)
    {
        ZebDebug().Write("CDiagMgr::ClearResults:RemoveObj failed, hr = <%x>", hr);
        return hr;
    }
    hr = session.Publish();
    if (FAILED(hr))
        ZebDebug().Write("CDiagMgr::ClearResults:RemoveObj failed, hr = <%x>", hr);
    return hr;
}
