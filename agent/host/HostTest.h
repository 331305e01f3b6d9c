// The tests that the real agent offers on every wired adapter. None changes anything.
#pragma once

#include "agent/host/NetworkFacts.h"
#include "agent/host/stamp/Measurement.h"

#include <span>

// One run of a test, as the test sees it.
class CHostRun
{
  public:
    // `stop` is signalled once the run is to be stopped; `sampling` is how long counters are watched, in ms;
    // `measurement` is where sender and responder keep their record.
    CHostRun(INetworkFacts& network, const std::wstring& adapterKey, HANDLE stop, DWORD sampling,
             CMeasurement* measurement = nullptr) noexcept
        : m_network(network), m_adapterKey(adapterKey), m_stop(stop), m_sampling(sampling),
          m_measurement(measurement)
    {
    }

    INetworkFacts& Network() const noexcept { return m_network; }
    const std::wstring& AdapterKey() const noexcept { return m_adapterKey; }
    HANDLE StopEvent() const noexcept { return m_stop; }
    bool IsStopped() const noexcept { return WaitForSingleObject(m_stop, 0) == WAIT_OBJECT_0; }
    CMeasurement& Measurement() const noexcept { return *m_measurement; }
    // Lets the sampling interval pass; false where the run was stopped before its end.
    bool Sample() const noexcept { return WaitForSingleObject(m_stop, m_sampling) == WAIT_TIMEOUT; }

    // The adapter as it is now. Fails where the adapter is gone or the system does not tell.
    HRESULT Read(CAdapterFacts& adapter) const;

  private:
    INetworkFacts& m_network;
    const std::wstring& m_adapterKey;
    HANDLE m_stop;
    DWORD m_sampling;
    CMeasurement* m_measurement;
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
// These two run until they are stopped, which is S_OK, or until they have failed. They need a measurement.
HRESULT RunSenderTest(const CHostRun& run);
HRESULT RunResponderTest(const CHostRun& run);

struct CHostTest
{
    ULONG Id;
    HRESULT (*Run)(const CHostRun& run);
    bool IsMeasured = false; // the sender and the responder
};
// All tests by their numbers.
std::span<const CHostTest> HostTests() noexcept;
