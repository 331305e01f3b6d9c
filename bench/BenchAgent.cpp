#include "bench/BenchAgent.h"

#include "Common/src/com/ComBoundary.h"
#include "agent/AgentCodes.h"
#include "agent/VorlIds.h"
#include "agent/server/VormLists.h"
#include "bench/Must.h"

#include <cwchar>

namespace
{
// Hands the one agent out for every object that is asked for.
class CAgentFactory final : public CComObject<IClassFactory>
{
  public:
    explicit CAgentFactory(IVormRoot* agent) noexcept : m_agent(agent) {}

    STDMETHODIMP CreateInstance(IUnknown*, REFIID riid, void** out) override
    {
        return m_agent->QueryInterface(riid, out);
    }
    STDMETHODIMP LockServer(BOOL) override { return S_OK; }

  private:
    const ComPtr<IVormRoot> m_agent;
};
} // namespace

std::wstring CBenchAgent::AdapterKey(size_t index)
{
    wchar_t key[64];
    _snwprintf(key, std::size(key), L"{6B29FC40-CA47-1067-B31D-%012X}", static_cast<unsigned>(index));
    return key;
}

STDMETHODIMP CBenchAgent::EnumAdapters(ULONG* count, BSTR** adapterKeys)
{
    return AtComBoundary(
        [&]
        {
            std::vector<std::wstring> keys;
            for (size_t i = 0; i < m_adapters; ++i)
                keys.push_back(AdapterKey(i));
            return HandOutKeys(keys, count, adapterKeys);
        });
}

STDMETHODIMP CBenchAgent::EnumDiagTests(BSTR, ULONG* count, VormTestDescriptor** tests)
{
    return AtComBoundary(
        [&]
        {
            std::vector<VormTestDescriptor> list;
            for (ULONG id = 1; id <= kTestsPerAdapter; ++id)
                list.push_back({id, 0, 0});
            return HandOutTests(list, count, tests);
        });
}

STDMETHODIMP CBenchAgent::RunDiagTest(BSTR, ULONG testId)
{
    return testId == kFailingTest ? vorl::discards::Receive : S_OK;
}

STDMETHODIMP CBenchAgent::GetDiagTestStatistics(BSTR, ULONG, VormTestStatistics* stats)
{
    *stats = {};
    return S_OK;
}

CBenchAgentRegistration::CBenchAgentRegistration(IVormRoot* agent)
{
    Must(CoRegisterClassObject(kClsidVorl, MakeCom<CAgentFactory>(agent).Get(), CLSCTX_INPROC_SERVER,
                               REGCLS_MULTIPLEUSE, &m_cookie),
         "registering the agent");
}

CBenchAgentRegistration::~CBenchAgentRegistration()
{
    CoRevokeClassObject(m_cookie);
}
