#include "standin/locator/ServiceConnection.h"

#include "Common/src/com/CriticalSection.h"
#include "standin/locator/RemoteFailure.h"
#include "standin/locator/ServiceProgram.h"
#include "standin/locator/SharedReference.h"
#include "standin/proxy/WmiStandin.h"

namespace standin
{
namespace
{
// A service that has decided to end may be found but not reached any more, and so may one that was killed.
constexpr int kAttempts = 5;
// How long a service may take to read its schema.
constexpr DWORD kLongestStart = 60000;
constexpr DWORD kLookMilliseconds = 20;

HRESULT FindService(ComPtr<IWmiStandin>& standin)
{
    CSharedReference reference;
    return reference.Open(kServiceName) ? reference.Take(__uuidof(IWmiStandin), standin.PutVoid())
                                        : HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE);
}

bool IsOffered()
{
    CSharedReference reference;
    return reference.Open(kServiceName) && !reference.Empty();
}

// Waits until the service that this starts can be found or has left the work to another one.
HRESULT StartService()
{
    CHandle process;
    const HRESULT hr = StartServiceProgram(L"/serve", process);
    if (FAILED(hr))
        return hr;
    const ULONGLONG start = GetTickCount64();
    while (WaitForSingleObject(process.Get(), kLookMilliseconds) == WAIT_TIMEOUT && !IsOffered() &&
           GetTickCount64() - start < kLongestStart)
    {
    }
    return S_OK;
}

HRESULT ConnectOnce(const CBstr& nameSpace, const CBstr& locale, CServiceConnection& connection)
{
    // Wine's bookkeeping of proxies breaks when a thread takes a reference whose process has just ended while
    // another one takes or drops the same reference.
    static CCriticalSection section;
    const CLockScope lock(section);
    ComPtr<IWmiStandin> standin;
    HRESULT hr = FindService(standin);
    if (FAILED(hr))
        return hr;
    ULONG process = 0;
    ComPtr<IUnknown> services;
    hr = CallProcess(
        [&]
        {
            return standin->Connect(nameSpace.Get(), locale.Get(), GetCurrentProcessId(), &process,
                                    __uuidof(IWbemServices), services.Put());
        });
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
    HRESULT hr = ConnectOnce(nameSpaceText, localeText, connection);
    for (int attempt = 0; attempt < kAttempts && IsServerGone(hr); ++attempt)
    {
        hr = StartService();
        if (SUCCEEDED(hr))
            hr = ConnectOnce(nameSpaceText, localeText, connection);
    }
    return IsServerGone(hr) ? CO_E_SERVER_EXEC_FAILURE : hr;
}
} // namespace standin
