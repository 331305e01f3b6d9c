// The result store's file, and the structured storage on its bytes: the platform's, or what a test puts in
// its place. Storages are opened for reading and writing, with changes made at once.
#pragma once

#include <objidl.h>
#include <string>

class IStoreFiles
{
  public:
    virtual ~IStoreFiles() = default;

    // S_OK, S_FALSE for a file that is no storage, STG_E_FILENOTFOUND for none.
    virtual HRESULT IsStorageFile(const wchar_t* path) = 0;
    // STG_E_FILENOTFOUND for no file, STG_E_DOCFILECORRUPT for one that is no sound storage.
    virtual HRESULT Read(const wchar_t* path, std::string& bytes) = 0;
    // The file becomes these bytes in one step: whoever looks at it sees all of the old or all of the new.
    virtual HRESULT Write(const wchar_t* path, const std::string& bytes) = 0;
    virtual HRESULT Delete(const wchar_t* path) = 0;

    virtual HRESULT Open(ILockBytes& bytes, IStorage** root) = 0;
    virtual HRESULT Create(ILockBytes& bytes, IStorage** root) = 0;
};

// The platform's own. Lives as long as the process.
IStoreFiles& PlatformStoreFiles() noexcept;
