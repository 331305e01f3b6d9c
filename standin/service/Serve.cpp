#include "standin/service/Serve.h"

#include "Common/src/com/ComBoundary.h"
#include "Common/src/com/StubHold.h"
#include "standin/locator/ServiceIds.h"
#include "standin/object/Objects.h"
#include "standin/proxy/WmiStandin.h"
#include "standin/service/ConnectServer.h"
#include "standin/service/Service.h"
#include "standin/service/Settings.h"

#include <wbemprov.h>

namespace standin
{
namespace
{
// COM may start a second process: for two clients that come at the same moment, or because it has forgotten
// about the first. Only one is to serve, because all clients share a provider, so the second one tells the
// first to offer itself again. It waits a little for the case that the first is just ending.
constexpr wchar_t kOneService[] = L"WMI stand-in service";
constexpr wchar_t kOfferAgain[] = L"WMI stand-in service is wanted";
constexpr DWORD kPatience = 2000;
// How long the first client may take to arrive.
constexpr DWORD kFirstClient = 30000;
// How often to look for clients that died and providers that nobody uses.
constexpr DWORD kLook = 250;

class COneService
{
  public:
    COneService()
        : m_wanted(CreateEventW(nullptr, FALSE, FALSE, kOfferAgain)),
          m_mutex(CreateMutexW(nullptr, FALSE, kOneService))
    {
        if (!Take(0))
        {
            SetEvent(m_wanted.Get());
            Take(kPatience);
        }
    }
    ~COneService()
    {
        if (m_mine)
            ReleaseMutex(m_mutex.Get());
    }
    COneService(const COneService&) = delete;
    COneService& operator=(const COneService&) = delete;

    // Whether this process is the one. If so, Wanted() is set when another one has been started.
    bool Mine() const noexcept { return m_mine; }
    HANDLE Wanted() const noexcept { return m_wanted.Get(); }

  private:
    bool Take(DWORD patience) noexcept
    {
        const DWORD waited = WaitForSingleObject(m_mutex.Get(), patience);
        m_mine = waited == WAIT_OBJECT_0 || waited == WAIT_ABANDONED;
        return m_mine;
    }

    const CHandle m_wanted;
    const CHandle m_mutex;
    bool m_mine = false;
};

// The service's class as COM knows it.
class CServiceClass
{
  public:
    explicit CServiceClass(CService& service) : m_factory(MakeServiceFactory(service)) {}
    ~CServiceClass() { Withdraw(); }
    CServiceClass(const CServiceClass&) = delete;
    CServiceClass& operator=(const CServiceClass&) = delete;

    HRESULT Offer()
    {
        Withdraw();
        return CoRegisterClassObject(kServiceClass, m_factory.Get(), CLSCTX_LOCAL_SERVER, REGCLS_MULTIPLEUSE,
                                     &m_cookie);
    }
    void Withdraw()
    {
        if (m_cookie != 0)
            CoRevokeClassObject(std::exchange(m_cookie, 0));
    }

  private:
    const ComPtr<IClassFactory> m_factory;
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

void WaitUntilIdle(CService& service, CServiceClass& serviceClass, HANDLE wanted, DWORD idleTime,
                   DWORD patience)
{
    const ULONGLONG start = GetTickCount64();
    bool used = false;
    for (;;)
    {
        const HANDLE handles[] = {wanted, service.Life().Changed()};
        if (WaitForMultipleObjects(2, handles, FALSE, kLook) == WAIT_OBJECT_0)
            serviceClass.Offer();
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
            HoldActivationStubs();
            HoldStubs({__uuidof(IWmiStandin), __uuidof(IWbemServices), __uuidof(IWbemObjectSink),
                       __uuidof(IWbemProviderInitSink)});
            CServiceClass serviceClass(service);
            DWORD patience = kFirstClient;
            do
            {
                if (const HRESULT hr = serviceClass.Offer(); FAILED(hr))
                    return hr;
                WaitUntilIdle(service, serviceClass, one.Wanted(), idleTime, patience);
                patience = 0;
                serviceClass.Withdraw();
                // A client that came while the class was being withdrawn is still to be served.
            } while (service.Life().Uses() > 0);
            return S_OK;
        });
    // COM is left as it is: closing it would wait for calls of clients that come too late, and they for it.
    return SUCCEEDED(served) ? 0 : 1;
}
} // namespace standin
