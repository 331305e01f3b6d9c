// One operation on the result store, the structured-storage file that keeps results while the provider is not
// running: a sub-storage per result, named by the result identifier, with a stream per value. An object is
// made for one operation and dropped after it. Storing and loading exclude each other in the whole process by
// the store lock. A session that changes the file waits for its turn before that lock is taken, never inside
// it. Throws std::bad_alloc only.
#pragma once

#include "CDM/src/engine/results/DiagResult.h"
#include "CDM/src/engine/results/store/StoreSession.h"
#include "Common/src/com/Bstr.h"
#include "Common/src/com/ComPtr.h"

#include <string>

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

    // Puts what the session has stored in the file's place, when no load looks at it. A failure is traced.
    HRESULT Publish();

    // Removes a stored result; STG_E_FILENOTFOUND where there is none. Makes the file where it is missing.
    HRESULT RemoveResult(const CBstr& resultId);

  private:
    enum class Owner
    {
        ThisAdapter,
        OtherAdapter,
        OtherVersion,
        Illegible // traced
    };

    HRESULT OpenOrCreate();
    HRESULT Replace(const CDiagResult& result);
    HRESULT WriteValues(const CResultData& data);
    HRESULT WriteText(const std::wstring& stream, const std::wstring& text);
    HRESULT WriteMessages(const CResultData& data);
    // One text for a file that cannot be opened, made or replaced: support knows it so.
    static void TraceFileFailure(HRESULT hr);
    HRESULT Load(CDiagResult& result, bool& stale);
    HRESULT OpenResult();
    Owner ReadOwner();
    Owner Illegible(const wchar_t* prefix);
    void RemoveStale();
    HRESULT ReadValues(CResultData& data);
    HRESULT ReadMessages(CResultData& data);
    bool ReadNumber(const std::wstring& stream, ULONG& number);
    HRESULT Damaged(const std::wstring& stream);
    std::wstring StreamName(const wchar_t* prefix) const { return prefix + m_resultId; }

    CStoreSession& m_session;
    std::wstring m_resultId;
    std::wstring m_adapterKey;
    ComPtr<IStorage> m_root;
    ComPtr<IStorage> m_sub;
};
