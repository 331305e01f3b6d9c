// An agent without adapters: it lists, runs and fails what its script says. Free-threaded, as every agent.
#pragma once

#include "Common/src/com/ComObject.h"
#include "agent/Vorl.h"
#include "agent/scripted/ScriptPlay.h"
#include "agent/server/RunTable.h"
#include "agent/server/ServerLife.h"

#include <atomic>
#include <functional>
#include <memory>

// What a scripted "Throw" does. An exception cannot cross processes: what a client of a local server sees of
// one is the code that COM makes of it.
enum class ScriptedThrow
{
    RaisesException,
    IsServerFault
};

class CScriptedAgent final : public CComObject<IVormRoot, IVormDiag>
{
  public:
    // `load` gives the script when the agent is initialised; it may throw CScriptError.
    CScriptedAgent(std::function<CScript()> load, ScriptedThrow onThrow)
        : m_load(std::move(load)), m_throw(onThrow)
    {
    }

    STDMETHODIMP_(ULONG) Release() override;
    // Loads the script; a second call changes nothing. The flags have no meaning here.
    STDMETHODIMP Initialize(ULONG flags) override;
    STDMETHODIMP EnumAdapters(ULONG* count, BSTR** adapterKeys) override;
    STDMETHODIMP EnumDiagTests(BSTR adapterKey, ULONG* count, VormTestDescriptor** tests) override;
    STDMETHODIMP RunDiagTest(BSTR adapterKey, ULONG testId) override;
    STDMETHODIMP StopTest(BSTR adapterKey, ULONG testId) override;
    STDMETHODIMP GetDiagTestStatistics(BSTR adapterKey, ULONG testId, VormTestStatistics* stats) override;

  private:
    HRESULT Load();
    // Runs `body` unless the script has a fault for the call.
    template <class Body>
    HRESULT Perform(Call call, BSTR adapterKey, std::optional<ULONG> testId, Body&& body);

    const std::function<CScript()> m_load;
    const ScriptedThrow m_throw;
    std::atomic<std::shared_ptr<CScriptPlay>> m_play;
    CRunTable m_runs;
    CServerLock m_lock;
};
