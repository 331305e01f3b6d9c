// One operation on the result store, the structured-storage file that keeps results while the provider is not
// running: a sub-storage per result, named by the result identifier. An object is made for one operation and
// dropped after it. Storing and loading exclude each other in the whole process by the store lock. A session
// that changes the file waits for its turn before that lock is taken, never inside it. Throws std::bad_alloc
// only.
#pragma once

#include "CDM/src/engine/results/DiagResult.h"
#include "CDM/src/engine/results/store/ResultStreams.h"
#include "CDM/src/engine/results/store/StoreSession.h"
#include "Common/src/com/Bstr.h"
#include "Common/src/com/ComPtr.h"

class CResultsStore
{
  public:
    // The session must outlive the object.
    explicit CResultsStore(CStoreSession& session) noexcept : m_session(session) {}

    // Replaces the stored result of this name as a whole, or fails; what was kept before then stays kept. A
    // value whose stream cannot be created is left out.
    HRESULT StoreResult(const CBstr& resultId, const CBstr& adapterKey, const CDiagResult& result);

    // S_OK fills `result`; anything else leaves it alone: no such file or result (STG_E_FILENOTFOUND), a file
    // that is no storage, a result of another version (which deletes the file) or of another adapter (which
    // removes the result), a damaged value.
    HRESULT LoadResult(const CBstr& resultId, const CBstr& adapterKey, CDiagResult& result);

    // Has the session publish while no load looks at the file. A failure is traced.
    HRESULT Publish();

    // Removes a stored result; STG_E_FILENOTFOUND if there is none. Makes the file if it is missing. Does not
    // take the store lock.
    HRESULT RemoveResult(const CBstr& resultId);

  private:
    HRESULT Replace(const CBstr& resultId, const CBstr& adapterKey, const CDiagResult& result);
    HRESULT Load(const CBstr& resultId, const CBstr& adapterKey, CDiagResult& result, bool& stale);
    HRESULT OpenResult(const CBstr& resultId, ComPtr<IStorage>& sub);
    void RemoveStale(const CBstr& resultId, const CBstr& adapterKey);

    CStoreSession& m_session;
};
