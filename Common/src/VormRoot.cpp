#include "Common/src/VormRoot.h"

#include "CDM/src/ZebDebug.h"
#include "CDM/src/ZebTrace.h"

#include <objbase.h>

void CVormRoot::SetInterfaceSecurity(IUnknown* agent) const noexcept
{
    CZebTrace trace("CVormRoot::SetInterfaceSecurity");
    if (!m_security.Enabled())
    {
        ZebDebug().Write("Not enabled");
        return;
    }
    // An agent that lives in this process has no blanket to set, so that failure means nothing here.
    if (agent)
        CoSetProxyBlanket(agent, RPC_C_AUTHN_WINNT, RPC_C_AUTHZ_NONE, nullptr, RPC_C_AUTHN_LEVEL_CALL,
                          RPC_C_IMP_LEVEL_IMPERSONATE, nullptr, EOAC_NONE);
}
