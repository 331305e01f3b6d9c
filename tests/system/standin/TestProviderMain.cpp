// StandinTestProvider.exe: a provider process as small as one can be.
#include "Common/src/com/ComBoundary.h"
#include "Common/src/wine/StubHold.h"
#include "tests/system/standin/TestProvider.h"
#include "tests/system/standin/TestProviderIds.h"

namespace
{
class CProviderFactory : public CComObject<IClassFactory>
{
  public:
    explicit CProviderFactory(bool broken) noexcept : m_broken(broken) {}

    STDMETHODIMP CreateInstance(IUnknown* outer, REFIID riid, void** out) override
    {
        return AtComBoundary(
            [&]() -> HRESULT {
                return outer ? CLASS_E_NOAGGREGATION : MakeTestProvider(m_broken)->QueryInterface(riid, out);
            });
    }
    STDMETHODIMP LockServer(BOOL) override { return S_OK; }

  private:
    const bool m_broken;
};
} // namespace

int main()
{
    CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    HoldActivationStubs();
    HoldStubs({__uuidof(IWbemProviderInit), __uuidof(IWbemServices)});
    DWORD cookies[2] = {};
    CoRegisterClassObject(kTestProvider, MakeCom<CProviderFactory>(false).Get(), CLSCTX_LOCAL_SERVER,
                          REGCLS_MULTIPLEUSE, &cookies[0]);
    CoRegisterClassObject(kBrokenProvider, MakeCom<CProviderFactory>(true).Get(), CLSCTX_LOCAL_SERVER,
                          REGCLS_MULTIPLEUSE, &cookies[1]);
    WaitForLastProvider();
    for (const DWORD cookie : cookies)
        CoRevokeClassObject(cookie);
    // COM is left as it is: the call that released the last object may still be under way, and Wine can miss
    // its end and wait for it for ever.
    return 0;
}
