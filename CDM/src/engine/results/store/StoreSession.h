// Several operations on the result store in a row. The file is read once, however many results are read or
// written; changes are made in memory and replace the file in one step when they are published, so that a
// process that dies while it stores leaves the file as it was. Used by one thread.
#pragma once

#include "CDM/src/engine/results/store/MemoryBytes.h"
#include "CDM/src/engine/results/store/StoreFiles.h"
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
    // Whether there is a file that can be opened, and whose results are kept where none of them is changed.
    bool WorksOnFile();
    // A storage without results.
    HRESULT Create(ComPtr<IStorage>& root);
    // Deletes the file itself. Every reference on the root must be gone.
    HRESULT Delete();

    // Keeps the storage as it is now: this is what is published, whatever becomes of later changes.
    HRESULT Keep();
    // Puts what was kept in the file's place; S_OK also if nothing was.
    HRESULT Publish();
    // For a file that turns out damaged: goes on with a storage without results and keeps a copy of the file.
    // Traced. S_FALSE if the session does not work on a file. Every reference on the root must be gone.
    HRESULT StartAnew(HRESULT damage);

    // Whether a failure tells of a file that is there but can never be used again, unlike one that is only
    // out of reach at the moment.
    static bool IsDamage(HRESULT hr) noexcept;

  private:
    HRESULT ReadFile();

    IStoreFiles& m_files;
    const std::wstring m_path;
    const Purpose m_purpose;
    std::optional<HRESULT> m_isStorage;
    HRESULT m_openFailure = S_OK; // so that a file that cannot be opened is tried once
    ComPtr<CMemoryBytes> m_bytes;
    ComPtr<IStorage> m_root;
    bool m_fromFile = false;
    std::optional<std::string> m_kept;
};
