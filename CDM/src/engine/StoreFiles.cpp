#include "CDM/src/engine/StoreFiles.h"

#include "CDM/src/engine/CompoundFile.h"
#include "Common/src/com/Text.h"

#include <objbase.h>

namespace
{
constexpr DWORD kReadWrite = STGM_READWRITE | STGM_SHARE_EXCLUSIVE;

HRESULT ResultOf(BOOL done) noexcept
{
    return done ? S_OK : HRESULT_FROM_WIN32(GetLastError());
}

class CPlatformStoreFiles : public IStoreFiles
{
  public:
    HRESULT IsStorageFile(const wchar_t* path) override { return StgIsStorageFile(path); }
    HRESULT Open(const wchar_t* path, IStorage** root) override
    {
        if (StgIsStorageFile(path) == S_OK && !IsSoundCompoundFile(path))
            return STG_E_DOCFILECORRUPT;
        return StgOpenStorage(path, nullptr, kReadWrite, nullptr, 0, root);
    }
    HRESULT Create(const wchar_t* path, bool replace, IStorage** root) override
    {
        return StgCreateDocfile(path, kReadWrite | (replace ? STGM_CREATE : STGM_FAILIFTHERE), 0, root);
    }
    HRESULT Delete(const wchar_t* path) override { return ResultOf(DeleteFileA(NarrowText(path).c_str())); }
    HRESULT Copy(const wchar_t* from, const wchar_t* to) override
    {
        return ResultOf(CopyFileW(from, to, FALSE));
    }
    HRESULT Replace(const wchar_t* from, const wchar_t* to) override
    {
        return ResultOf(MoveFileExW(from, to, MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH));
    }
};
} // namespace

IStoreFiles& PlatformStoreFiles() noexcept
{
    static CPlatformStoreFiles files;
    return files;
}
