// Round trip times of any number of packets, in memory that does not grow. Times above two microseconds are
// kept to a part in 128.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

class CRoundTrips
{
  public:
    // In 100 nanoseconds.
    void Add(uint64_t time) noexcept;

    uint64_t Count() const noexcept { return m_count; }
    // 0 where nothing was added.
    uint64_t Longest() const noexcept { return m_longest; }
    uint64_t Median() const noexcept;

  private:
    // Times of equally many bits share 64 places, by the six bits below the highest one.
    static constexpr size_t kPlaces = 64;
    static constexpr size_t kRows = 40;
    static size_t PlaceOf(uint64_t time) noexcept;
    static uint64_t MiddleOf(size_t place) noexcept;

    std::array<uint64_t, kRows* kPlaces> m_counts = {};
    uint64_t m_count = 0;
    uint64_t m_longest = 0;
};
