#include "standin/service/Serve.h"

#include "Common/src/com/ComBoundary.h"
#include "standin/locator/ServiceIds.h"
#include "standin/object/Objects.h"
#include "standin/service/ConnectServer.h"
#include "standin/service/Service.h"
#include "standin/service/Settings.h"

namespace standin
{
namespace
{
// COM may start two processes for two clients that come at the same moment. Only one is to serve, because all
// clients share a provider. The other one waits a little, for the case that the first is just ending.
constexpr wchar_t kOneService[] = L"WMI stand-in service";
constexpr DWORD kPatience = 2000;
// How long the first client may take to arrive.
constexpr DWORD kFirstClient = 30000;
// How often to look for clients that died and providers that nobody uses.
constexpr DWORD kLook = 250;

class COneService
{
  public:
    COneService() : m_mutex(CreateMutexW(nullptr, FALSE, kOneService))
    {
        const DWORD waited = WaitForSingleObject(m_mutex.Get(), kPatience);
        m_mine = waited == WAIT_OBJECT_0 || waited == WAIT_ABANDONED;
    }
    ~COneService()
    {
        if (m_mine)
            ReleaseMutex(m_mutex.Get());
    }
    bool Mine() const { return m_mine; }

  private:
    const CHandle m_mutex;
    bool m_mine = false;
};

class CClassRegistration
{
  public:
    explicit CClassRegistration(CService& service)
    {
        Result = CoRegisterClassObject(kServiceClass, MakeServiceFactory(service).Get(), CLSCTX_LOCAL_SERVER,
                                       REGCLS_MULTIPLEUSE, &m_cookie);
    }
    ~CClassRegistration()
    {
        if (SUCCEEDED(Result))
            CoRevokeClassObject(m_cookie);
    }
    HRESULT Result = E_FAIL;

  private:
    DWORD m_cookie = 0;
};

void LoadRepository(CRepository& repository)
{
    for (const std::wstring& file : ReadMofFiles())
        repository.CompileFile(file);
}

// True once the service may end.
bool IsIdle(CService& service, DWORD idleTime)
{
    service.DropDeadClients();
    const bool providersGone = service.Providers().DropIdle(idleTime);
    return providersGone && service.Life().Uses() == 0;
}

void WaitUntilIdle(CService& service, DWORD idleTime, DWORD patience)
{
    const ULONGLONG start = GetTickCount64();
    bool used = false;
    for (;;)
    {
        WaitForSingleObject(service.Life().Changed(), kLook);
        used = used || service.Life().Uses() > 0;
        const ULONGLONG now = GetTickCount64();
        const bool quiet = now - service.Life().LastChange() >= idleTime;
        if (IsIdle(service, idleTime) && quiet && (used || now - start >= patience))
            return;
    }
}
} // namespace

int Serve()
{
    if (FAILED(CoInitializeEx(nullptr, COINIT_MULTITHREADED)))
        return 1;
    const HRESULT served = AtComBoundary(
        []() -> HRESULT
        {
            const COneService one;
            if (!one.Mine())
                return S_OK;
            // By-value objects are unmarshalled here without a DLL.
            const CUnmarshalRegistration unmarshal;
            const DWORD idleTime = ReadIdleTime();
            CService service;
            LoadRepository(service.Repository());
            DWORD patience = kFirstClient;
            do
            {
                const CClassRegistration registration(service);
                if (FAILED(registration.Result))
                    return registration.Result;
                WaitUntilIdle(service, idleTime, patience);
                patience = 0;
                // A client that came while the class was being withdrawn is still to be served.
            } while (service.Life().Uses() > 0);
            return S_OK;
        });
    CoUninitialize();
    return SUCCEEDED(served) ? 0 : 1;
}
} // namespace standin
