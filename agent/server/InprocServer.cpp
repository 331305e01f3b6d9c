// The four entry points of an agent that is loaded into its client's process.
#include "Common/src/com/ComBoundary.h"
#include "Common/src/com/ComObject.h"
#include "agent/server/AgentRegistration.h"
#include "agent/server/ServerLife.h"

#include <olectl.h>

STDAPI DllGetClassObject(REFCLSID classId, REFIID riid, void** out)
{
    if (!out)
        return E_POINTER;
    *out = nullptr;
    if (!IsEqualCLSID(classId, ServedAgent().Id))
        return CLASS_E_CLASSNOTAVAILABLE;
    return GetAgentFactory(ServedAgent(), riid, out);
}

STDAPI DllCanUnloadNow()
{
    // Unlike a local server, which outlives its factory's clients, a library has to stay for them too.
    return ServerIsUnused() && g_liveComObjects == 0 ? S_OK : S_FALSE;
}

STDAPI DllRegisterServer()
{
    const HRESULT hr = AtComBoundary([] { return RegisterAgent(ServedAgent(), ServerKind::InProcess); });
    return FAILED(hr) ? SELFREG_E_CLASS : S_OK;
}

STDAPI DllUnregisterServer()
{
    const HRESULT hr = AtComBoundary([] { return UnregisterAgent(ServedAgent(), ServerKind::InProcess); });
    return FAILED(hr) ? SELFREG_E_CLASS : S_OK;
}
