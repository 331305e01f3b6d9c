#include "agent/host/stamp/PeerGreeting.h"

#include "agent/AgentCodes.h"
#include "tests/unit/agent/stamp/FakePath.h"

#include <gtest/gtest.h>

namespace
{
CGreeting Greet(CFakePath& path)
{
    std::unique_ptr<IStampLine> line;
    path.Open(line);
    return GreetPeer(*line, {nullptr, 44});
}

TEST(PeerGreeting, TakesOnePacketWhereItIsAnswered)
{
    CFakePath path;
    const CGreeting greeting = Greet(path);
    EXPECT_EQ(S_OK, greeting.Outcome);
    EXPECT_TRUE(greeting.PeerCounts);
    EXPECT_EQ(1u, greeting.Counts.Sent);
    EXPECT_EQ(1u, greeting.Counts.Answered);
    EXPECT_EQ(0u, greeting.Counts.LostThere + greeting.Counts.LostBack);
    EXPECT_LT(path.Elapsed(), kStampSecond);
}

TEST(PeerGreeting, TellsWhereTheFirstOnesWereLost)
{
    CFakePath there;
    there.There = [](uint64_t i) { return i < 2 ? std::vector<uint64_t>{} : std::vector<uint64_t>{0}; };
    EXPECT_EQ(2u, Greet(there).Counts.LostThere);
    CFakePath back;
    back.Back = [](uint64_t i) { return i < 2 ? std::vector<uint64_t>{} : std::vector<uint64_t>{0}; };
    EXPECT_EQ(2u, Greet(back).Counts.LostBack);
}

TEST(PeerGreeting, LateAnswersAreNotStrange)
{
    CFakePath path;
    path.Back = [](uint64_t) { return std::vector<uint64_t>{kStampSecond + kStampSecond / 2}; };
    EXPECT_EQ(vorl::sender::Silent, Greet(path).Outcome);
}

TEST(PeerGreeting, RefusalCountsMoreThanSilence)
{
    CFakePath path;
    path.RefusedFrom = kStampSecond + kStampSecond / 2;
    path.There = LoseEvery(1);
    EXPECT_EQ(vorl::sender::Refused, Greet(path).Outcome);
}
} // namespace
