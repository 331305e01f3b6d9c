// Several operations on the result store in a row. The file is read once, however many results are read or
// written; changes are made in memory and replace the file in one step when they are published, so that a
// process that dies while it stores leaves the file as it was. Used by one thread.
#pragma once

#include "CDM/src/engine/MemoryBytes.h"
#include "CDM/src/engine/StoreFiles.h"
#include "Common/src/com/ComPtr.h"

#include <optional>
#include <string>

class CStoreSession
{
  public:
    enum class Purpose
    {
        Read,
        Change // one at a time in the process; waits for the one before it
    };

    // `files` must outlive the session. Throws std::bad_alloc.
    CStoreSession(IStoreFiles& files, std::wstring path, Purpose purpose);
    // On the same file as another session.
    CStoreSession(const CStoreSession& other, Purpose purpose);
    ~CStoreSession();
    CStoreSession(const CStoreSession&) = delete;
    CStoreSession& operator=(const CStoreSession&) = delete;

    // S_OK, S_FALSE for a file that is no storage, STG_E_FILENOTFOUND for none.
    HRESULT IsStorageFile();
    HRESULT Open(ComPtr<IStorage>& root);
    // A storage without results.
    HRESULT Create(ComPtr<IStorage>& root);
    // Deletes the file itself. Every reference on the root must be gone.
    HRESULT Delete();

    // To be called with every change.
    void SetChanged() noexcept { m_changed = true; }
    // Puts what was changed in the file's place; S_OK also where nothing was.
    HRESULT Publish();

  private:
    HRESULT ReadFile();

    IStoreFiles& m_files;
    const std::wstring m_path;
    const Purpose m_purpose;
    std::optional<HRESULT> m_isStorage;
    HRESULT m_openFailure = S_OK; // so that a file that cannot be opened is tried once
    ComPtr<CMemoryBytes> m_bytes;
    ComPtr<IStorage> m_root;
    bool m_changed = false;
};
