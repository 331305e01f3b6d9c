#include "Common/src/VormAgentMgr.h"

#include "CDM/src/ZebDebug.h"
#include "CDM/src/ZebHelpers.h"
#include "CDM/src/ZebTrace.h"
#include "Common/src/com/ComBoundary.h"
#include "agent/VorlIds.h"

namespace
{
constexpr char kSourceFile[] = "Common/src/VormAgentMgr";

// Values of the agent selector; every other one means the real agent.
enum : DWORD
{
    kTestAgent = 1,
    kProxyAgent = 2,
};

HRESULT CreateAgent(const CLSID& agentClass, ComPtr<IVormRoot>& root)
{
    switch (ReadAgentSelector())
    {
    case kTestAgent:
        ZebDebug().Write("Using test Vorl");
        return CoCreateInstance(kClsidVorlTest, nullptr, CLSCTX_ALL, __uuidof(IVormRoot), root.PutVoid());
    case kProxyAgent:
    {
        ZebDebug().Write("Using proxy Vorl");
        ComPtr<IUnknown> proxy;
        const HRESULT hr =
            CoCreateInstance(agentClass, nullptr, CLSCTX_LOCAL_SERVER, __uuidof(IUnknown), proxy.PutVoid());
        return SUCCEEDED(hr) ? proxy.As(root) : hr;
    }
    default:
        ZebDebug().Write("Using real Vorl");
        return CoCreateInstance(agentClass, nullptr, CLSCTX_ALL, __uuidof(IVormRoot), root.PutVoid());
    }
}
} // namespace

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

HRESULT CVormAgentMgr::Initialize(ULONG flags, const CLSID& agentClass)
{
    CZebTrace trace("CVormAgentMgr::Initialize");
    if (const HRESULT hr = CreateAgent(agentClass, m_root); FAILED(hr))
    {
        ZebDebug().Error(kSourceFile, 307, "Failed to load Vorl 0x%x", static_cast<unsigned>(hr)); // sic
        ZebDebug().SystemError(static_cast<DWORD>(hr));
        return hr;
    }
    ZebDebug().Write("Successfully loaded Vorl");
    CVormRoot().SetInterfaceSecurity(m_root.Get());
    if (!m_root)
    {
        ZebDebug().Error(kSourceFile, 320, "No Vorl pointer"); // sic
        return E_FAIL;
    }
    const HRESULT hr = AtComBoundary([&] { return m_root->Initialize(flags); });
    ZebDebug().Write("Vorl Initialize returned 0x%x", static_cast<unsigned>(hr));
    return hr;
}

CVormAgentMgr::~CVormAgentMgr()
{
    CZebTrace trace("~CVormAgentMgr()");
    IVormRoot* const root = m_root.Detach();
    if (!root)
        return;
    try
    {
        root->Release();
    }
    catch (...)
    {
        ZebDebug().Write("CATCH IN Vorl RELEASE");
    }
}
