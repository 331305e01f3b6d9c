// Test 2: what did adapter and switch negotiate?
#include "agent/AgentCodes.h"
#include "agent/host/HostTest.h"

namespace
{
constexpr ULONG64 kMegabit = 1'000'000;
constexpr ULONG64 kSlowest = 100 * kMegabit;
// From here on Ethernet knows full duplex only, so that nobody has to report it.
constexpr ULONG64 kAlwaysFullDuplex = 1000 * kMegabit;

bool IsKnown(ULONG64 speed) noexcept
{
    return speed != 0 && speed != ~0ULL;
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
    if (!IsKnown(adapter.TransmitSpeed) || !IsKnown(adapter.ReceiveSpeed))
        return vorl::speed::NotReported;
    if (adapter.TransmitSpeed != adapter.ReceiveSpeed)
        return vorl::speed::Unequal;
    if (adapter.TransmitSpeed < kSlowest)
        return vorl::speed::TooSlow;
    if (adapter.TransmitSpeed >= kAlwaysFullDuplex)
        return S_OK;
    const std::optional<bool> fullDuplex = run.Network().IsFullDuplex(run.AdapterKey());
    if (!fullDuplex)
        return vorl::speed::DuplexNotReported;
    return *fullDuplex ? S_OK : vorl::speed::HalfDuplex;
}
