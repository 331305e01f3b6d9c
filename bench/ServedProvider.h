// The provider in its own process, Drevok.EXE, activated and initialised as the management service does it:
// the benchmark is its only client and answers for its classes. Over the scripted agent, whose tests end at
// once. Trace and log are off, as shipped; what it would store at its end has no place to go.
#pragma once

#include "bench/RunRequest.h"
#include "bench/Schema.h"
#include "tests/system/support/ProviderMachine.h"

class CServedProvider
{
  public:
    explicit CServedProvider(size_t tests);
    // Lets the provider go and ends its process.
    ~CServedProvider() = default;
    CServedProvider(const CServedProvider&) = delete;
    CServedProvider& operator=(const CServedProvider&) = delete;

    IWbemServices& Services() noexcept { return *m_services; }
    IWbemContext* Context() noexcept { return m_context.Get(); }
    // Those of the tests that end by themselves.
    const std::vector<CRunRequest>& Runs() const noexcept { return m_runs; }
    // The private memory of its process, in bytes.
    size_t PrivateBytes() const;

  private:
    CProviderMachine m_machine;
    DressClass m_undressed;
    ComPtr<IWbemContext> m_context;
    ComPtr<IWbemServices> m_services;
    std::vector<CRunRequest> m_runs;
    DWORD m_process = 0;
};
