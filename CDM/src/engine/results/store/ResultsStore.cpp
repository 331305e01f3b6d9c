#include "CDM/src/engine/results/store/ResultsStore.h"

#include "CDM/src/ZebDebug.h"
#include "CDM/src/ZebTrace.h"
#include "CDM/src/engine/EngineStatus.h"

namespace
{
constexpr DWORD kReadWrite = STGM_READWRITE | STGM_SHARE_EXCLUSIVE;

CCriticalSection& StoreLock() noexcept
{
    static CCriticalSection lock;
    return lock;
}

// One text for a file that cannot be opened, made or replaced.
HRESULT TraceFileFailure(HRESULT hr) noexcept
{
    Failed(hr, "CResultsStore::StoreResult: StgCreateDocfile failed, hr = <%x>"); // sic
    return hr;
}
} // namespace

HRESULT CResultsStore::StoreResult(const CBstr& resultId, const CBstr& adapterKey, const CDiagResult& result)
{
    const CZebTrace trace("CResultsStore::StoreResult");
    const CZebLock held(StoreLock());
    // All of this happens in memory. A result that fails half way is not kept, so the file does not see it.
    HRESULT hr = m_session.OpenOrCreate();
    if (SUCCEEDED(hr))
        hr = Replace(resultId, adapterKey, result);
    if (SUCCEEDED(hr))
        hr = m_session.Keep();
    return TraceFileFailure(hr);
}

HRESULT CResultsStore::Replace(const CBstr& resultId, const CBstr& adapterKey, const CDiagResult& result)
{
    HRESULT hr = m_session.Root().DestroyElement(resultId.Text());
    if (FAILED(hr) && hr != STG_E_FILENOTFOUND)
        return hr;
    ComPtr<IStorage> sub;
    hr = m_session.Root().CreateStorage(resultId.Text(), kReadWrite, 0, 0, sub.Put());
    if (FAILED(hr))
        return hr;
    return WithinMemory(
        [&] { return CResultStreams(*sub, resultId.Text()).Write(result.Data(), adapterKey.Text()); });
}

HRESULT CResultsStore::LoadResult(const CBstr& resultId, const CBstr& adapterKey, CDiagResult& result)
{
    const CZebTrace trace("CResultsStore::LoadResult");
    HRESULT hr = S_OK;
    bool stale = false;
    {
        const CZebLock held(StoreLock());
        hr = Load(resultId, adapterKey, result, stale);
    }
    if (stale)
        RemoveStale(resultId, adapterKey);
    return hr;
}

HRESULT CResultsStore::Load(const CBstr& resultId, const CBstr& adapterKey, CDiagResult& result, bool& stale)
{
    // S_FALSE, for a file that is no storage, goes to the caller as it is.
    ComPtr<IStorage> sub;
    HRESULT hr = m_session.IsStorageFile();
    if (hr == S_OK)
        hr = OpenResult(resultId, sub);
    if (hr != S_OK)
        return hr;
    CResultStreams streams(*sub, resultId.Text());
    const CResultStreams::Owner owner = streams.ReadOwner(adapterKey.Text());
    stale = owner == CResultStreams::Owner::OtherAdapter;
    if (owner == CResultStreams::Owner::OtherVersion)
    {
        sub.Reset();
        if (m_session.IsStorageFile() == S_OK)
            m_session.Delete();
    }
    if (owner != CResultStreams::Owner::ThisAdapter)
        return wmi::Failed;
    CResultData data = result.Data();
    hr = streams.Read(data);
    if (hr == S_OK)
        result.SetData(std::move(data));
    return hr;
}

HRESULT CResultsStore::OpenResult(const CBstr& resultId, ComPtr<IStorage>& sub)
{
    const HRESULT hr = m_session.Open();
    if (hr != S_OK)
        return hr;
    return m_session.Root().OpenStorage(resultId.Text(), nullptr, kReadWrite, nullptr, 0, sub.Put());
}

// Removes the result of an adapter that is not there any more. The store lock is not held here, as this waits
// for the turn of others, who need the lock; so one of them may have replaced the result meanwhile.
void CResultsStore::RemoveStale(const CBstr& resultId, const CBstr& adapterKey)
{
    CStoreSession change(m_session, CStoreSession::Purpose::Change);
    const CZebLock held(StoreLock());
    {
        ComPtr<IStorage> sub;
        if (CResultsStore(change).OpenResult(resultId, sub) != S_OK ||
            CResultStreams(*sub, resultId.Text()).ReadOwner(adapterKey.Text()) !=
                CResultStreams::Owner::OtherAdapter)
            return;
    }
    if (SUCCEEDED(change.Root().DestroyElement(resultId.Text())) && SUCCEEDED(change.Keep()))
        change.Publish();
}

HRESULT CResultsStore::Publish()
{
    const CZebLock held(StoreLock());
    return TraceFileFailure(m_session.Publish());
}

HRESULT CResultsStore::RemoveResult(const CBstr& resultId)
{
    HRESULT hr = m_session.OpenOrCreate();
    if (SUCCEEDED(hr))
        hr = m_session.Root().DestroyElement(resultId.Text());
    return SUCCEEDED(hr) ? m_session.Keep() : hr;
}
