#include "tools/zebdiag/metrics/WholeFile.h"

#include "Common/src/com/Owned.h"
#include "tools/zebdiag/Failure.h"
#include "tools/zebdiag/languages/Said.h"

namespace zebdiag
{
namespace
{
// Readers that do not share the right to replace the file hold it for milliseconds.
constexpr int kAttempts = 20;
constexpr DWORD kPause = 100; // milliseconds

DWORD WriteNewFile(const std::wstring& file, std::string_view bytes)
{
    const CFileHandle opened(CreateFileW(file.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
    DWORD written = 0;
    if (!opened ||
        !WriteFile(opened.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr))
        return GetLastError();
    return written == bytes.size() ? ERROR_SUCCESS : ERROR_DISK_FULL;
}

DWORD PutInPlace(const std::wstring& fresh, const std::wstring& file)
{
    for (int attempt = 1;; ++attempt)
    {
        if (MoveFileExW(fresh.c_str(), file.c_str(), MOVEFILE_REPLACE_EXISTING))
            return ERROR_SUCCESS;
        const DWORD error = GetLastError();
        const bool held = error == ERROR_SHARING_VIOLATION || error == ERROR_ACCESS_DENIED;
        if (!held || attempt == kAttempts)
            return error;
        Sleep(kPause);
    }
}
} // namespace

void WriteWholeFile(const std::wstring& file, std::string_view bytes)
{
    const std::wstring fresh = file + L".new";
    DWORD error = WriteNewFile(fresh, bytes);
    if (error == ERROR_SUCCESS)
        error = PutInPlace(fresh, file);
    if (error == ERROR_SUCCESS)
        return;
    DeleteFileW(fresh.c_str());
    throw CFailure(
        ExitCode::CouldNotRun, Said(L"{1} cannot be written.", {file}),
        Said(L"See whether its folder is there, whether you may change files in it, whether another program "
             L"holds the file open, and whether the disk is full."),
        HRESULT_FROM_WIN32(error));
}
} // namespace zebdiag
