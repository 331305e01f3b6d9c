// The result store's file while something works with it: several operations in a row. It is read once,
// however many results are read or written; changes are made in memory and replace the file in one step when
// they are published, so that a process that dies while it stores leaves the file as it was. Used by one
// thread. What hangs on the root must be gone before the file is created, deleted, published or begun anew.
#pragma once

#include "CDM/src/engine/results/store/StoreFiles.h"
#include "Common/src/com/ComObject.h"
#include "Common/src/com/ComPtr.h"

#include <objidl.h>
#include <optional>
#include <string>

// The bytes of a structured-storage file in memory. The system's storage reads and writes thousands of small
// pieces: on a file that takes ten times as long, and a process that dies meanwhile leaves a broken file.
class CMemoryBytes final : public CComObject<ILockBytes>
{
  public:
    explicit CMemoryBytes(std::string bytes) : m_bytes(std::move(bytes)) {}

    // Whole once the storage on them was committed or released.
    const std::string& Bytes() const noexcept { return m_bytes; }

    STDMETHODIMP ReadAt(ULARGE_INTEGER offset, void* to, ULONG size, ULONG* read) override;
    STDMETHODIMP WriteAt(ULARGE_INTEGER offset, const void* from, ULONG size, ULONG* written) override;
    STDMETHODIMP SetSize(ULARGE_INTEGER size) override;
    STDMETHODIMP Stat(STATSTG* stat, DWORD flags) override;
    STDMETHODIMP Flush() override { return S_OK; }
    STDMETHODIMP LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override { return STG_E_INVALIDFUNCTION; }
    STDMETHODIMP UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override
    {
        return STG_E_INVALIDFUNCTION;
    }

  private:
    std::string m_bytes;
};

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

    // Whether a change of this result may be stored: nothing newer has gone to the file under this name. It
    // then is the newest. Provider objects can overlap, each with results of its own in memory, and one that
    // ends later may hold an older state of a result than the file. Throws std::bad_alloc.
    bool Claim(const wchar_t* resultId, ULONGLONG change) const;

    // S_OK, S_FALSE for a file that is no storage, STG_E_FILENOTFOUND for none.
    HRESULT IsStorageFile();
    HRESULT Open();
    // The same, with a new storage in the place of a file that is missing or damaged.
    HRESULT OpenOrCreate();
    // Once opened or created.
    IStorage& Root() const noexcept { return *m_root.Get(); }
    // Whether there is a file that can be opened, and whose results are kept as long as none of them is
    // changed.
    bool WorksOnFile();
    // Deletes the file itself.
    HRESULT Delete();

    // Keeps the storage as it is now: this is what is published, whatever becomes of later changes.
    HRESULT Keep();
    // Puts what was kept in the file's place; S_OK also if nothing was.
    HRESULT Publish();
    // For a file that turns out damaged: goes on with a storage without results and keeps a copy of the file.
    // Traced. S_FALSE if the session does not work on a file.
    HRESULT StartAnew(HRESULT damage);

    // Whether a failure tells of a file that is there but can never be used again, unlike one that is only
    // out of reach at the moment.
    static bool IsDamage(HRESULT hr) noexcept;

  private:
    HRESULT ReadFile();
    HRESULT Create();

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
