#include "tools/zebdiag/report/WholeFile.h"

#include "Common/src/com/Owned.h"

namespace zebdiag
{
namespace
{
DWORD WriteNew(const std::wstring& file, const std::string& octets)
{
    const CFileHandle opened(CreateFileW(file.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
    DWORD written = 0;
    if (!opened ||
        !WriteFile(opened.Get(), octets.data(), static_cast<DWORD>(octets.size()), &written, nullptr))
        return GetLastError();
    return written == octets.size() ? ERROR_SUCCESS : ERROR_DISK_FULL;
}
} // namespace

DWORD WriteWholeFile(const std::wstring& file, const std::string& octets)
{
    // In the same folder, because only there it can take the other one's place.
    const std::wstring fresh = file + L"." + std::to_wstring(GetCurrentProcessId()) + L".new";
    DWORD error = WriteNew(fresh, octets);
    if (error == ERROR_SUCCESS && !MoveFileExW(fresh.c_str(), file.c_str(), MOVEFILE_REPLACE_EXISTING))
        error = GetLastError();
    if (error != ERROR_SUCCESS)
        DeleteFileW(fresh.c_str());
    return error;
}
} // namespace zebdiag
