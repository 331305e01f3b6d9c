// The real agent: lists the machine's wired adapters and runs its tests on them. Free-threaded.
#pragma once

#include "Common/src/com/ComObject.h"
#include "agent/Vorl.h"
#include "agent/host/Measurements.h"
#include "agent/host/NetworkFacts.h"
#include "agent/server/RunTable.h"
#include "agent/server/ServerLife.h"

#include <memory>

class CHostAgent final : public CComObject<IVormRoot, IVormDiag>
{
  public:
    // How long counters are watched, in milliseconds.
    static constexpr DWORD kSampling = 2000;

    explicit CHostAgent(std::unique_ptr<INetworkFacts> network, DWORD sampling = kSampling) noexcept
        : m_network(std::move(network)), m_sampling(sampling)
    {
    }

    // Nothing to prepare; the flags have no meaning here.
    STDMETHODIMP Initialize(ULONG flags) override;
    // A machine without wired adapters gives an empty list.
    STDMETHODIMP EnumAdapters(ULONG* count, BSTR** adapterKeys) override;
    STDMETHODIMP EnumDiagTests(BSTR adapterKey, ULONG* count, VormTestDescriptor** tests) override;
    STDMETHODIMP RunDiagTest(BSTR adapterKey, ULONG testId) override;
    STDMETHODIMP StopTest(BSTR adapterKey, ULONG testId) override;
    // Of a sender or a responder while it runs.
    STDMETHODIMP GetDiagTestStatistics(BSTR adapterKey, ULONG testId, VormTestStatistics* stats) override;

  private:
    const std::unique_ptr<INetworkFacts> m_network;
    const DWORD m_sampling;
    CRunTable m_runs;
    CMeasurements m_measurements;
    CServerLock m_lock;
};
