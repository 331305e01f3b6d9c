#include "agent/host/stamp/NumberTrack.h"

namespace
{
// A greater distance than this is no loss: the sender, or somebody in its name, began to count anew.
constexpr int64_t kFarAway = 10'000;
constexpr int64_t kWindow = 64;
} // namespace

void CNumberTrack::Add(uint32_t number, CTrackCounts& counts) noexcept
{
    const int64_t ahead = m_begun ? static_cast<int32_t>(number - m_highest) : kFarAway + 1;
    if (ahead > kFarAway || ahead < -kFarAway)
    {
        m_begun = true;
        m_highest = number;
        m_seen = 1;
        ++counts.Sent;
        ++counts.Different;
        return;
    }
    if (ahead > 0)
    {
        m_highest = number;
        m_seen = (ahead < kWindow ? m_seen << ahead : 0) | 1;
        counts.Sent += static_cast<uint64_t>(ahead);
        ++counts.Different;
        return;
    }
    const uint64_t bit = -ahead < kWindow ? uint64_t{1} << -ahead : 0;
    if (bit != 0 && (m_seen & bit) != 0)
    {
        ++counts.Repeated;
        return;
    }
    // Older than what is remembered counts as late, as a second copy so late is rare.
    m_seen |= bit;
    ++counts.OutOfOrder;
    if (counts.Different < counts.Sent)
        ++counts.Different;
}
