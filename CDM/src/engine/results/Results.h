// The results of the diagnostics manager: in memory, in the result store, which keeps them while the provider
// is not running, and in the log.
#pragma once

#include "CDM/src/ZebHelpers.h"
#include "CDM/src/engine/catalogue/Catalogue.h"
#include "CDM/src/engine/results/DiagResult.h"
#include "CDM/src/engine/results/ResultLog.h"
#include "CDM/src/engine/results/store/StoreSession.h"

#include <functional>

class CResults
{
  public:
    // Catalogue and files must outlive the object.
    CResults(const CHostPaths& paths, IStoreFiles& files, const CCatalogue& catalogue)
        : m_paths(paths), m_files(files), m_catalogue(catalogue)
    {
    }

    // The steps of the start-up. One session serves all tests.
    HRESULT Create()
    {
        return m_results.Create("CDiagMgr::Initialize:Could not create new DiagResultsMap object");
    }
    CStoreSession OpenStore(CStoreSession::Purpose purpose) const
    {
        return CStoreSession(m_files, m_paths.ResultStorePath, purpose);
    }
    HRESULT AddStored(BSTR adapterKey, BSTR testKey, const VormTestDescriptor& descriptor,
                      CStoreSession& session);
    HRESULT ReadConfiguration();

    HRESULT Enum(CVormArray<BSTR>& keys) const;
    HRESULT GetData(BSTR key, CResultData* data) const;
    bool Exists(BSTR key) const { return m_results.Contains(key); }
    // Removes a result from memory and from the result store.
    HRESULT Clear(BSTR key);

    bool LogEnabled() const noexcept { return m_log.Enabled(); }
    HRESULT Log(BSTR key);

    // The result that a run fills: the one that is there, or a new one.
    HRESULT TakeForRun(const CDiagTest& test, BSTR key, std::shared_ptr<CDiagResult>& result);
    // A client may have cleared the result in the moment before the run began. If it cannot be filed any
    // more, the run ends as it does all the same.
    void FileAgain(BSTR key, const std::shared_ptr<CDiagResult>& result);
    // Stores the result of one run if each is to be stored at once. A failure costs no more than that: the
    // result is stored when the manager goes.
    void StoreAfterRun(BSTR key) noexcept;
    // Stores what has changed. What was stored before a failure is kept, and so is what the file held of the
    // results after it.
    HRESULT StoreAll();

  private:
    HRESULT Load(CStoreSession& session, const CBstr& resultId, const CBstr& adapterKey,
                 CDiagResult& result) const;
    // Publishes what `change` has stored, or all results if the file turns out damaged.
    HRESULT ChangeStore(const std::function<HRESULT(CStoreSession&)>& change);
    HRESULT StoreEach(CStoreSession& session);
    HRESULT StoreOne(CStoreSession& session, BSTR key, ULONG iteration, bool fileIsKept);

    const CHostPaths m_paths;
    IStoreFiles& m_files;
    const CCatalogue& m_catalogue;
    CResultLog m_log;
    bool m_storeAfterRun = false;
    CDiagMap<CDiagResult> m_results;
};
