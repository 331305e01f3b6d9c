// What the numbers of a sender's packets say about the way there, as the responder sees it: which did not
// come, came twice, or came out of order. Counted from the first packet that came.
#pragma once

#include <cstdint>

struct CTrackCounts
{
    uint64_t Sent = 0; // as far as the numbers say
    uint64_t Different = 0;
    uint64_t Repeated = 0;
    uint64_t OutOfOrder = 0;
};

class CNumberTrack
{
  public:
    void Add(uint32_t number, CTrackCounts& counts) noexcept;

  private:
    bool m_begun = false;
    uint32_t m_highest = 0;
    uint64_t m_seen = 0; // bit n: the number n below the highest has come
};
