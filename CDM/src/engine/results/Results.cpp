#include "CDM/src/engine/results/Results.h"

#include "CDM/src/ZebDebug.h"
#include "CDM/src/ZebHelpers.h"
#include "CDM/src/ZebRegistry.h"
#include "CDM/src/ZebTrace.h"
#include "CDM/src/engine/EngineStatus.h"
#include "CDM/src/engine/naming/DiagKeys.h"
#include "CDM/src/engine/results/store/ResultsStore.h"
#include "Common/src/com/ComBoundary.h"

HRESULT CResults::AddStored(BSTR adapterKey, BSTR testKey, const VormTestDescriptor& descriptor,
                            CStoreSession& session)
{
    const auto result =
        TryMake<CDiagResult>(testKey, descriptor.NameStringID, IsSenderResponder(descriptor.TestID));
    if (!result)
        return OutOfMemory("CDiagMgr::Initialize:Could not create new DiagResult object");
    const CBstr index = m_catalogue.AdapterIndex(adapterKey);
    if (!index)
        return OutOfMemory("CDiagMgr::Initialize:GetIndexFromMap failed");
    const CBstr resultId = JoinKey(TestNumberText(descriptor.TestID).View(), index.View());
    result->SetLoaded();
    // Results are stored under the folded adapter key, whatever case the agent uses this time.
    if (Load(session, resultId, FoldedKey(adapterKey), *result) != S_OK)
        return S_OK;
    const HRESULT hr = WithinMemory([&] { return m_results.AddObj(testKey, result); });
    Failed(hr, "CDiagMgr::Initialize:AddObj for result failed, hr = <%x>");
    return S_OK;
}

HRESULT CResults::Load(CStoreSession& session, const CBstr& resultId, const CBstr& adapterKey,
                       CDiagResult& result) const
{
    const CZebTrace trace("CDiagMgr::LoadResult");
    const HRESULT hr =
        WithinMemory([&] { return CResultsStore(session).LoadResult(resultId, adapterKey, result); });
    if (hr != S_OK && hr != STG_E_FILENOTFOUND)
        ZebDebug().Write("CDiagMgr::LoadResult:LoadResult failed, hr = <%x>", hr);
    return hr;
}

HRESULT CResults::ReadConfiguration()
{
    DWORD atOnce = 0;
    ReadRegistryNumber(kZebDiagKey, "StoreAfterRun", atOnce);
    m_storeAfterRun = atOnce != 0;
    return m_log.ReadConfiguration(m_paths.InstallDir);
}

HRESULT CResults::Enum(CVormArray<BSTR>& keys) const
{
    const CZebTrace trace("CDiagMgr::EnumResults");
    return EnumKeys(m_results, "CDiagMgr::EnumResults:EnumObj failed, hr = <%x>", keys);
}

HRESULT CResults::GetData(BSTR key, CResultData* data) const
{
    return ReadObject(m_results, key, "CDiagMgr::GetResultData:GetObj failed, hr = <%x>", data);
}

HRESULT CResults::Log(BSTR key)
{
    CResultData data;
    const HRESULT hr = GetData(key, &data);
    return Failed(hr, "CDiagMgr::LogResults:GetResultData failed <%x>") ? hr : m_log.Append(data);
}

HRESULT CResults::TakeForRun(const CDiagTest& test, BSTR key, std::shared_ptr<CDiagResult>& result)
{
    HRESULT hr = WithinMemory([&] { return m_results.GetObj(key, result); });
    if (SUCCEEDED(hr))
    {
        // Those of a sender/responder test stay until its first poll replaces them.
        if (!test.SenderResponder())
            result->ClearMessages();
        return S_OK;
    }
    if (hr != engine::NotFound && Failed(hr, "CDiagMgr::RunTest:GetObj for Result failed, hr = <%x>"))
        return hr;
    result = std::make_shared<CDiagResult>(key, test.NameStringID(), test.SenderResponder());
    hr = WithinMemory([&] { return m_results.AddObj(key, result); });
    Failed(hr, "CDiagMgr::RunTest:AddObj for Result failed, hr = <%x>");
    return hr;
}

void CResults::FileAgain(BSTR key, const std::shared_ptr<CDiagResult>& result)
{
    (void)WithinMemory(
        [&]
        {
            std::shared_ptr<CDiagResult> filed;
            return FAILED(m_results.GetObj(key, filed)) ? m_results.AddObj(key, result) : S_OK;
        });
}

HRESULT CResults::StoreAll()
{
    const CZebTrace trace("CDiagMgr::StoreResults");
    return ChangeStore([&](CStoreSession& session) { return StoreEach(session); });
}

void CResults::StoreAfterRun(BSTR key) noexcept
{
    if (!m_storeAfterRun)
        return;
    (void)AtComBoundary(
        [&]
        {
            // Whoever may run a test need not be allowed to write the file.
            const CProcessIdentity process;
            return ChangeStore(
                [&](CStoreSession& session)
                { return session.WorksOnFile() ? StoreOne(session, key, 0, true) : StoreEach(session); });
        });
}

HRESULT CResults::ChangeStore(const std::function<HRESULT(CStoreSession&)>& change)
{
    CStoreSession session = OpenStore(CStoreSession::Purpose::Change);
    HRESULT hr = change(session);
    // Some damage shows only when the storage is written to.
    if (CStoreSession::IsDamage(hr) && session.StartAnew(hr) == S_OK)
        hr = StoreEach(session);
    const HRESULT published = CResultsStore(session).Publish();
    Failed(published, "CDiagMgr::StoreResults:StoreResult failed, hr = <%x>");
    return FAILED(hr) ? hr : published;
}

HRESULT CResults::StoreEach(CStoreSession& session)
{
    CVormArray<BSTR> keys;
    HRESULT hr = Enum(keys);
    if (Failed(hr, "CDiagMgr::StoreResults:EnumResults failed, hr = <%x>"))
        return hr;
    const bool fileIsKept = keys.Count() > 0 && session.WorksOnFile();
    for (ULONG i = 0; i < keys.Count() && SUCCEEDED(hr); ++i)
        hr = WithinMemory([&] { return StoreOne(session, keys.Items()[i], i, fileIsKept); });
    return hr;
}

// What no run has changed came from the file. It is there in the same or in a newer state, or a client has
// cleared it, unless the whole file is lost.
HRESULT CResults::StoreOne(CStoreSession& session, BSTR key, ULONG iteration, bool fileIsKept)
{
    std::shared_ptr<CDiagResult> result;
    HRESULT hr = WithinMemory([&] { return m_results.GetObj(key, result); });
    if (FAILED(hr))
    {
        ZebDebug().Write("CDiagMgr::StoreResults:GetObj for <%d> iteration failed <%x>", iteration, hr);
        return hr;
    }
    const CBstr testName = TryMakeText([&] { return ParseForTestName(key); });
    if (!testName)
        return OutOfMemory("CDiagMgr::StoreResults:ParseForTestName failed");
    const CBstr adapterKey = TryMakeText([&] { return ParseForAdapterKey(key); });
    if (!adapterKey)
        return OutOfMemory("CDiagMgr::StoreResults:ParseForAdapterKey failed");
    const CBstr index = TryMakeText([&] { return m_catalogue.AdapterIndex(adapterKey.Get()); });
    if (!index)
        return OutOfMemory("CDiagMgr::StoreResults:GetIndexFromMap failed");
    const CBstr resultId = JoinKey(testName.View(), index.View());
    if ((result->IsAsLoaded() && fileIsKept) || !session.Claim(resultId.Text(), result->Change()))
        return S_OK;
    hr = WithinMemory([&] { return CResultsStore(session).StoreResult(resultId, adapterKey, *result); });
    Failed(hr, "CDiagMgr::StoreResults:StoreResult failed, hr = <%x>");
    return hr;
}

HRESULT CResults::Clear(BSTR key)
{
    const CZebTrace trace("CDiagMgr::ClearResults");
    const CBstr folded = FoldedKey(key);
    const CBstr testName = ParseForTestName(folded.View());
    if (!testName)
        return OutOfMemory("CDiagMgr::ClearResults:ParseForTestName failed");
    const CBstr adapterKey = ParseForAdapterKey(folded.View());
    if (!adapterKey)
        return OutOfMemory("CDiagMgr::ClearResults:ParseForAdapterKey failed");
    const CBstr testKey = JoinKey(testName.View(), adapterKey.View());
    const CBstr resultId = JoinKey(testName.View(), m_catalogue.AdapterIndex(adapterKey.Get()).View());

    std::shared_ptr<CDiagTest> test;
    HRESULT hr = m_catalogue.Tests().GetObj(testKey.Get(), test);
    if (Failed(hr, "CDiagMgr::ClearResults:GetObj failed, hr = <%x>"))
        return hr;
    if (test->Locked())
        return engine::ClearWhileRunning;
    std::shared_ptr<CDiagResult> result;
    if (FAILED(m_results.GetObj(testKey.Get(), result)))
    {
        ZebDebug().Write("CDiagMgr::ClearResults:Object not found");
        return wmi::NotFound;
    }
    hr = m_results.RemoveObj(testKey.Get());
    if (Failed(hr, "CDiagMgr::ClearResults:RemoveObj failed, hr = <%x>"))
        return hr;
    // Failures of the store have the text of the map's. Neither the removal nor its publication takes the
    // store lock: a client waits for the answer.
    CStoreSession session = OpenStore(CStoreSession::Purpose::Change);
    (void)session.Claim(resultId.Text(), CDiagResult::NextChange());
    hr = CResultsStore(session).RemoveResult(resultId);
    if (SUCCEEDED(hr) || hr == STG_E_FILENOTFOUND)
        hr = session.Publish();
    Failed(hr, "CDiagMgr::ClearResults:RemoveObj failed, hr = <%x>"); // sic
    return hr;
}
