// Test 1: is there a link, and does the network let the adapter use it?
#include "agent/AgentCodes.h"
#include "agent/host/HostTest.h"

HRESULT RunLinkTest(const CHostRun& run)
{
    CAdapterFacts adapter;
    const HRESULT hr = run.Read(adapter);
    if (FAILED(hr))
        return hr;
    if (adapter.AdminStatus != NET_IF_ADMIN_STATUS_UP)
        return vorl::link::Disabled;
    if (adapter.Media == MediaConnectStateDisconnected)
        return vorl::link::Down;
    if (adapter.NotAuthenticated)
        return vorl::link::NotAuthenticated;
    switch (adapter.OperStatus)
    {
    case IfOperStatusUp:
        return S_OK;
    case IfOperStatusDown:
    case IfOperStatusLowerLayerDown:
        return vorl::link::Down;
    case IfOperStatusUnknown:
        return vorl::link::Unknown;
    default: // being tested, dormant, not present
        return vorl::link::NotReady;
    }
}
