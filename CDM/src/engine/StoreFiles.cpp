#include "CDM/src/engine/StoreFiles.h"

#include "CDM/src/engine/CompoundFile.h"
#include "Common/src/com/Owned.h"
#include "Common/src/com/Text.h"

#include <objbase.h>

namespace
{
constexpr DWORD kReadWrite = STGM_READWRITE | STGM_SHARE_EXCLUSIVE;
// No store of results comes near this; a file that does is no such store.
constexpr LONGLONG kMostBytes = 512 * 1024 * 1024;

HRESULT LastFailure() noexcept
{
    const HRESULT hr = HRESULT_FROM_WIN32(GetLastError());
    return FAILED(hr) ? hr : E_FAIL;
}

class CPlatformStoreFiles : public IStoreFiles
{
  public:
    HRESULT IsStorageFile(const wchar_t* path) override { return StgIsStorageFile(path); }

    HRESULT Read(const wchar_t* path, std::string& bytes) override
    {
        // A reader must not keep the file from being replaced or removed.
        constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
        const CFileHandle file(CreateFileW(path, GENERIC_READ, kShareAll, nullptr, OPEN_EXISTING,
                                           FILE_ATTRIBUTE_NORMAL, nullptr));
        if (!file)
            return GetLastError() == ERROR_FILE_NOT_FOUND ? STG_E_FILENOTFOUND : LastFailure();
        LARGE_INTEGER size{};
        if (!GetFileSizeEx(file.Get(), &size))
            return LastFailure();
        if (size.QuadPart > kMostBytes)
            return STG_E_DOCFILECORRUPT;
        bytes.resize(static_cast<size_t>(size.QuadPart));
        DWORD read = 0;
        if (!ReadFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &read, nullptr))
            return LastFailure();
        bytes.resize(read);
        return IsSoundCompoundFile(bytes) ? S_OK : STG_E_DOCFILECORRUPT;
    }

    HRESULT Write(const wchar_t* path, const std::string& bytes) override
    {
        const std::wstring fresh = std::wstring(path) + L".new";
        HRESULT hr = WriteWhole(fresh.c_str(), bytes);
        if (SUCCEEDED(hr) &&
            !MoveFileExW(fresh.c_str(), path, MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
            hr = LastFailure();
        if (FAILED(hr))
            DeleteFileW(fresh.c_str());
        return hr;
    }

    HRESULT Delete(const wchar_t* path) override
    {
        return DeleteFileA(NarrowText(path).c_str()) ? S_OK : LastFailure();
    }

    HRESULT Open(ILockBytes& bytes, IStorage** root) override
    {
        return StgOpenStorageOnILockBytes(&bytes, nullptr, kReadWrite, nullptr, 0, root);
    }

    HRESULT Create(ILockBytes& bytes, IStorage** root) override
    {
        return StgCreateDocfileOnILockBytes(&bytes, STGM_CREATE | kReadWrite, 0, root);
    }

  private:
    static HRESULT WriteWhole(const wchar_t* path, const std::string& bytes)
    {
        const CFileHandle file(
            CreateFileW(path, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
        if (!file)
            return LastFailure();
        DWORD written = 0;
        if (!WriteFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) ||
            !FlushFileBuffers(file.Get()))
            return LastFailure();
        return written == bytes.size() ? S_OK : STG_E_MEDIUMFULL;
    }
};
} // namespace

IStoreFiles& PlatformStoreFiles() noexcept
{
    static CPlatformStoreFiles files;
    return files;
}
