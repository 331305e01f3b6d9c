#include "agent/host/stamp/ResponderRun.h"

#include "agent/AgentCodes.h"
#include "agent/host/stamp/StampPackets.h"

#include <deque>
#include <gtest/gtest.h>
#include <vector>

namespace
{
// A line on which a packet arrives every so often, in a time of its own.
class CArriving final : public IStampLine
{
  public:
    uint64_t Now() noexcept override { return Time; }
    uint64_t Steady() noexcept override { return Time; }
    Sending Send(std::span<const BYTE>, const CArrival*) noexcept override
    {
        ++Answered;
        LastAnswer = Time;
        return Sending::Done;
    }
    Receiving Receive(std::span<BYTE> buffer, CArrival& arrival) noexcept override
    {
        if (Time < NextPacket || NextPacket > LastPacket)
            return Receiving::Nothing;
        NextPacket += Interval;
        if (Rubbish)
            return Receiving::Refused;
        WriteSenderPacket({Number++, {}, 1, 0}, StampMode::Open, buffer);
        arrival.Size = 44;
        arrival.From.Ipv4.sin_family = AF_INET;
        arrival.From.Ipv4.sin_port = 1;
        return Receiving::Packet;
    }
    Woken Wait(uint64_t until) noexcept override
    {
        Advance(until);
        if (Time >= LinkGoneAt)
            return Woken::LinkGone;
        return Time >= StopAt ? Woken::Stopped : Woken::Ready;
    }
    Woken WaitStopped(uint64_t until) noexcept override
    {
        Advance(until);
        return Time >= LinkGoneAt ? Woken::LinkGone : Woken::Ready;
    }

    static constexpr uint64_t kNever = ~uint64_t{0};
    uint64_t Time = 0;
    uint64_t StopAt = kNever;
    uint64_t LinkGoneAt = kNever;
    uint64_t NextPacket = 0;
    uint64_t LastPacket = kNever - 1;
    uint64_t Interval = kStampSecond / 100;
    bool Rubbish = false;
    uint32_t Number = 0;
    uint64_t Answered = 0;
    uint64_t LastAnswer = 0;

  private:
    void Advance(uint64_t until) noexcept
    {
        if (NextPacket <= LastPacket && NextPacket < until)
            until = NextPacket;
        Time = until > Time ? until : Time + 1;
    }
};

class ResponderRun : public testing::Test
{
  protected:
    HRESULT Run(DWORD wait = 60)
    {
        m_measurement.Begin();
        const HRESULT hr = RunResponder(m_line, {nullptr, htons(862), wait, {}}, m_measurement);
        m_measurement.Read(m_record);
        return hr;
    }

    CArriving m_line;
    CMeasurement m_measurement;
    VormTestStatistics m_record = {};
};

TEST_F(ResponderRun, AnswersUntilStoppedAndReports)
{
    m_line.StopAt = m_line.LastPacket = 10 * kStampSecond;
    EXPECT_EQ(S_OK, Run());
    EXPECT_EQ(1001u, m_line.Answered);
    EXPECT_EQ(1001u, m_record.Counter[0]);
    EXPECT_EQ(1001u, m_record.Counter[1]);
    EXPECT_EQ(2, m_record.ByteA);
    EXPECT_GE(m_line.Time, 11 * kStampSecond) << "nothing has come for a second";
    EXPECT_LT(m_line.Time, 12 * kStampSecond);
}

TEST_F(ResponderRun, StaysForASenderThatIsAboutToEnd)
{
    m_line.StopAt = 10 * kStampSecond;
    m_line.LastPacket = 12 * kStampSecond;
    EXPECT_EQ(S_OK, Run());
    EXPECT_EQ(1201u, m_line.Answered);
}

TEST_F(ResponderRun, DoesNotStayLongForOneThatGoesOn)
{
    m_line.StopAt = 10 * kStampSecond;
    EXPECT_EQ(S_OK, Run());
    EXPECT_GE(m_line.LastAnswer, 14 * kStampSecond);
    EXPECT_LE(m_line.Time, 15 * kStampSecond + kStampSecond / 5);
}

TEST_F(ResponderRun, EndsAtOnceWhereNobodySent)
{
    m_line.NextPacket = m_line.kNever;
    m_line.StopAt = 10 * kStampSecond;
    EXPECT_EQ(S_OK, Run());
    EXPECT_EQ(m_line.StopAt, m_line.Time);
}

TEST_F(ResponderRun, WaitsSoLongForASender)
{
    m_line.Rubbish = true;
    EXPECT_EQ(vorl::responder::NoSender, Run(7));
    EXPECT_GE(m_line.Time, 7 * kStampSecond);
    EXPECT_LT(m_line.Time, 8 * kStampSecond);
}

TEST_F(ResponderRun, WaitsForEverWhereItIsToldSo)
{
    m_line.NextPacket = m_line.kNever;
    m_line.StopAt = 5000 * kStampSecond;
    EXPECT_EQ(S_OK, Run(0));
}

TEST_F(ResponderRun, SenderThatHasComeMayPause)
{
    m_line.LastPacket = 0;
    m_line.StopAt = 500 * kStampSecond;
    EXPECT_EQ(S_OK, Run(7));
    EXPECT_EQ(1u, m_record.Counter[0]);
}

TEST_F(ResponderRun, LinkThatGoes)
{
    m_line.LinkGoneAt = 3 * kStampSecond;
    EXPECT_EQ(vorl::responder::LinkGone, Run());
}
} // namespace
