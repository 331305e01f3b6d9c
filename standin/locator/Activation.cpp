#include "standin/locator/Activation.h"

#include "Common/src/com/Owned.h"
#include "standin/locator/RemoteFailure.h"

namespace standin
{
namespace
{
// A server that is just ending is gone for a moment only.
constexpr int kAttempts = 3;
constexpr DWORD kPauseMilliseconds = 200;
// How long it may take to stop.
constexpr DWORD kLongestStop = 10000;

// One process at a time restarts the COM service; the next one finds that its server can be started.
constexpr wchar_t kRestart[] = L"WMI stand-in restarts the COM service";

struct ServiceHandleTraits
{
    using Type = SC_HANDLE;
    static Type Empty() noexcept { return nullptr; }
    static void Close(Type h) noexcept { CloseServiceHandle(h); }
};
using CServiceHandle = COwned<ServiceHandleTraits>;

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

// Stops it; the next use of COM starts it. Its process must be gone by then, because it would go on to answer
// for a while what nobody will remember.
void StopComService() noexcept
{
    const CServiceHandle manager(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT));
    const CServiceHandle service(OpenServiceW(manager.Get(), L"RpcSs", SERVICE_STOP | SERVICE_QUERY_STATUS));
    SERVICE_STATUS_PROCESS running = {};
    DWORD size = 0;
    if (!service || !QueryServiceStatusEx(service.Get(), SC_STATUS_PROCESS_INFO,
                                          reinterpret_cast<BYTE*>(&running), sizeof running, &size))
        return;
    const CHandle process(OpenProcess(SYNCHRONIZE, FALSE, running.dwProcessId));
    SERVICE_STATUS status = {};
    if (ControlService(service.Get(), SERVICE_CONTROL_STOP, &status) && process)
        WaitForSingleObject(process.Get(), kLongestStop);
}

HRESULT Activate(REFCLSID clsid, REFIID riid, void** out)
{
    HRESULT hr = E_FAIL;
    for (int attempt = 0; attempt < kAttempts; ++attempt)
    {
        if (attempt > 0)
            Sleep(kPauseMilliseconds);
        hr = CoCreateInstance(clsid, nullptr, CLSCTX_LOCAL_SERVER, riid, out);
        if (!IsServerGone(hr))
            break;
    }
    return hr;
}
} // namespace

HRESULT ActivateLocalServer(REFCLSID clsid, REFIID riid, void** out)
{
    HRESULT hr = Activate(clsid, riid, out);
    if (!IsServerGone(hr))
        return hr;
    const CMutexScope mutex(kRestart);
    hr = CoCreateInstance(clsid, nullptr, CLSCTX_LOCAL_SERVER, riid, out);
    if (!IsServerGone(hr))
        return hr;
    StopComService();
    return Activate(clsid, riid, out);
}
} // namespace standin
