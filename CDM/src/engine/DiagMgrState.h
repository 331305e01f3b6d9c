// What the diagnostics manager holds. Shared with the runs that are going on: a run that cannot be ended
// while the manager goes keeps what it works with.
#pragma once

#include "CDM/src/engine/DiagAgent.h"
#include "CDM/src/engine/DiagMap.h"
#include "CDM/src/engine/DiagMgr.h"
#include "CDM/src/engine/catalogue/DiagSetting.h"
#include "CDM/src/engine/catalogue/DiagTest.h"
#include "CDM/src/engine/catalogue/IndexMap.h"
#include "CDM/src/engine/results/DiagResult.h"
#include "CDM/src/engine/results/ResultLog.h"
#include "CDM/src/engine/results/store/StoreSession.h"
#include "CDM/src/engine/runs/ActiveRuns.h"
#include "CDM/src/engine/runs/RunEnvironment.h"

#include <functional>

struct CDiagMgr::CState
{
    CState(const CHostPaths& paths, const CEngineSeams& seams);

    // Start-up, one adapter and one test at a time.
    HRESULT CreateMaps();
    void AddAdapter(ULONG index, BSTR adapterKey);
    HRESULT AddTests(BSTR adapterKey, CStoreSession& session, bool& found);
    HRESULT AddTest(BSTR adapterKey, const VormTestDescriptor& descriptor, CStoreSession& session);
    HRESULT AddStoredResult(BSTR adapterKey, BSTR testKey, const VormTestDescriptor& descriptor,
                            CStoreSession& session);
    HRESULT ReadConfiguration();

    HRESULT EnumResults(CVormArray<BSTR>& keys) const;
    HRESULT GetSettingData(BSTR testKey, CSettingData& data) const;
    HRESULT GetResultData(BSTR testKey, CResultData& data) const;
    HRESULT LogResults(BSTR resultKey);

    HRESULT RunTest(BSTR testKey, BSTR resultKey, ULONG mode);
    HRESULT PrepareResult(const CDiagTest& test, BSTR resultKey, std::shared_ptr<CDiagResult>& result);
    HRESULT BeginRun(BSTR testKey, CDiagResult& result);
    void FileAgain(BSTR resultKey, const std::shared_ptr<CDiagResult>& result);
    HRESULT EndRun(HRESULT status, const CDiagTest& test, CDiagResult& result, ULONGLONG elapsed);
    HRESULT FailRun(HRESULT status, const CDiagTest& test, CDiagResult& result);
    // Fails where a run goes on without the manager.
    HRESULT EndRuns();
    class CStopCalls;
    HRESULT TryEndRuns(CStopCalls& stops);

    HRESULT LoadResult(CStoreSession& session, const CBstr& resultId, const CBstr& adapterKey,
                       CDiagResult& result) const;
    HRESULT StoreResults();
    void StoreAfterRun(BSTR resultKey) noexcept;
    // Publishes what `change` has stored, or all results if the file turns out damaged.
    HRESULT ChangeStore(const std::function<HRESULT(CStoreSession&)>& change);
    HRESULT StoreEach(CStoreSession& session);
    HRESULT StoreOne(CStoreSession& session, BSTR key, ULONG iteration, bool fileIsKept);
    static HRESULT Publish(CStoreSession& session);
    HRESULT ClearResults(BSTR resultKey);

    // In the reverse order of their release.
    std::shared_ptr<CDiagAgent> agent;
    const CHostPaths paths;
    IRunEnvironment& environment;
    IStoreFiles& files;
    CResultLog log;
    bool storeAfterRun = false; // each result at once, not only when the manager goes
    CIndexMap indexes;
    CDiagMap<CDiagSetting> settings;
    CDiagMap<CDiagResult> results;
    CDiagMap<CDiagTest> tests;
    CActiveRuns runs;
};
