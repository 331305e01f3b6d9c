#include "agent/host/stamp/RoundTrips.h"

#include <algorithm>
#include <bit>

size_t CRoundTrips::PlaceOf(uint64_t time) noexcept
{
    if (time < kPlaces)
        return static_cast<size_t>(time);
    const int shift = std::bit_width(time) - std::bit_width(kPlaces);
    const size_t place = (static_cast<size_t>(shift) + 1) * kPlaces + ((time >> shift) - kPlaces);
    return std::min(place, kRows * kPlaces - 1);
}

uint64_t CRoundTrips::MiddleOf(size_t place) noexcept
{
    if (place < kPlaces)
        return place;
    const size_t shift = place / kPlaces - 1;
    const uint64_t first = uint64_t{kPlaces + place % kPlaces} << shift;
    return first + (uint64_t{1} << shift) / 2;
}

void CRoundTrips::Add(uint64_t time) noexcept
{
    ++m_counts[PlaceOf(time)];
    ++m_count;
    m_longest = std::max(m_longest, time);
}

uint64_t CRoundTrips::Median() const noexcept
{
    uint64_t below = 0;
    for (size_t place = 0; place < m_counts.size(); ++place)
    {
        below += m_counts[place];
        if (below * 2 >= m_count && below > 0)
            return std::min(MiddleOf(place), m_longest);
    }
    return 0;
}
