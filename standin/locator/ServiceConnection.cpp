#include "standin/locator/ServiceConnection.h"

#include "standin/locator/Activation.h"
#include "standin/locator/RemoteFailure.h"
#include "standin/locator/ServiceIds.h"
#include "standin/proxy/WmiStandin.h"

namespace standin
{
namespace
{
// A service that has decided to end may be found but not reached any more.
constexpr int kAttempts = 5;
constexpr DWORD kPauseMilliseconds = 200;

HRESULT ConnectOnce(const CBstr& nameSpace, const CBstr& locale, CServiceConnection& connection)
{
    ComPtr<IWmiStandin> standin;
    HRESULT hr = ActivateLocalServer(kServiceClass, __uuidof(IWmiStandin), standin.PutVoid());
    if (FAILED(hr))
        return hr;
    ULONG process = 0;
    ComPtr<IUnknown> services;
    hr = standin->Connect(nameSpace.Get(), locale.Get(), GetCurrentProcessId(), &process,
                          __uuidof(IWbemServices), services.Put());
    if (FAILED(hr))
        return hr;
    if (CHandle handle(OpenProcess(SYNCHRONIZE, FALSE, process)); handle)
        connection.Process = std::make_shared<const CHandle>(std::move(handle));
    return services.As(connection.Services);
}
} // namespace

HRESULT ConnectService(const std::wstring& nameSpace, const std::wstring& locale,
                       CServiceConnection& connection)
{
    const CBstr nameSpaceText(nameSpace.c_str());
    const CBstr localeText(locale.c_str());
    HRESULT hr = E_FAIL;
    for (int attempt = 0; attempt < kAttempts; ++attempt)
    {
        if (attempt > 0)
            Sleep(kPauseMilliseconds);
        hr = ConnectOnce(nameSpaceText, localeText, connection);
        if (!IsServerGone(hr))
            break;
    }
    return hr;
}
} // namespace standin
