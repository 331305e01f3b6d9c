#include "agent/host/stamp/SenderTally.h"

#include <gtest/gtest.h>

namespace
{
constexpr uint64_t kLater = CSenderTally::kLastOnes;

class SenderTally : public testing::Test
{
  protected:
    void Send(int count = 1)
    {
        for (int i = 0; i < count; ++i)
            m_tally->Sent(m_now, m_now);
    }
    bool Answer(uint32_t number, uint32_t peersNumber, uint64_t sentAt = 0)
    {
        CReflectorPacket answer;
        answer.Number = peersNumber;
        answer.SenderNumber = number;
        answer.SenderSent = ToStampTime(kBegin + sentAt);
        return m_tally->Answered(answer, m_now);
    }
    CSenderCounts Settle(uint64_t later)
    {
        m_tally->Settle(m_now + later);
        return m_tally->Counts();
    }

    static constexpr uint64_t kBegin = 10'000'000'000 * kStampSecond;
    uint64_t m_now = kBegin;
    std::unique_ptr<CSenderTally> m_tally = std::make_unique<CSenderTally>(true);
};

TEST_F(SenderTally, WhatIsOnItsWayIsNotCounted)
{
    Send(3);
    Answer(0, 0);
    EXPECT_EQ(0u, Settle(CSenderTally::kGrace - 1).Sent);
    EXPECT_EQ(1u, Settle(CSenderTally::kGrace).Sent);
    EXPECT_EQ(1u, m_tally->Counts().Answered);
    EXPECT_EQ(1u, Settle(CSenderTally::kPatience).Sent)
        << "those after the last answer are waited for longer";
    EXPECT_EQ(3u, Settle(kLater).Sent);
    EXPECT_EQ(2u, m_tally->Counts().LostThere);
}

TEST_F(SenderTally, DirectionIsKnownOnceALaterOneWasAnswered)
{
    Send(5);
    Answer(0, 0);
    Answer(4, 2); // one of the three between reached the peer
    const CSenderCounts counts = Settle(CSenderTally::kPatience);
    EXPECT_EQ(5u, counts.Sent);
    EXPECT_EQ(2u, counts.LostThere);
    EXPECT_EQ(1u, counts.LostBack);
    EXPECT_EQ(3u, counts.Arrived());
}

TEST_F(SenderTally, AnswersToNothingAreRefused)
{
    EXPECT_FALSE(Answer(0, 0)) << "nothing was sent";
    Send(2);
    EXPECT_FALSE(Answer(2, 0)) << "not sent yet";
    EXPECT_FALSE(Answer(0xFFFFFFFF, 0));
    EXPECT_FALSE(Answer(1, 0, 50)) << "another time stamp";
    EXPECT_TRUE(Answer(1, 0));
    Send(9000);
    EXPECT_FALSE(Answer(1, 0)) << "too long ago";
}

TEST_F(SenderTally, RepeatsAreCountedBeforeAndAfterTheirPacketIs)
{
    Send(2);
    Answer(0, 0);
    Answer(0, 0);
    Answer(1, 1);
    EXPECT_EQ(1u, Settle(CSenderTally::kGrace).Repeated);
    Answer(1, 1);
    EXPECT_EQ(2u, m_tally->Counts().Repeated);
    EXPECT_EQ(0u, m_tally->Counts().Lost());
}

TEST_F(SenderTally, NumbersGoOverTheirEnd)
{
    // Two packets of the peer's numbers before and after the end of 32 bits.
    Send(4);
    Answer(0, 0xFFFFFFFE);
    Answer(1, 0xFFFFFFFF);
    Answer(2, 0);
    Answer(3, 2); // one of the peer's is missing, and all of ours are there: it answered one twice
    const CSenderCounts counts = Settle(CSenderTally::kGrace);
    EXPECT_EQ(4u, counts.Answered);
    EXPECT_EQ(0u, counts.LostThere + counts.LostBack);
}

TEST_F(SenderTally, MorePacketsThanAreKeptCountAsLostInTheEnd)
{
    Send(10'000);
    EXPECT_EQ(10'000u - 8192u, m_tally->Counts().Sent);
    EXPECT_EQ(10'000u - 8192u, m_tally->Counts().LostThere);
}

TEST_F(SenderTally, NothingAfterTheLastAnswerCountsOncePeerHasGone)
{
    Send(5);
    Answer(0, 0);
    Answer(2, 1);
    m_tally->PeerHasGone();
    const CSenderCounts counts = Settle(10 * kLater);
    EXPECT_EQ(3u, counts.Sent);
    EXPECT_EQ(1u, counts.LostThere);
}

TEST_F(SenderTally, TimeAtThePeerIsNotPartOfTheRoundTrip)
{
    Send();
    CReflectorPacket answer;
    answer.SenderSent = ToStampTime(m_now);
    answer.Received = {100, 0};
    answer.Sent = {100, 1u << 31};
    m_tally->Answered(answer, m_now + kStampSecond / 2 + 50);
    Settle(kStampSecond);
    EXPECT_EQ(50u, m_tally->RoundTrips().Longest());
}

TEST_F(SenderTally, PeersClockThatCannotBeRightIsLeftOut)
{
    Send(2);
    CReflectorPacket answer;
    answer.SenderSent = ToStampTime(m_now);
    answer.Received = {100, 0};
    answer.Sent = {99, 0};
    m_tally->Answered(answer, m_now + 40);
    answer.SenderNumber = answer.Number = 1;
    answer.Sent = {200, 0};
    m_tally->Answered(answer, m_now + 40);
    Settle(kStampSecond);
    EXPECT_EQ(40u, m_tally->RoundTrips().Longest());
    EXPECT_EQ(2u, m_tally->RoundTrips().Count());
}
} // namespace
