#include "standin/service/ComService.h"

#include "Common/src/com/Owned.h"
#include "Common/src/com/ServiceHandle.h"

namespace standin
{
namespace
{
// How long it may take to stop.
constexpr DWORD kLongestStop = 10000;

CServiceHandle OpenComService(DWORD access) noexcept
{
    const CServiceHandle manager(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT));
    return CServiceHandle(OpenServiceW(manager.Get(), L"RpcSs", access));
}

DWORD ProcessOf(SC_HANDLE service) noexcept
{
    SERVICE_STATUS_PROCESS status = {};
    DWORD size = 0;
    return QueryServiceStatusEx(service, SC_STATUS_PROCESS_INFO, reinterpret_cast<BYTE*>(&status),
                                sizeof status, &size)
               ? status.dwProcessId
               : 0;
}
} // namespace

DWORD ComServiceProcess() noexcept
{
    return ProcessOf(OpenComService(SERVICE_QUERY_STATUS).Get());
}

void RestartComService(DWORD process) noexcept
{
    const CServiceHandle service = OpenComService(SERVICE_STOP | SERVICE_QUERY_STATUS);
    if (process == 0 || ProcessOf(service.Get()) != process)
        return;
    // Its process must be gone before this returns: it would go on to answer for a while.
    const CHandle running(OpenProcess(SYNCHRONIZE, FALSE, process));
    SERVICE_STATUS status = {};
    if (ControlService(service.Get(), SERVICE_CONTROL_STOP, &status) && running)
        WaitForSingleObject(running.Get(), kLongestStop);
}
} // namespace standin
