// WmiStandin.dll: the locator, the proxy/stub of the management interfaces and the unmarshallers of the
// by-value objects, in whatever process asks COM for them.
#include "Common/src/com/ComBoundary.h"
#include "Common/src/com/ComObject.h"
#include "standin/locator/DllRegistration.h"
#include "standin/locator/Locator.h"
#include "standin/object/Objects.h"
#include "standin/proxy/HeldReference.h"

// The generated proxy/stub's own entry points.
extern "C" BOOL WINAPI ProxyDllMain(HINSTANCE instance, DWORD reason, void* reserved);
extern "C" HRESULT WINAPI ProxyDllGetClassObject(REFCLSID clsid, REFIID riid, void** out);
extern "C" HRESULT WINAPI ProxyDllCanUnloadNow();
extern "C" HRESULT WINAPI ProxyDllRegisterServer();

namespace
{
HINSTANCE g_instance = nullptr;
std::atomic<long> g_locks{0};

class CLocatorFactory : public CComObject<IClassFactory>
{
  public:
    STDMETHODIMP CreateInstance(IUnknown* outer, REFIID riid, void** out) override
    {
        return AtComBoundary(
            [&]() -> HRESULT
            {
                if (!out)
                    return E_POINTER;
                *out = nullptr;
                if (outer)
                    return CLASS_E_NOAGGREGATION;
                return MakeCom<standin::CLocator>()->QueryInterface(riid, out);
            });
    }
    STDMETHODIMP LockServer(BOOL lock) override
    {
        g_locks += lock ? 1 : -1;
        return S_OK;
    }
};
} // namespace

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, void* reserved)
{
    if (reason == DLL_PROCESS_ATTACH)
        g_instance = instance;
    return ProxyDllMain(instance, reason, reserved);
}

STDAPI DllGetClassObject(REFCLSID clsid, REFIID riid, void** out)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (!out)
                return E_POINTER;
            *out = nullptr;
            if (IsEqualCLSID(clsid, CLSID_WbemLocator))
                return MakeCom<CLocatorFactory>()->QueryInterface(riid, out);
            if (IsEqualCLSID(clsid, standin::kHeldUnmarshaler))
                return standin::GetHeldClassObject(riid, out);
            const HRESULT hr = standin::GetUnmarshalClassObject(clsid, riid, out);
            return hr == CLASS_E_CLASSNOTAVAILABLE ? ProxyDllGetClassObject(clsid, riid, out) : hr;
        });
}

STDAPI DllCanUnloadNow()
{
    return g_locks == 0 && g_liveComObjects == 0 ? ProxyDllCanUnloadNow() : S_FALSE;
}

STDAPI DllRegisterServer()
{
    return AtComBoundary(
        []
        {
            const HRESULT hr = ProxyDllRegisterServer();
            return FAILED(hr) ? hr : standin::RegisterClasses(g_instance);
        });
}
