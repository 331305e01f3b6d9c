// Test 2: what did adapter and switch negotiate? What the driver does not report is said, and is no failure.
#include "agent/AgentCodes.h"
#include "agent/host/HostTest.h"

namespace
{
constexpr ULONG64 kMegabit = 1'000'000;
constexpr ULONG64 kSlowest = 100 * kMegabit;
// From here on Ethernet knows full duplex only, so that no driver has to report it.
constexpr ULONG64 kAlwaysFullDuplex = 1000 * kMegabit;

bool IsKnown(ULONG64 speed) noexcept
{
    return speed != 0 && speed != ~0ULL;
}

bool IsTooSlow(ULONG64 speed) noexcept
{
    return IsKnown(speed) && speed < kSlowest;
}
} // namespace

HRESULT RunSpeedTest(const CHostRun& run)
{
    CAdapterFacts adapter;
    const HRESULT hr = run.Read(adapter);
    if (FAILED(hr))
        return hr;
    if (adapter.OperStatus != IfOperStatusUp)
        return vorl::speed::NoLink;
    const bool speedKnown = IsKnown(adapter.TransmitSpeed) && IsKnown(adapter.ReceiveSpeed);
    if (speedKnown && adapter.TransmitSpeed != adapter.ReceiveSpeed)
        return vorl::speed::Unequal;
    if (IsTooSlow(adapter.TransmitSpeed) || IsTooSlow(adapter.ReceiveSpeed))
        return vorl::speed::TooSlow;
    if (speedKnown && adapter.TransmitSpeed >= kAlwaysFullDuplex)
        return S_OK;
    const std::optional<bool> fullDuplex = run.Network().IsFullDuplex(run.AdapterKey());
    if (fullDuplex && !*fullDuplex)
        return vorl::speed::HalfDuplex;
    if (!speedKnown)
        return fullDuplex ? vorl::speed::NotReported : vorl::speed::NothingReported;
    return fullDuplex ? S_OK : vorl::speed::DuplexNotReported;
}
