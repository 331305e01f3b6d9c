// The tests that the real agent offers on every wired adapter. Each looks, and changes nothing.
#pragma once

#include "agent/host/NetworkFacts.h"

#include <span>

// One run of a test, as the test sees it.
class CHostRun
{
  public:
    // `stop` is signalled once the run is to be stopped; `sampling` is how long counters are watched, in ms.
    CHostRun(INetworkFacts& network, const std::wstring& adapterKey, HANDLE stop, DWORD sampling) noexcept
        : m_network(network), m_adapterKey(adapterKey), m_stop(stop), m_sampling(sampling)
    {
    }

    INetworkFacts& Network() const noexcept { return m_network; }
    const std::wstring& AdapterKey() const noexcept { return m_adapterKey; }
    HANDLE StopEvent() const noexcept { return m_stop; }
    bool IsStopped() const noexcept { return WaitForSingleObject(m_stop, 0) == WAIT_OBJECT_0; }
    // Lets the sampling interval pass; false where the run was stopped before its end.
    bool Sample() const noexcept { return WaitForSingleObject(m_stop, m_sampling) == WAIT_TIMEOUT; }

    // The adapter as it is now. Fails where the adapter is gone or the system does not tell.
    HRESULT Read(CAdapterFacts& adapter) const;

  private:
    INetworkFacts& m_network;
    const std::wstring& m_adapterKey;
    HANDLE m_stop;
    DWORD m_sampling;
};

// S_OK: passed; vorl::Stopped: stopped before it was done. Every failure is a code of agent/AgentCodes.h.
HRESULT RunLinkTest(const CHostRun& run);
HRESULT RunSpeedTest(const CHostRun& run);
HRESULT RunErrorsTest(const CHostRun& run);
HRESULT RunDiscardsTest(const CHostRun& run);
HRESULT RunAddressTest(const CHostRun& run);
HRESULT RunGatewayTest(const CHostRun& run);
HRESULT RunNamesTest(const CHostRun& run);
HRESULT RunStateTest(const CHostRun& run);

struct CHostTest
{
    ULONG Id;
    HRESULT (*Run)(const CHostRun& run);
};
// All tests by their numbers; 9 and 10, the sender and the responder, are not among them.
std::span<const CHostTest> HostTests() noexcept;
