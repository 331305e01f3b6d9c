// Tests 3 and 4: do error and discard counters grow while they are watched?
#include "agent/AgentCodes.h"
#include "agent/host/HostTest.h"

namespace
{
struct CCounterTest
{
    ULONG64 CTrafficCounters::*Received;
    ULONG64 CTrafficCounters::*Transmitted;
    HRESULT ReceiveGrew;
    HRESULT TransmitGrew;
    HRESULT BothGrew;
    HRESULT Reset;
    HRESULT NotUp;
};

constexpr CCounterTest kErrors = {&CTrafficCounters::ReceiveErrors,
                                  &CTrafficCounters::TransmitErrors,
                                  vorl::errors::Receive,
                                  vorl::errors::Transmit,
                                  vorl::errors::Both,
                                  vorl::errors::CountersReset,
                                  vorl::errors::NotUp};
constexpr CCounterTest kDiscards = {&CTrafficCounters::ReceiveDiscards,
                                    &CTrafficCounters::TransmitDiscards,
                                    vorl::discards::Receive,
                                    vorl::discards::Transmit,
                                    vorl::discards::Both,
                                    vorl::discards::CountersReset,
                                    vorl::discards::NotUp};

// Counters that cannot count, because no traffic can pass, would make the test pass for nothing.
HRESULT ReadWhileUp(const CHostRun& run, const CCounterTest& test, CTrafficCounters& counters)
{
    CAdapterFacts adapter;
    const HRESULT hr = run.Read(adapter);
    if (FAILED(hr))
        return hr;
    counters = adapter.Traffic;
    return adapter.OperStatus == IfOperStatusUp ? S_OK : test.NotUp;
}

HRESULT Watch(const CHostRun& run, const CCounterTest& test)
{
    CTrafficCounters before;
    CTrafficCounters after;
    HRESULT hr = ReadWhileUp(run, test, before);
    if (FAILED(hr))
        return hr;
    if (!run.Sample())
        return vorl::Stopped;
    hr = ReadWhileUp(run, test, after);
    if (FAILED(hr))
        return hr;
    if (after.*test.Received < before.*test.Received || after.*test.Transmitted < before.*test.Transmitted)
        return test.Reset;
    const bool received = after.*test.Received > before.*test.Received;
    const bool transmitted = after.*test.Transmitted > before.*test.Transmitted;
    if (received && transmitted)
        return test.BothGrew;
    if (received)
        return test.ReceiveGrew;
    return transmitted ? test.TransmitGrew : S_OK;
}
} // namespace

HRESULT RunErrorsTest(const CHostRun& run)
{
    return Watch(run, kErrors);
}

HRESULT RunDiscardsTest(const CHostRun& run)
{
    return Watch(run, kDiscards);
}
