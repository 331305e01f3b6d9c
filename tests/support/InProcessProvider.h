// The provider object with everything that it needs in the test's own process: the shipped schema, a fake
// agent that it loads through COM, a registry and a folder of its own.
#pragma once

#include "CDM/src/ProviderImp.h"
#include "tests/support/Allocations.h"
#include "tests/support/FakeAgent.h"
#include "tests/support/FakeSink.h"
#include "tests/support/RegistryScope.h"
#include "tests/support/ServedSchema.h"
#include "tests/support/TempFolder.h"

#include <vector>

// Counts, and writes down what happens when.
class CCountingLock final : public IServerLock
{
  public:
    LONG Lock() noexcept override { return InterlockedIncrement(&m_count); }
    LONG Unlock() noexcept override { return InterlockedDecrement(&m_count); }
    LONG Count() const noexcept { return m_count; }

  private:
    volatile LONG m_count = 0;
};

// Learns how an initialisation ended.
class CInitSink final : public CComObject<IWbemProviderInitSink>
{
  public:
    std::vector<LONG> Statuses;

    STDMETHODIMP SetStatus(LONG status, LONG flags) override
    {
        const CSparedAllocations spared;
        Statuses.push_back(status);
        m_flags |= flags;
        return S_OK;
    }
    LONG Flags() const noexcept { return m_flags; }

  private:
    LONG m_flags = 0;
};

// Serves one object as the test agent's class, in this process, while it lives.
class CAgentScope
{
  public:
    explicit CAgentScope(IUnknown* agent);
    CAgentScope(const CAgentScope&) = delete;
    CAgentScope& operator=(const CAgentScope&) = delete;
    ~CAgentScope();

  private:
    DWORD m_registration = 0;
};

class CInProcessProvider
{
  public:
    // The engine works with the seams for as long as the object lives.
    explicit CInProcessProvider(std::span<const CHandlerRow> handlers = ServedHandlers(),
                                const CEngineSeams& seams = {});
    // With an agent of the test's own in place of the fake one.
    CInProcessProvider(IUnknown* agent, const CEngineSeams& seams);
    CInProcessProvider(const CInProcessProvider&) = delete;
    CInProcessProvider& operator=(const CInProcessProvider&) = delete;
    ~CInProcessProvider();

    // What the init sink learned.
    LONG Initialize(IWbemContext* context = nullptr);
    // Ends the provider object, as the management service does when it is no longer used.
    void Release() { Provider.Reset(); }
    // A new provider object, as after the process's next start.
    void Restart() { Restart(m_handlers); }
    void Restart(std::span<const CHandlerRow> handlers);

    CRegistryScope Registry;
    CTempFolder Folder;
    CallPlan Plan = std::make_shared<CCallPlan>();
    ComPtr<CFakeServices> Services = MakeServedNamespace(Plan);
    ComPtr<CFakeAgent> Agent = MakeCom<CFakeAgent>();
    CCountingLock Lock;
    ComPtr<CProviderImp> Provider;

  private:
    CInProcessProvider(std::span<const CHandlerRow> handlers, const CEngineSeams& seams, IUnknown* agent);

    std::span<const CHandlerRow> m_handlers;
    const CEngineSeams m_seams;
    CHostPaths m_paths;
    CAgentScope m_agentScope;
};

// A BSTR for the length of a call.
inline CBstr Bstr(const wchar_t* text)
{
    return CBstr(text);
}
