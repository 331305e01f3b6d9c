#include "standin/service/Serve.h"

#include "Common/src/com/ComBoundary.h"
#include "Common/src/wine/StubHold.h"
#include "standin/locator/Connection.h"
#include "standin/object/Objects.h"
#include "standin/service/Listener.h"
#include "standin/service/Service.h"
#include "standin/service/Settings.h"

#include <cstdlib>
#include <wbemprov.h>

namespace standin
{
namespace
{
// A service holds this mutex as long as its process lives.
constexpr wchar_t kServing[] = L"WMI stand-in: the service runs";
// How long the first client may take to arrive.
constexpr DWORD kFirstClient = 30000;
// How often to look for providers that nobody uses.
constexpr DWORD kLook = 250;

void LoadRepository(CRepository& repository)
{
    for (const std::wstring& file : ReadMofFiles())
        repository.CompileFile(file);
}

void TellThatItListens()
{
    SetEvent(CHandle(OpenEventW(EVENT_MODIFY_STATE, FALSE, kListening)).Get());
}

// Returns, with the mutex of those who connect held, when nothing is used any more.
void WaitUntilIdle(CService& service, const CHandle& connecting)
{
    const CDeadline firstClient(kFirstClient);
    bool used = false;
    for (;;)
    {
        used = WaitForSingleObject(service.Life().Changed(), kLook) == WAIT_OBJECT_0 || used;
        used = used || service.Life().Uses() > 0 || firstClient.Left() == 0;
        const DWORD idleTime = ReadIdleTime(); // a test may change it
        const bool providersGone = service.Providers().DropIdle(idleTime);
        const bool quiet = GetTickCount64() - service.Life().LastChange() >= idleTime;
        if (!used || !providersGone || !quiet || WaitForSingleObject(connecting.Get(), 0) == WAIT_TIMEOUT)
            continue;
        // Nobody can come now, but somebody may have come and gone since, and have left a provider.
        if (service.Life().Uses() == 0 && service.Providers().DropIdle(idleTime))
            return;
        ReleaseMutex(connecting.Get());
    }
}
} // namespace

int Serve()
{
    // Both are held until the process has ended: nobody meets a service that ends, nor starts one beside it.
    const CHandle connecting(CreateMutexW(nullptr, FALSE, kConnecting));
    const CHandle serving(CreateMutexW(nullptr, FALSE, kServing));
    if (WaitForSingleObject(serving.Get(), 0) == WAIT_TIMEOUT)
        return 1;
    if (FAILED(CoInitializeEx(nullptr, COINIT_MULTITHREADED)))
        return 1;
    const HRESULT served = AtComBoundary(
        [&]() -> HRESULT
        {
            // By-value objects are unmarshalled here without a DLL.
            const CUnmarshalRegistration unmarshal;
            // Threads that are just ending may still look at it when the process ends.
            CService& service = *new CService;
            LoadRepository(service.Repository());
            HoldStubs({__uuidof(IWbemServices), __uuidof(IWbemObjectSink), __uuidof(IWbemProviderInitSink)});
            CListener listener(service);
            TellThatItListens();
            WaitUntilIdle(service, connecting);
            // The last thing to go before those who connect may look for a service again.
            listener.Stop();
            return S_OK;
        });
    // COM is left as it is: closing it would wait for calls that come too late, and they for it.
    std::_Exit(SUCCEEDED(served) ? 0 : 1);
}
} // namespace standin
