// Tests 3 and 4: do error and discard counters grow faster than on a healthy network while they are watched?
#include "agent/AgentCodes.h"
#include "agent/host/HostTest.h"

namespace
{
// A direction fails when both are exceeded: a frame now and then is no fault, nor is a small share of much
// traffic. The texts name these numbers.
struct CLimits
{
    ULONG64 PerSecond;
    ULONG64 OneIn; // frames
};

// The counters of one direction.
struct CDirection
{
    ULONG64 CTrafficCounters::*Bad;
    ULONG64 CTrafficCounters::*Good;
};

struct CCounterTest
{
    CLimits Limits;
    CDirection Receive;
    CDirection Transmit;
    HRESULT ReceiveExceeds;
    HRESULT TransmitExceeds;
    HRESULT BothExceed;
    HRESULT Few;
    HRESULT Reset;
    HRESULT NotUp;
};

constexpr CCounterTest kErrors = {{1, 10'000},
                                  {&CTrafficCounters::ReceiveErrors, &CTrafficCounters::Received},
                                  {&CTrafficCounters::TransmitErrors, &CTrafficCounters::Transmitted},
                                  vorl::errors::Receive,
                                  vorl::errors::Transmit,
                                  vorl::errors::Both,
                                  vorl::errors::Few,
                                  vorl::errors::CountersReset,
                                  vorl::errors::NotUp};
constexpr CCounterTest kDiscards = {{10, 100},
                                    {&CTrafficCounters::ReceiveDiscards, &CTrafficCounters::Received},
                                    {&CTrafficCounters::TransmitDiscards, &CTrafficCounters::Transmitted},
                                    vorl::discards::Receive,
                                    vorl::discards::Transmit,
                                    vorl::discards::Both,
                                    vorl::discards::Few,
                                    vorl::discards::CountersReset,
                                    vorl::discards::NotUp};

enum class Growth
{
    None,
    Few,
    Exceeding,
    Backwards
};

Growth Judge(const CAdapterFacts& before, const CAdapterFacts& after, const CDirection& direction,
             const CLimits& limits) noexcept
{
    const auto grown = [&](ULONG64 CTrafficCounters::*counter)
    { return static_cast<LONG64>(after.Traffic.*counter - before.Traffic.*counter); };
    if (grown(direction.Bad) < 0 || grown(direction.Good) < 0)
        return Growth::Backwards;
    const auto bad = static_cast<ULONG64>(grown(direction.Bad));
    const auto good = static_cast<ULONG64>(grown(direction.Good));
    if (bad == 0)
        return Growth::None;
    const bool tooFast = bad * 1000 > limits.PerSecond * (after.Moment - before.Moment);
    const bool tooMany = bad * limits.OneIn > bad + good;
    return tooFast && tooMany ? Growth::Exceeding : Growth::Few;
}

// Counters that cannot count, because no traffic can pass, would make the test pass for nothing.
HRESULT ReadWhileUp(const CHostRun& run, const CCounterTest& test, CAdapterFacts& adapter)
{
    const HRESULT hr = run.Read(adapter);
    if (FAILED(hr))
        return hr;
    return adapter.OperStatus == IfOperStatusUp ? S_OK : test.NotUp;
}

HRESULT Watch(const CHostRun& run, const CCounterTest& test)
{
    CAdapterFacts before;
    CAdapterFacts after;
    HRESULT hr = ReadWhileUp(run, test, before);
    if (FAILED(hr))
        return hr;
    if (!run.Sample())
        return vorl::Stopped;
    hr = ReadWhileUp(run, test, after);
    if (FAILED(hr))
        return hr;
    const Growth received = Judge(before, after, test.Receive, test.Limits);
    const Growth transmitted = Judge(before, after, test.Transmit, test.Limits);
    if (received == Growth::Backwards || transmitted == Growth::Backwards)
        return test.Reset;
    if (received == Growth::Exceeding && transmitted == Growth::Exceeding)
        return test.BothExceed;
    if (received == Growth::Exceeding)
        return test.ReceiveExceeds;
    if (transmitted == Growth::Exceeding)
        return test.TransmitExceeds;
    return received == Growth::Few || transmitted == Growth::Few ? test.Few : S_OK;
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
