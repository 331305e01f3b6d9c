#include "tools/zebdiag/WholeFile.h"

#include "Common/src/com/Owned.h"
#include "tools/zebdiag/Failure.h"
#include "tools/zebdiag/languages/Said.h"

#include <algorithm>
#include <iterator>

namespace zebdiag
{
namespace
{
struct CNextStepRow
{
    DWORD Error;
    const wchar_t* Text;
};
constexpr const wchar_t* kNotTaken = Marked(
    L"See that the name is not that of a folder, that no other program has the file open, and that you may "
    L"change it.");
constexpr CNextStepRow kNextSteps[] = {
    {ERROR_PATH_NOT_FOUND, Marked(L"Make the folder, or name a file in another one.")},
    {ERROR_ACCESS_DENIED, kNotTaken},
    {ERROR_SHARING_VIOLATION, kNotTaken},
    {ERROR_WRITE_PROTECT, Marked(L"The disk is write-protected: name a file on another one.")},
    {ERROR_DISK_FULL, Marked(L"The disk is full: make room on it, or name a file on another one.")},
    {ERROR_INVALID_NAME, Marked(L"Name a file as the system allows it, without < > : \" | ? and *.")},
};
constexpr const wchar_t* kOtherStep =
    Marked(L"See whether the disk can be written to, or name another file.");

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
    const auto row = std::ranges::find(kNextSteps, error, &CNextStepRow::Error);
    throw CFailure(ExitCode::CouldNotRun, Said(L"{1} was not written.", {file}),
                   Said(row == std::end(kNextSteps) ? kOtherStep : row->Text), HRESULT_FROM_WIN32(error));
}
} // namespace zebdiag
