#include "standin/service/Provider.h"

#include "Common/src/com/ComObject.h"
#include "Common/src/com/WmiStatus.h"
#include "standin/object/Objects.h"
#include "standin/service/Activation.h"
#include "standin/service/Settings.h"

#include <mutex>
#include <wbemprov.h>

namespace standin
{
namespace
{
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

    // Waits for the status; RPC_E_SERVER_DIED where the process ends without one.
    HRESULT Await(const CHandle& process) const
    {
        const HANDLE either[] = {m_told.Get(), process.Get()};
        return WaitForMultipleObjects(2, either, FALSE, INFINITE) == WAIT_OBJECT_0 ? m_status.load()
                                                                                   : RPC_E_SERVER_DIED;
    }

  private:
    const CHandle m_told;
    std::atomic<HRESULT> m_status{WBEM_S_NO_ERROR};
};

// A call that breaks because its process ends leaves Wine's connection to that process open for good, and
// Wine finds connections by the number of the process: a later provider of the same number would refuse every
// call. As long as a handle of a process is open, its number does not come again.
void KeepNumber(const CHandle& process)
{
    static std::mutex mutex;
    static std::vector<CHandle> kept;
    CHandle copy;
    if (!DuplicateHandle(GetCurrentProcess(), process.Get(), GetCurrentProcess(), copy.Put(), 0, FALSE,
                         DUPLICATE_SAME_ACCESS))
        return;
    const std::lock_guard lock(mutex);
    kept.push_back(std::move(copy));
}

// Leaves in `step` what it did last.
HRESULT LoadOnce(const CLSID& clsid, const std::wstring& nameSpace, IWbemServices* nameSpaceServices,
                 CProvider& provider, const wchar_t*& step)
{
    CLocalServer server;
    HRESULT hr = ActivateLocalServer(clsid, __uuidof(IWbemProviderInit), server, step);
    if (FAILED(hr))
        return hr;
    KeepNumber(server.Process);
    ComPtr<IWbemProviderInit> init;
    ComPtr<IWbemServices> services;
    step = L"query for IWbemProviderInit";
    hr = server.Object.As(init);
    if (SUCCEEDED(hr))
    {
        step = L"query for IWbemServices";
        hr = init.As(services);
    }
    const ComPtr<CInitSink> sink = MakeCom<CInitSink>();
    std::wstring nameSpaceText = nameSpace;
    // No user and no locale: those are for providers that are initialised once for each.
    if (SUCCEEDED(hr))
    {
        step = L"Initialize";
        hr = init->Initialize(nullptr, 0, nameSpaceText.data(), nullptr, nameSpaceServices,
                              MakeContext().Get(), sink.Get());
    }
    if (SUCCEEDED(hr))
        hr = sink->Await(server.Process);
    if (FAILED(hr))
        return hr;
    provider.Services = std::move(services);
    provider.Process = std::move(server.Process);
    return S_OK;
}
} // namespace

HRESULT LoadProvider(const CProviderRegistration& registration, const std::wstring& nameSpace,
                     IWbemServices* nameSpaceServices, CProvider& provider)
{
    CLSID clsid = {};
    if (FAILED(CLSIDFromString(registration.Clsid.c_str(), &clsid)))
        return wmi::ProviderLoadFailure;
    const wchar_t* step = L"";
    HRESULT hr = LoadOnce(clsid, nameSpace, nameSpaceServices, provider, step);
    if (IsServerGone(hr))
    {
        // It was found while it was ending; the next one is another process.
        Count(kStartsRepeated);
        hr = LoadOnce(clsid, nameSpace, nameSpaceServices, provider, step);
    }
    if (SUCCEEDED(hr))
        return wmi::NoError;
    NoteStartFailure(hr, step);
    return wmi::ProviderLoadFailure;
}
} // namespace standin
