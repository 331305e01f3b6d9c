#include "agent/host/stamp/SenderVerdict.h"

#include "agent/AgentCodes.h"

#include <algorithm>

namespace
{
// One code for each direction and for how bad it is.
struct CLossCodes
{
    HRESULT There;
    HRESULT Back;
    HRESULT BothWays;
    HRESULT SomeWay;
};
constexpr CLossCodes kSome = {vorl::loss::There, vorl::loss::Back, vorl::loss::BothWays, vorl::loss::SomeWay};
constexpr CLossCodes kHeavy = {vorl::loss::HeavyThere, vorl::loss::HeavyBack, vorl::loss::HeavyBothWays,
                               vorl::loss::HeavySomeWay};
constexpr uint64_t kHeavyIsOneIn = 10;
// A direction with less than this part of all losses is not the one to look at.
constexpr uint64_t kMinorIsLessThanOneIn = 5;
} // namespace

HRESULT JudgeLoss(const CSenderCounts& counts, const CLossRule& rule) noexcept
{
    const uint64_t lost = counts.Lost();
    const uint64_t of = std::max<uint64_t>(counts.Sent, rule.EnoughPackets);
    if (lost * 100 <= of * rule.LimitPercent)
        return S_OK;
    const CLossCodes& codes = lost * kHeavyIsOneIn >= counts.Sent ? kHeavy : kSome;
    if (counts.OneSum)
        return codes.SomeWay;
    if (counts.LostBack * kMinorIsLessThanOneIn < lost)
        return codes.There;
    return counts.LostThere * kMinorIsLessThanOneIn < lost ? codes.Back : codes.BothWays;
}
