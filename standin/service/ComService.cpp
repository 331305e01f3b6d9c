#include "standin/service/ComService.h"

#include "Common/src/com/CriticalSection.h"
#include "Common/src/com/Owned.h"
#include "Common/src/com/ServiceHandle.h"

namespace standin
{
namespace
{
// How long it may take to stop.
constexpr DWORD kLongestStop = 10000;
// One process at a time stops it.
constexpr wchar_t kRestart[] = L"WMI stand-in restarts the COM service";

class CMutexScope
{
  public:
    explicit CMutexScope(const wchar_t* name) noexcept : m_mutex(CreateMutexW(nullptr, FALSE, name))
    {
        WaitForSingleObject(m_mutex.Get(), INFINITE);
    }
    ~CMutexScope() { ReleaseMutex(m_mutex.Get()); }
    CMutexScope(const CMutexScope&) = delete;
    CMutexScope& operator=(const CMutexScope&) = delete;

  private:
    const CHandle m_mutex;
};

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

bool ComServiceHasChanged() noexcept
{
    static CCriticalSection section;
    static CHandle met;
    const CLockScope lock(section);
    if (!met)
        met.Reset(OpenProcess(SYNCHRONIZE, FALSE, ComServiceProcess()));
    return met && WaitForSingleObject(met.Get(), 0) == WAIT_OBJECT_0;
}

void RestartComService(DWORD process) noexcept
{
    const CMutexScope mutex(kRestart);
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
