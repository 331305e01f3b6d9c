// The provider object in this process, over an agent with a given number of tests. The registry that it sees
// is empty, as after an installation without any settings; what it would store at its end has no place to
// go, so that its end costs nothing.
#pragma once

#include "CDM/src/ProviderImp.h"
#include "bench/BenchAgent.h"
#include "bench/CountingSink.h"
#include "bench/Schema.h"
#include "tests/support/RegistryScope.h"

class CInProcessProvider
{
  public:
    explicit CInProcessProvider(size_t tests);
    CInProcessProvider(const CInProcessProvider&) = delete;
    CInProcessProvider& operator=(const CInProcessProvider&) = delete;

    IWbemServices& Services() noexcept { return *m_provider; }
    IVormDiag& Agent() noexcept { return *m_agent; }
    IWbemContext* Context() noexcept { return m_context.Get(); }
    size_t Tests() const noexcept { return m_tests; }

    // Has every test run once, so that there are as many results as tests.
    void RunAll();
    // From now on the provider gets its classes as `dress` makes them, or as they are. For no request at all.
    void Dress(DressClass dress);
    // All instances of a class to the sink.
    void Enumerate(const wchar_t* className, IWbemObjectSink& sink);

  private:
    // Keeps nothing alive: the benchmark itself does.
    class CNoLock final : public IServerLock
    {
      public:
        LONG Lock() noexcept override { return 1; }
        LONG Unlock() noexcept override { return 1; }
    };

    const size_t m_tests;
    CRegistryScope m_registry;
    CNoLock m_lock;
    ComPtr<CBenchAgent> m_agent;
    CBenchAgentRegistration m_registration;
    ComPtr<IWbemContext> m_context;
    DressClass m_dress;
    ComPtr<CProviderImp> m_provider;
};
