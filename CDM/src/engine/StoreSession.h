// Several operations on the result store in a row. The file is opened once, however many results are read or
// written. Changes are made to a working copy beside the file, which takes the file's place when it is
// published: a process that dies while it stores leaves the file as it was. One session at a time in the
// process; used by one thread.
#pragma once

#include "CDM/src/engine/StoreFiles.h"
#include "Common/src/com/ComPtr.h"
#include "Common/src/com/CriticalSection.h"

#include <optional>
#include <string>

class CStoreSession
{
  public:
    enum class Purpose
    {
        Read,
        Change
    };

    // Waits for the session before it. `files` must outlive this one. Throws std::bad_alloc.
    CStoreSession(IStoreFiles& files, std::wstring path, Purpose purpose);
    // Drops a working copy that was not published.
    ~CStoreSession();
    CStoreSession(const CStoreSession&) = delete;
    CStoreSession& operator=(const CStoreSession&) = delete;

    // S_OK, S_FALSE for a file that is no storage, STG_E_FILENOTFOUND for none.
    HRESULT IsStorageFile();
    HRESULT Open(ComPtr<IStorage>& root);
    // `replace`: an existing file gives way; otherwise it makes the call fail.
    HRESULT Create(bool replace, ComPtr<IStorage>& root);
    // Deletes the file itself. Every reference on the root must be gone.
    HRESULT Delete();

    // Puts what was changed in the file's place; S_OK also where nothing was opened.
    HRESULT Publish();

  private:
    HRESULT Prepare();

    const CLockScope m_turn;
    IStoreFiles& m_files;
    const std::wstring m_path;
    const bool m_change;
    const std::wstring m_work; // the file that is opened
    std::optional<HRESULT> m_prepared;
    std::optional<HRESULT> m_isStorage;
    HRESULT m_openFailure = S_OK;
    ComPtr<IStorage> m_root;
};
