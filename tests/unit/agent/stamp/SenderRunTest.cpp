#include "agent/host/stamp/SenderRun.h"

#include "agent/AgentCodes.h"
#include "tests/support/CaseName.h"
#include "tests/unit/agent/stamp/FakePath.h"

namespace
{
constexpr CLossRule kAnyLoss = {100, 200};
constexpr CLossRule kUsual = {1, 200};

class SenderRun : public testing::Test
{
  protected:
    HRESULT Run(CFakePath& path, const CLossRule& rule, DWORD rate = 100, CStampMac* mac = nullptr)
    {
        m_measurement.Begin();
        const CSenderPlan plan = {{mac, mac ? size_t{112} : size_t{44}}, rate, rule};
        CSenderRun run(
            plan, [&](std::unique_ptr<IStampLine>& line) { return path.Open(line); }, m_measurement);
        const HRESULT hr = run.Execute();
        m_counts = run.Counts();
        m_median = run.RoundTrips().Median();
        m_measurement.Read(m_record);
        return hr;
    }

    CMeasurement m_measurement;
    CSenderCounts m_counts;
    VormTestStatistics m_record = {};
    uint64_t m_median = 0;
};

TEST_F(SenderRun, GoodPathHasNoLossAndItsRoundTrip)
{
    CFakePath path;
    path.StopAt = 3 * kStampSecond;
    EXPECT_EQ(S_OK, Run(path, kUsual));
    // A hundred a second, but for what has been on its way too short a time; and one packet as a greeting.
    EXPECT_GT(m_counts.Sent, 280u);
    EXPECT_LE(m_counts.Sent, 301u);
    EXPECT_EQ(m_counts.Sent, m_counts.Answered);
    EXPECT_EQ(0u, m_counts.LostThere + m_counts.LostBack + m_counts.Repeated + m_counts.OutOfOrder);
    EXPECT_FALSE(m_counts.OneSum);
    // What it took at the peer is not in it, nor how far apart the clocks are.
    EXPECT_NEAR(static_cast<double>(CFakePath::kThere + CFakePath::kBack), static_cast<double>(m_median),
                static_cast<double>(CFakePath::kThere) / 50);
    EXPECT_EQ(3000u / 10, m_record.Counter[7] / 10);
}

// The counters are exactly what was done to the packets: on each way none, one in a hundred, one in ten.
struct LossCase
{
    std::string name;
    uint64_t there; // every n-th; 0 is none
    uint64_t back;
};
class SenderLoss : public SenderRun, public testing::WithParamInterface<LossCase>
{
};

TEST_P(SenderLoss, IsToldApartByDirectionExactly)
{
    uint64_t droppedThere = 0;
    uint64_t droppedBack = 0;
    CFakePath path;
    path.StopAt = 20 * kStampSecond;
    // Losses in the middle of the run, so that all of them are clear at its end.
    const auto drop = [&](uint64_t every, uint64_t& count)
    {
        return [&, every](uint64_t index)
        {
            const bool lost = every != 0 && index % every == 0 && path.Elapsed() < 15 * kStampSecond;
            count += lost;
            return lost ? std::vector<uint64_t>{} : std::vector<uint64_t>{0};
        };
    };
    path.There = drop(GetParam().there, droppedThere);
    path.Back = drop(GetParam().back, droppedBack);
    EXPECT_EQ(S_OK, Run(path, kAnyLoss));
    EXPECT_GT(m_counts.Sent, 1700u);
    EXPECT_EQ(droppedThere, m_counts.LostThere);
    EXPECT_EQ(droppedBack, m_counts.LostBack);
    EXPECT_EQ(m_counts.Sent, m_counts.Answered + droppedThere + droppedBack);
    EXPECT_EQ(0u, m_counts.Repeated + m_counts.OutOfOrder);
    EXPECT_GE(droppedThere, GetParam().there ? 1300 / GetParam().there : 0);
    EXPECT_GE(droppedBack, GetParam().back ? 1150 / GetParam().back : 0);
}

INSTANTIATE_TEST_SUITE_P(Shares, SenderLoss,
                         testing::Values(LossCase{"None", 0, 0}, LossCase{"OnePercentThere", 100, 0},
                                         LossCase{"TenPercentThere", 10, 0},
                                         LossCase{"OnePercentBack", 0, 100},
                                         LossCase{"TenPercentBack", 0, 10},
                                         LossCase{"OnePercentEach", 100, 100},
                                         LossCase{"TenPercentEach", 10, 10}, LossCase{"HalfThere", 2, 0},
                                         LossCase{"HalfBack", 0, 2}),
                         NameOf<LossCase>);

TEST_F(SenderRun, RepeatedOnTheWayBackIsCountedAndNotLost)
{
    CFakePath path;
    path.StopAt = 10 * kStampSecond;
    path.Back = RepeatEvery(10);
    EXPECT_EQ(S_OK, Run(path, kUsual));
    EXPECT_EQ(0u, m_counts.Lost());
    // The greeting, which is the first packet of all, has no line any more when it comes again.
    EXPECT_EQ((m_counts.Sent - 1) / 10, m_counts.Repeated);
}

TEST_F(SenderRun, RepeatedOnTheWayThereIsCountedAndDoesNotShiftTheDirections)
{
    uint64_t repeated = 0;
    uint64_t dropped = 0;
    CFakePath path;
    path.StopAt = 10 * kStampSecond;
    path.There = [&](uint64_t index)
    {
        const bool twice = index % 10 == 5 && path.Elapsed() < 4 * kStampSecond;
        repeated += twice;
        return twice ? RepeatEvery(1)(index) : std::vector<uint64_t>{0};
    };
    path.Back = [&](uint64_t index)
    {
        const bool lost =
            index % 10 == 7 && path.Elapsed() > 5 * kStampSecond && path.Elapsed() < 7 * kStampSecond;
        dropped += lost;
        return lost ? std::vector<uint64_t>{} : std::vector<uint64_t>{0};
    };
    EXPECT_EQ(S_OK, Run(path, kAnyLoss));
    EXPECT_GT(repeated, 35u);
    EXPECT_GT(dropped, 15u);
    EXPECT_EQ(repeated, m_counts.Repeated);
    EXPECT_EQ(dropped, m_counts.LostBack);
    EXPECT_EQ(0u, m_counts.LostThere);
}

TEST_F(SenderRun, OutOfOrderIsCountedOnBothWays)
{
    for (const bool there : {true, false})
    {
        CFakePath path;
        path.StopAt = 10 * kStampSecond;
        (there ? path.There : path.Back) = DelayEvery(10, 15 * kStampMillisecond);
        EXPECT_EQ(S_OK, Run(path, kUsual));
        EXPECT_EQ(0u, m_counts.Lost());
        EXPECT_EQ(0u, m_counts.Repeated);
        EXPECT_EQ(m_counts.Sent / 10, m_counts.OutOfOrder) << there;
    }
}

TEST_F(SenderRun, AnswerThatIsTooLateIsLost)
{
    CFakePath path;
    path.StopAt = 5 * kStampSecond;
    path.Back = [](uint64_t index) { return std::vector<uint64_t>{index == 50 ? 2 * kStampSecond : 0}; };
    EXPECT_EQ(S_OK, Run(path, kUsual));
    EXPECT_EQ(1u, m_counts.LostBack);
    EXPECT_EQ(0u, m_counts.LostThere + m_counts.Repeated + m_counts.OutOfOrder);
}

TEST_F(SenderRun, AuthenticatedPacketsFareTheSame)
{
    const std::vector<BYTE> key(16, 1);
    const auto mac = CStampMac::Make(key);
    CFakePath path(mac.get());
    path.StopAt = 5 * kStampSecond;
    EXPECT_EQ(S_OK, Run(path, kUsual, 100, mac.get()));
    EXPECT_GT(m_counts.Sent, 450u);
    EXPECT_EQ(0u, m_counts.Lost());
}

TEST_F(SenderRun, WrongKeyIsSilence)
{
    const auto mac = CStampMac::Make(std::vector<BYTE>(16, 1));
    const auto other = CStampMac::Make(std::vector<BYTE>(16, 2));
    CFakePath path(other.get());
    EXPECT_EQ(vorl::sender::Silent, Run(path, kUsual, 100, mac.get()));
    EXPECT_EQ(0u, path.PeersReflector().Counts().Received);
}

// The answer of a reflector that is not ours.
std::vector<BYTE> AnswerTo(std::vector<BYTE> packet, std::optional<uint32_t> number,
                           std::optional<CStampTime> sent = std::nullopt)
{
    const auto request = ReadSenderPacket(packet, StampMode::Open);
    CReflectorPacket answer;
    answer.Number = number.value_or(request->Number);
    answer.ErrorEstimate = 1;
    answer.SenderNumber = request->Number;
    answer.SenderSent = sent.value_or(request->Sent);
    WriteReflectorPacket(answer, StampMode::Open, packet);
    return packet;
}

// A reflector that copies the number of the packet it answers.
std::vector<BYTE> Copying(std::vector<BYTE> packet)
{
    return AnswerTo(std::move(packet), std::nullopt);
}

TEST_F(SenderRun, PeerThatCopiesGivesTheSumOnly)
{
    CFakePath path;
    path.StopAt = 10 * kStampSecond;
    path.OtherPeer = Copying;
    path.There = LoseEvery(10);
    EXPECT_EQ(S_OK, Run(path, kAnyLoss));
    EXPECT_TRUE(m_counts.OneSum);
    EXPECT_GT(m_counts.Lost(), 70u);
    EXPECT_EQ(m_counts.Lost(), m_counts.LostThere);
    EXPECT_EQ(0u, m_counts.LostBack);
    EXPECT_EQ(3, m_record.ByteA);
}

// A reflector that has counted before this run, for everybody together.
TEST_F(SenderRun, PeerThatGoesOnCountingFromBeforeIsUnderstood)
{
    uint32_t number = 700'000;
    CFakePath path;
    path.StopAt = 10 * kStampSecond;
    path.OtherPeer = [&](std::vector<BYTE> packet) { return AnswerTo(std::move(packet), number++); };
    path.Back = [](uint64_t index)
    { return index >= 100 && index < 110 ? std::vector<uint64_t>{} : std::vector<uint64_t>{0}; };
    EXPECT_EQ(S_OK, Run(path, kAnyLoss));
    EXPECT_FALSE(m_counts.OneSum);
    EXPECT_EQ(10u, m_counts.LostBack);
    EXPECT_EQ(0u, m_counts.LostThere);
}

TEST_F(SenderRun, EndsAsSoonAsItCannotPass)
{
    struct Case
    {
        uint64_t there;
        uint64_t back;
        HRESULT expected;
    };
    constexpr Case kCases[] = {{5, 0, vorl::loss::HeavyThere},
                               {0, 5, vorl::loss::HeavyBack},
                               {5, 5, vorl::loss::HeavyBothWays},
                               {40, 0, vorl::loss::There},
                               {0, 40, vorl::loss::Back}};
    for (const Case& each : kCases)
    {
        CFakePath path;
        if (each.there)
            path.There = [&](uint64_t i) { return LoseEvery(each.there)(i + 1); };
        if (each.back)
            path.Back = [&](uint64_t i) { return LoseEvery(each.back)(i + 3); };
        EXPECT_EQ(each.expected, Run(path, kUsual));
        EXPECT_LT(path.Elapsed(), 5 * kStampSecond);
        // What is reported until then does not look like enough for the provider to end the run as passed.
        EXPECT_LT(m_record.Counter[0], 200u);
    }
}

TEST_F(SenderRun, SumIsJudgedAsSuch)
{
    CFakePath path;
    path.OtherPeer = Copying;
    path.There = [](uint64_t i) { return LoseEvery(5)(i + 1); };
    EXPECT_EQ(vorl::loss::HeavySomeWay, Run(path, kUsual));
}

TEST_F(SenderRun, LossWithinTheLimitPasses)
{
    CFakePath path;
    path.StopAt = 20 * kStampSecond;
    path.There = LoseEvery(150);
    EXPECT_EQ(S_OK, Run(path, kUsual));
    EXPECT_GT(m_counts.LostThere, 10u);
}

TEST_F(SenderRun, SilenceFromTheStart)
{
    CFakePath path;
    path.There = LoseEvery(1);
    EXPECT_EQ(vorl::sender::Silent, Run(path, kUsual));
    EXPECT_EQ(3 * kStampSecond, path.Elapsed());
    EXPECT_EQ(3u, path.SentThere());
}

TEST_F(SenderRun, GreetingThatIsLostAtFirstIsCounted)
{
    CFakePath path;
    path.StopAt = 5 * kStampSecond;
    path.There = [](uint64_t i) { return i == 0 ? std::vector<uint64_t>{} : std::vector<uint64_t>{0}; };
    path.Back = [](uint64_t i) { return i == 0 ? std::vector<uint64_t>{} : std::vector<uint64_t>{0}; };
    EXPECT_EQ(S_OK, Run(path, kUsual));
    EXPECT_EQ(1u, m_counts.LostThere);
    EXPECT_EQ(1u, m_counts.LostBack);
}

TEST_F(SenderRun, SilenceLater)
{
    CFakePath path;
    path.There = [&](uint64_t)
    { return path.Elapsed() > 3 * kStampSecond ? std::vector<uint64_t>{} : std::vector<uint64_t>{0}; };
    EXPECT_EQ(vorl::sender::WentSilent, Run(path, kAnyLoss));
}

TEST_F(SenderRun, RefusedFromTheStart)
{
    CFakePath path;
    path.RefusedFrom = 0;
    EXPECT_EQ(vorl::sender::Refused, Run(path, kUsual));
}

TEST_F(SenderRun, UnreachableFromTheStart)
{
    CFakePath path;
    path.UnreachableFrom = 0;
    EXPECT_EQ(vorl::sender::Unreachable, Run(path, kUsual));
}

TEST_F(SenderRun, SystemThatSendsNothing)
{
    CFakePath path;
    path.SystemSends = false;
    EXPECT_EQ(vorl::sender::NotSent, Run(path, kUsual));
}

TEST_F(SenderRun, ResponderThatEndsAfterEnoughLeavesAGoodRun)
{
    CFakePath path;
    path.RefusedFrom = 4 * kStampSecond;
    path.StopAt = 20 * kStampSecond;
    EXPECT_EQ(S_OK, Run(path, kUsual));
    EXPECT_EQ(0u, m_counts.Lost());
    EXPECT_GT(m_counts.Sent, 390u);
    EXPECT_LT(m_counts.Sent, 410u);
}

TEST_F(SenderRun, ResponderThatEndsBeforeEnough)
{
    CFakePath path;
    path.RefusedFrom = kStampSecond;
    EXPECT_EQ(vorl::sender::PeerEnded, Run(path, kUsual));
}

TEST_F(SenderRun, AnswersThatBelongToNothingThatWasSent)
{
    CFakePath path;
    path.OtherPeer = [](std::vector<BYTE> packet) {
        return AnswerTo(std::move(packet), 1, CStampTime{1, 2});
    };
    EXPECT_EQ(vorl::sender::StrangeAnswers, Run(path, kUsual));
    path.OtherPeer = [](std::vector<BYTE>) { return std::vector<BYTE>{'h', 'i'}; };
    EXPECT_EQ(vorl::sender::StrangeAnswers, Run(path, kUsual));
}

TEST_F(SenderRun, LinkThatGoes)
{
    CFakePath path;
    path.LinkGoneAt = 2 * kStampSecond;
    EXPECT_EQ(vorl::sender::LinkGone, Run(path, kUsual));
    CFakePath atOnce;
    atOnce.LinkGoneAt = 0;
    EXPECT_EQ(vorl::sender::LinkGone, Run(atOnce, kUsual));
}

TEST_F(SenderRun, StopDuringTheGreetingIsNoFailure)
{
    CFakePath path;
    path.StopAt = 0;
    path.There = LoseEvery(1);
    EXPECT_EQ(S_OK, Run(path, kUsual));
}

TEST_F(SenderRun, LineThatDoesNotOpenGivesItsCode)
{
    m_measurement.Begin();
    CSenderRun run(
        {}, [](std::unique_ptr<IStampLine>&) { return vorl::sender::NotBound; }, m_measurement);
    EXPECT_EQ(vorl::sender::NotBound, run.Execute());
}

TEST_F(SenderRun, SlowAndFastRatesAreKept)
{
    for (const DWORD rate : {1u, 1000u})
    {
        CFakePath path;
        path.StopAt = 8 * kStampSecond;
        EXPECT_EQ(S_OK, Run(path, kUsual, rate));
        EXPECT_NEAR(8.0 * rate, static_cast<double>(path.SentThere()), 0.01 * rate + 2);
    }
}
} // namespace
