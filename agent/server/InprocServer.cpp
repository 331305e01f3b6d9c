// The four entry points of an agent that is loaded into its client's process.
#include "Common/src/com/ComBoundary.h"
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
    return ServerIsUnused() ? S_OK : S_FALSE;
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
