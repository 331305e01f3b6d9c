// The result store's file, and the structured storage on its bytes: the platform's, or what a test puts in
// its place. A folder that is missing counts as a file that is missing. Storages are opened for reading and
// writing, with changes made at once.
#pragma once

#include <memory>
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
    // The file becomes these bytes in one step: whoever looks at it sees all of the old or all of the new. If
    // it cannot be replaced, the new one stays beside it as "PATH.new", and every later call takes that one.
    virtual HRESULT Write(const wchar_t* path, const std::string& bytes) = 0;
    virtual HRESULT Delete(const wchar_t* path) = 0;
    // Copies a file that is of no use to "PATH.damaged", for support; an earlier copy stays.
    virtual void KeepAside(const wchar_t* path) = 0;

    virtual HRESULT Open(ILockBytes& bytes, IStorage** root) = 0;
    virtual HRESULT Create(ILockBytes& bytes, IStorage** root) = 0;
};

// The platform's own. Lives as long as the process. Waits up to two seconds for a program that holds the
// file, such as a virus scanner.
IStoreFiles& PlatformStoreFiles() noexcept;
// The same with a patience of the caller's own, in milliseconds.
std::unique_ptr<IStoreFiles> MakePlatformStoreFiles(DWORD patience);
