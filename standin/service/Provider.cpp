#include "standin/service/Provider.h"

#include "Common/src/com/ComBoundary.h"
#include "Common/src/com/ComObject.h"
#include "Common/src/com/CriticalSection.h"
#include "Common/src/com/Owned.h"
#include "Common/src/com/WmiStatus.h"
#include "standin/locator/RemoteFailure.h"
#include "standin/object/Objects.h"
#include "standin/service/Activation.h"

#include <wbemprov.h>

namespace standin
{
namespace
{
// A provider that is just ending may be found but not reached any more; the next attempt starts another.
constexpr int kAttempts = 3;
constexpr DWORD kPauseMilliseconds = 500;
// How often a silent provider is asked whether it still lives.
constexpr DWORD kLookMilliseconds = 1000;

class CInitSink : public CComObject<IWbemProviderInitSink>
{
  public:
    CInitSink() : m_told(CreateEventW(nullptr, TRUE, FALSE, nullptr)) {}

    STDMETHODIMP SetStatus(LONG status, LONG) override
    {
        m_status = status;
        SetEvent(m_told.Get());
        return WBEM_S_NO_ERROR;
    }

    bool Wait(DWORD milliseconds) const
    {
        return WaitForSingleObject(m_told.Get(), milliseconds) == WAIT_OBJECT_0;
    }
    HRESULT Status() const { return m_status; }

  private:
    const CHandle m_told;
    std::atomic<HRESULT> m_status{WBEM_S_NO_ERROR};
};

HRESULT LoadOnce(const CLSID& clsid, const std::wstring& nameSpace, IWbemServices* nameSpaceServices,
                 ComPtr<IWbemServices>& provider)
{
    ComPtr<IWbemProviderInit> init;
    HRESULT hr = ActivateLocalServer(clsid, __uuidof(IWbemProviderInit), init.PutVoid());
    if (FAILED(hr))
        return hr;
    const ComPtr<CInitSink> sink = MakeCom<CInitSink>();
    std::wstring nameSpaceText = nameSpace;
    // No user and no locale: those are for providers that are initialised once for each.
    hr = CallProcess(
        [&]
        {
            return init->Initialize(nullptr, 0, nameSpaceText.data(), nullptr, nameSpaceServices,
                                    MakeContext().Get(), sink.Get());
        });
    if (FAILED(hr))
        return hr;
    ComPtr<IWbemServices> services;
    hr = init.As(services);
    if (FAILED(hr))
        return hr;
    while (!sink->Wait(kLookMilliseconds))
        if (!IsProviderAlive(services.Get()))
            return RPC_E_DISCONNECTED;
    hr = sink->Status();
    if (SUCCEEDED(hr))
        provider = std::move(services);
    return hr;
}
} // namespace

HRESULT LoadProvider(const CProviderRegistration& registration, const std::wstring& nameSpace,
                     IWbemServices* nameSpaceServices, ComPtr<IWbemServices>& provider)
{
    CLSID clsid = {};
    if (FAILED(CLSIDFromString(registration.Clsid.c_str(), &clsid)))
        return wmi::ProviderLoadFailure;
    for (int attempt = 0; attempt < kAttempts; ++attempt)
    {
        if (attempt > 0)
            Sleep(kPauseMilliseconds);
        const HRESULT hr = LoadOnce(clsid, nameSpace, nameSpaceServices, provider);
        if (!IsServerGone(hr))
            return SUCCEEDED(hr) ? wmi::NoError : wmi::ProviderLoadFailure;
    }
    return wmi::ProviderLoadFailure;
}

bool IsProviderAlive(IWbemServices* provider)
{
    // There is no such call. What the provider says to that does not matter; that it says something does.
    return !IsServerGone(CallProcess([&] { return provider->CancelAsyncCall(nullptr); }));
}
} // namespace standin
