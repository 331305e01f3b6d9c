// The file operations of the result store: the platform's structured storage, or what a test puts in its
// place. Storages are opened for reading and writing, by nobody else meanwhile, with changes made at once.
#pragma once

#include <objidl.h>

class IStoreFiles
{
  public:
    virtual ~IStoreFiles() = default;

    // S_OK, S_FALSE for a file that is no storage, STG_E_FILENOTFOUND for none.
    virtual HRESULT IsStorageFile(const wchar_t* path) = 0;
    virtual HRESULT Open(const wchar_t* path, IStorage** root) = 0;
    // `replace`: an existing file gives way; otherwise it makes the call fail.
    virtual HRESULT Create(const wchar_t* path, bool replace, IStorage** root) = 0;
    virtual HRESULT Delete(const wchar_t* path) = 0;
    // An existing `to` gives way.
    virtual HRESULT Copy(const wchar_t* from, const wchar_t* to) = 0;
    // `from` becomes `to` in one step: at no moment is there neither.
    virtual HRESULT Replace(const wchar_t* from, const wchar_t* to) = 0;
};

// The platform's own. Lives as long as the process.
IStoreFiles& PlatformStoreFiles() noexcept;
