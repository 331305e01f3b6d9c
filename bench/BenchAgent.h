// An agent that costs as little as an agent can: it has a given number of tests, ten to an adapter, and
// every run ends at once. One test of each adapter fails, the others pass. Free-threaded.
#pragma once

#include "Common/src/com/ComObject.h"
#include "agent/Vorl.h"

#include <string>

class CBenchAgent final : public CComObject<IVormRoot, IVormDiag>
{
  public:
    // The tests of an adapter have the numbers 1 to 10; 9 and 10 are the sender and the responder.
    static constexpr size_t kTestsPerAdapter = 10;
    static constexpr ULONG kFailingTest = 4;
    static std::wstring AdapterKey(size_t index);

    explicit CBenchAgent(size_t tests) noexcept : m_adapters(tests / kTestsPerAdapter) {}

    STDMETHODIMP Initialize(ULONG) override { return S_OK; }
    STDMETHODIMP EnumAdapters(ULONG* count, BSTR** adapterKeys) override;
    STDMETHODIMP EnumDiagTests(BSTR adapterKey, ULONG* count, VormTestDescriptor** tests) override;
    STDMETHODIMP RunDiagTest(BSTR adapterKey, ULONG testId) override;
    STDMETHODIMP StopTest(BSTR, ULONG) override { return S_OK; }
    STDMETHODIMP GetDiagTestStatistics(BSTR adapterKey, ULONG testId, VormTestStatistics* stats) override;

  private:
    const size_t m_adapters;
};

// Lets this process's provider find the agent as it finds the real one. For as long as it lives; needs an
// initialised apartment.
class CBenchAgentRegistration
{
  public:
    explicit CBenchAgentRegistration(IVormRoot* agent);
    ~CBenchAgentRegistration();
    CBenchAgentRegistration(const CBenchAgentRegistration&) = delete;
    CBenchAgentRegistration& operator=(const CBenchAgentRegistration&) = delete;

  private:
    DWORD m_cookie = 0;
};
