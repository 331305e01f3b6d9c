#include "agent/host/stamp/StampRecord.h"

#include <gtest/gtest.h>

namespace
{
TEST(StampRecord, OfASender)
{
    CSenderCounts counts;
    counts.Sent = 100;
    counts.Answered = 90;
    counts.LostThere = 7;
    counts.LostBack = 3;
    counts.Repeated = 4;
    counts.OutOfOrder = 5;
    CRoundTrips times;
    times.Add(400);
    times.Add(400);
    times.Add(12'001);
    const VormTestStatistics record = SenderRecord(counts, times);
    const ULONG expected[] = {93, 93, 100, 7, 90, 3, 9, 40};
    for (int i = 0; i < 8; ++i)
        EXPECT_EQ(expected[i], record.Counter[i]) << i;
    EXPECT_EQ(2, record.Word);
    EXPECT_EQ(1, record.ByteA);
    EXPECT_EQ(1, record.ByteB);
}

TEST(StampRecord, OfASenderThatKnowsTheSumOnly)
{
    CSenderCounts counts;
    counts.OneSum = true;
    EXPECT_EQ(3, SenderRecord(counts, {}).ByteA);
}

TEST(StampRecord, OfAResponder)
{
    CReflectorCounts counts;
    counts.Received = 50;
    counts.Answered = 49;
    counts.Numbers = {60, 48, 1, 2};
    const VormTestStatistics record = ResponderRecord(counts);
    const ULONG expected[] = {50, 49, 60, 12, 0, 0, 3, 0};
    for (int i = 0; i < 8; ++i)
        EXPECT_EQ(expected[i], record.Counter[i]) << i;
    EXPECT_EQ(0, record.Word);
    EXPECT_EQ(2, record.ByteA);
    EXPECT_EQ(1, record.ByteB);
}

TEST(StampRecord, CountsStayAtTheLargestThatThereIsRoomFor)
{
    CSenderCounts counts;
    counts.Sent = uint64_t{1} << 33;
    counts.Answered = counts.Sent - 5;
    counts.LostThere = 5;
    CRoundTrips times;
    times.Add(100 * kStampSecond);
    const VormTestStatistics record = SenderRecord(counts, times);
    EXPECT_EQ(0xFFFFFFFFu, record.Counter[0]);
    EXPECT_EQ(0xFFFFFFFFu, record.Counter[2]);
    EXPECT_EQ(5u, record.Counter[3]);
    EXPECT_EQ(0xFFFF, record.Word);
}
} // namespace
