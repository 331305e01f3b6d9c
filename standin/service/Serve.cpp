#include "standin/service/Serve.h"

#include "Common/src/com/ComBoundary.h"
#include "Common/src/com/StubHold.h"
#include "standin/locator/ServiceProgram.h"
#include "standin/locator/SharedReference.h"
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
// Two clients that come at the same moment may start a process each, but all clients are to share a provider,
// so only one serves. The other waits a little for the case that the first is just ending.
constexpr wchar_t kOneService[] = L"WMI stand-in service is one";
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
    COneService(const COneService&) = delete;
    COneService& operator=(const COneService&) = delete;

    // Whether this process is the one.
    bool Mine() const noexcept { return m_mine; }

  private:
    const CHandle m_mutex;
    bool m_mine = false;
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
        const bool left = WaitForSingleObject(service.Life().Changed(), kLook) == WAIT_OBJECT_0;
        used = used || left || service.Life().Uses() > 0;
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
            CSharedReference reference;
            if (!reference.Create(kServiceName))
                return E_OUTOFMEMORY;
            // There may still be one that a service left which was killed.
            reference.Withdraw();
            // By-value objects are unmarshalled here without a DLL.
            const CUnmarshalRegistration unmarshal;
            const DWORD idleTime = ReadIdleTime();
            CService service;
            LoadRepository(service.Repository());
            HoldStubs({__uuidof(IWmiStandin), __uuidof(IWbemServices), __uuidof(IWbemObjectSink),
                       __uuidof(IWbemProviderInitSink)});
            const ComPtr<IWmiStandin> standin = MakeConnectServer(service);
            DWORD patience = kFirstClient;
            do
            {
                if (const HRESULT hr =
                        reference.Leave(__uuidof(IWmiStandin), standin.Get(), MSHLFLAGS_TABLESTRONG);
                    FAILED(hr))
                    return hr;
                WaitUntilIdle(service, idleTime, patience);
                patience = 0;
                reference.Withdraw();
                // A client that came at that moment is still to be served.
            } while (service.Life().Uses() > 0);
            return S_OK;
        });
    // COM is left as it is: closing it would wait for calls of clients that come too late, and they for it.
    return SUCCEEDED(served) ? 0 : 1;
}
} // namespace standin
