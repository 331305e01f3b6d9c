#include "tests/support/InProcessProvider.h"

#include "CDM/src/ZebRegistry.h"
#include "Common/src/WomClassCache.h"
#include "agent/VorlIds.h"

#include <stdexcept>

namespace
{
constexpr DWORD kTestAgent = 1;

class CAgentClass final : public CComObject<IClassFactory>
{
  public:
    explicit CAgentClass(IUnknown* agent) : m_agent(agent) {}

    STDMETHODIMP CreateInstance(IUnknown*, REFIID riid, void** out) override
    {
        return m_agent->QueryInterface(riid, out);
    }
    STDMETHODIMP LockServer(BOOL) override { return S_OK; }

  private:
    ComPtr<IUnknown> m_agent;
};
} // namespace

CAgentScope::CAgentScope(IUnknown* agent)
{
    const auto agentClass = MakeCom<CAgentClass>(agent);
    if (FAILED(CoRegisterClassObject(kClsidVorlTest, agentClass.Get(), CLSCTX_INPROC_SERVER,
                                     REGCLS_MULTIPLEUSE, &m_registration)))
        throw std::runtime_error("the fake agent's class could not be registered");
}

CAgentScope::~CAgentScope()
{
    CoRevokeClassObject(m_registration);
}

CInProcessProvider::CInProcessProvider(std::span<const CHandlerRow> handlers, const CEngineSeams& seams)
    : CInProcessProvider(handlers, seams, nullptr)
{
}

CInProcessProvider::CInProcessProvider(IUnknown* agent, const CEngineSeams& seams)
    : CInProcessProvider(ServedHandlers(), seams, agent)
{
}

CInProcessProvider::CInProcessProvider(std::span<const CHandlerRow> handlers, const CEngineSeams& seams,
                                       IUnknown* agent)
    : m_handlers(handlers), m_seams(seams), m_agentScope(agent ? agent : static_cast<IVormRoot*>(Agent.Get()))
{
    Registry.SetNumber(kProvidersKey, "TestVorl", kTestAgent);
    m_paths.InstallDir = Folder.Path().string() + "\\";
    m_paths.ResultStorePath = (Folder.Path() / L"ZebDiag.bin").wstring();
    Provider = MakeCom<CProviderImp>(m_paths, Lock, m_handlers, m_seams);
}

CInProcessProvider::~CInProcessProvider()
{
    Release();
    WomClassCache::Drop();
}

LONG CInProcessProvider::Initialize(IWbemContext* context)
{
    const auto sink = MakeCom<CInitSink>();
    wchar_t user[] = L"HALVERN\\tester";
    wchar_t nameSpace[] = L"root\\cimv2";
    wchar_t locale[] = L"ms_409";
    if (Provider->Initialize(user, 0, nameSpace, locale, Services.Get(), context, sink.Get()) !=
            WBEM_S_NO_ERROR ||
        sink->Statuses.size() != 1 || sink->Flags() != 0)
        throw std::runtime_error("the provider's initialisation did not end with one status");
    return sink->Statuses[0];
}

void CInProcessProvider::Restart(std::span<const CHandlerRow> handlers)
{
    Release();
    m_handlers = handlers;
    Provider = MakeCom<CProviderImp>(m_paths, Lock, m_handlers, m_seams);
}
