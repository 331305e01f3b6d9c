#include "CDM/src/engine/results/store/StoreFiles.h"

#include "CDM/src/engine/results/store/CompoundFile.h"
#include "Common/src/com/Owned.h"
#include "Common/src/com/Text.h"

#include <algorithm>
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

// Programs that look into every file, such as virus scanners, hold one for a moment. A replacement that such
// a program hinders fails with any of these.
constexpr DWORD kHeldErrors[] = {ERROR_SHARING_VIOLATION,
                                 ERROR_LOCK_VIOLATION,
                                 ERROR_ACCESS_DENIED,
                                 ERROR_UNABLE_TO_REMOVE_REPLACED,
                                 ERROR_UNABLE_TO_MOVE_REPLACEMENT,
                                 ERROR_UNABLE_TO_MOVE_REPLACEMENT_2};
constexpr DWORD kPatience = 2000; // milliseconds
constexpr DWORD kPause = 50;      // milliseconds

bool Exists(const std::wstring& path) noexcept
{
    return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

std::wstring FreshPath(const wchar_t* path)
{
    return std::wstring(path) + L".new";
}

class CPlatformStoreFiles : public IStoreFiles
{
  public:
    explicit CPlatformStoreFiles(DWORD patience) noexcept : m_patience(patience) {}

    HRESULT IsStorageFile(const wchar_t* path) override
    {
        const HRESULT hr = StgIsStorageFile(Latest(path).c_str());
        return hr == STG_E_PATHNOTFOUND ? STG_E_FILENOTFOUND : hr;
    }

    HRESULT Read(const wchar_t* path, std::string& bytes) override
    {
        return ReadSound(Latest(path).c_str(), bytes, m_patience);
    }

    HRESULT Write(const wchar_t* path, const std::string& bytes) override
    {
        const std::wstring fresh = FreshPath(path);
        const HRESULT hr = WriteWhole(fresh.c_str(), bytes);
        return SUCCEEDED(hr) ? PutInPlace(fresh, path, m_patience) : hr;
    }

    HRESULT Delete(const wchar_t* path) override
    {
        DeleteFileW(FreshPath(path).c_str());
        return DeleteFileA(NarrowText(path).c_str()) ? S_OK : LastFailure();
    }

    void KeepAside(const wchar_t* path) override
    {
        CopyFileW(path, (std::wstring(path) + L".damaged").c_str(), TRUE);
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
    // Where the newest whole file stands: one that could not replace the other yet does so now or is used
    // where it is. What a process left half written is not whole.
    static std::wstring Latest(const wchar_t* path)
    {
        const std::wstring fresh = FreshPath(path);
        std::string bytes;
        if (!Exists(fresh) || FAILED(ReadSound(fresh.c_str(), bytes, 0)))
            return path;
        return SUCCEEDED(PutInPlace(fresh, path, 0)) ? path : fresh;
    }

    // Tries a step again for as long as another program holds the file. The step sets the last error when it
    // fails.
    template <class Step>
    static bool Patiently(DWORD patience, Step&& step)
    {
        const ULONGLONG end = GetTickCount64() + patience;
        for (;;)
        {
            if (step())
                return true;
            const DWORD error = GetLastError();
            const bool held =
                std::find(std::begin(kHeldErrors), std::end(kHeldErrors), error) != std::end(kHeldErrors);
            if (!held || GetTickCount64() >= end)
            {
                SetLastError(error);
                return false;
            }
            Sleep(kPause);
        }
    }

    static HRESULT ReadSound(const wchar_t* path, std::string& bytes, DWORD patience)
    {
        // A reader must not keep the file from being replaced or removed.
        constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
        CFileHandle file;
        if (!Patiently(patience,
                       [&]
                       {
                           file.Reset(CreateFileW(path, GENERIC_READ, kShareAll, nullptr, OPEN_EXISTING,
                                                  FILE_ATTRIBUTE_NORMAL, nullptr));
                           return static_cast<bool>(file);
                       }))
        {
            const DWORD error = GetLastError();
            return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND ? STG_E_FILENOTFOUND
                                                                                  : LastFailure();
        }
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

    // A new file that is held may be the newest whole one: only what was begun here is removed.
    HRESULT WriteWhole(const wchar_t* path, const std::string& bytes) const
    {
        CFileHandle file;
        if (!Patiently(m_patience,
                       [&]
                       {
                           file.Reset(CreateFileW(path, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                                  FILE_ATTRIBUTE_NORMAL, nullptr));
                           return static_cast<bool>(file);
                       }))
            return LastFailure();
        DWORD written = 0;
        HRESULT hr = S_OK;
        if (!WriteFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) ||
            !FlushFileBuffers(file.Get()))
            hr = LastFailure();
        else if (written != bytes.size())
            hr = STG_E_MEDIUMFULL;
        file.Reset();
        if (FAILED(hr))
            DeleteFileW(path);
        return hr;
    }

    static HRESULT PutInPlace(const std::wstring& fresh, const wchar_t* path, DWORD patience)
    {
        const bool done = Patiently(patience,
                                    [&]
                                    {
                                        // Permissions and attributes of the old file stay, as far as they
                                        // may.
                                        if (ReplaceFileW(path, fresh.c_str(), nullptr,
                                                         REPLACEFILE_IGNORE_MERGE_ERRORS, nullptr, nullptr))
                                            return true;
                                        return GetLastError() == ERROR_FILE_NOT_FOUND &&
                                               MoveFileExW(fresh.c_str(), path, MOVEFILE_WRITE_THROUGH);
                                    });
        // A reader on another thread may have been quicker.
        if (done || (GetLastError() == ERROR_FILE_NOT_FOUND && !Exists(fresh)))
            return S_OK;
        return LastFailure();
    }

    const DWORD m_patience;
};
} // namespace

IStoreFiles& PlatformStoreFiles() noexcept
{
    static CPlatformStoreFiles files(kPatience);
    return files;
}

std::unique_ptr<IStoreFiles> MakePlatformStoreFiles(DWORD patience)
{
    return std::make_unique<CPlatformStoreFiles>(patience);
}
