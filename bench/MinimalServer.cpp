// The least that a local server can do to deliver instances: it keeps the objects that it is given and
// indicates them one by one to whoever enumerates. Ends when its client lets go.
#include "Common/src/com/ComBoundary.h"
#include "Common/src/com/CriticalSection.h"
#include "Common/src/com/Owned.h"
#include "Common/src/wine/StubHold.h"
#include "bench/MinimalServerIds.h"
#include "standin/proxy/UnsupportedServices.h"

#include <objbase.h>
#include <vector>

namespace
{
CHandle& Ended()
{
    static CHandle ended(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    return ended;
}

class CMinimalServices final : public standin::CUnsupportedServices<>
{
  public:
    // One more object of which every later enumeration consists. Keeping the sink keeps the connection to the
    // client up from one request to the next, as the provider does with its name space.
    STDMETHODIMP PutInstanceAsync(IWbemClassObject* instance, LONG, IWbemContext*,
                                  IWbemObjectSink* sink) override
    {
        return AtComBoundary(
            [&]
            {
                m_objects.emplace_back(instance);
                m_client = ComPtr<IUnknown>(sink);
                return sink->SetStatus(WBEM_STATUS_COMPLETE, S_OK, nullptr, nullptr);
            });
    }
    // Forgets the objects.
    STDMETHODIMP CancelAsyncCall(IWbemObjectSink*) override
    {
        m_objects.clear();
        return S_OK;
    }
    STDMETHODIMP CreateInstanceEnumAsync(const BSTR, LONG, IWbemContext*, IWbemObjectSink* sink) override
    {
        for (const ComPtr<IWbemClassObject>& held : m_objects)
        {
            IWbemClassObject* object = held.Get();
            if (const HRESULT hr = sink->Indicate(1, &object); FAILED(hr))
                return hr;
        }
        return sink->SetStatus(WBEM_STATUS_COMPLETE, S_OK, nullptr, nullptr);
    }

  private:
    ~CMinimalServices() override { SetEvent(Ended().Get()); }

    std::vector<ComPtr<IWbemClassObject>> m_objects; // its one client makes one call at a time
    ComPtr<IUnknown> m_client;
};

class CFactory final : public CComObject<IClassFactory>
{
  public:
    STDMETHODIMP CreateInstance(IUnknown*, REFIID riid, void** out) override
    {
        return AtComBoundary([&] { return MakeCom<CMinimalServices>()->QueryInterface(riid, out); });
    }
    STDMETHODIMP LockServer(BOOL) override { return S_OK; }
};
} // namespace

int main()
{
    CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    // As the provider does: the calls of both carry the same security.
    CoInitializeSecurity(nullptr, -1, nullptr, nullptr, RPC_C_AUTHN_LEVEL_CALL, RPC_C_IMP_LEVEL_IMPERSONATE,
                         nullptr, EOAC_NONE, nullptr);
    HoldActivationStubs();
    DWORD cookie = 0;
    const HRESULT hr = CoRegisterClassObject(kClsidMinimalServer, MakeCom<CFactory>().Get(),
                                             CLSCTX_LOCAL_SERVER, REGCLS_MULTIPLEUSE, &cookie);
    // Whoever started the server asks for an object at once; ten minutes without its end mean a lost client.
    constexpr DWORD kLongest = 600000;
    if (SUCCEEDED(hr))
        WaitForSingleObject(Ended().Get(), kLongest);
    CoRevokeClassObject(cookie);
    CoUninitialize();
    return 0;
}
