#include "agent/server/AgentClass.h"

#include "Common/src/com/ComBoundary.h"
#include "Common/src/com/ComObject.h"
#include "agent/server/ServerLife.h"

namespace
{
// Holds no server lock of its own: a local server's registration keeps the factory for the life of the
// process.
class CAgentFactory final : public CComObject<IClassFactory>
{
  public:
    explicit CAgentFactory(const CAgentClass& agent) noexcept : m_agent(agent) {}

    STDMETHODIMP CreateInstance(IUnknown* outer, REFIID riid, void** out) override
    {
        if (!out)
            return E_POINTER;
        *out = nullptr;
        if (outer)
            return CLASS_E_NOAGGREGATION;
        return AtComBoundary([&] { return m_agent.Create(riid, out); });
    }
    STDMETHODIMP LockServer(BOOL lock) override
    {
        if (lock)
            AddServerLock();
        else
            DropServerLock();
        return S_OK;
    }

  private:
    const CAgentClass& m_agent;
};
} // namespace

HRESULT GetAgentFactory(const CAgentClass& agent, REFIID riid, void** out) noexcept
{
    return AtComBoundary([&] { return MakeCom<CAgentFactory>(agent)->QueryInterface(riid, out); });
}
