#include "agent/host/stamp/SenderRun.h"

#include "agent/AgentCodes.h"
#include "agent/host/stamp/PeerGreeting.h"
#include "agent/host/stamp/StampRecord.h"

#include <algorithm>

namespace
{
constexpr uint64_t kBetweenLooks = kStampSecond / 10;
constexpr uint64_t kSilence = 3 * kStampSecond;
constexpr uint64_t kSilentPackets = 3;
constexpr int kRefusals = 3; // a single one may be a leftover
constexpr int kAtOnce = 32;  // packets that are overdue are sent in portions
constexpr int kReadAtOnce = 64;
// After a longer pause of the whole machine what was missed is not made up for.
constexpr uint64_t kMakesUpFor = kStampSecond / 4;

CSenderCounts operator+(CSenderCounts a, const CSenderCounts& b) noexcept
{
    a.Sent += b.Sent;
    a.Answered += b.Answered;
    a.LostThere += b.LostThere;
    a.LostBack += b.LostBack;
    a.Repeated += b.Repeated;
    a.OutOfOrder += b.OutOfOrder;
    a.OneSum |= b.OneSum;
    return a;
}
} // namespace

CSenderRun::CSenderRun(const CSenderPlan& plan, OpenLine openLine, CMeasurement& measurement)
    : m_plan(plan), m_openLine(std::move(openLine)), m_measurement(measurement),
      m_tally(std::make_unique<CSenderTally>(true))
{
}

CSenderCounts CSenderRun::Counts() const noexcept
{
    return m_greeting + m_tally->Counts();
}

HRESULT CSenderRun::Execute()
{
    std::unique_ptr<IStampLine> line;
    HRESULT hr = m_openLine(line);
    if (FAILED(hr))
        return hr;
    const CGreeting greeting = GreetPeer(*line, m_plan.Form);
    if (FAILED(greeting.Outcome) || greeting.Stopped)
        return greeting.Outcome;
    m_greeting = greeting.Counts;
    m_tally = std::make_unique<CSenderTally>(greeting.PeerCounts);
    line.reset();
    hr = m_openLine(line);
    return FAILED(hr) ? hr : Measure(*line);
}

HRESULT CSenderRun::Measure(IStampLine& line)
{
    m_due = m_lastAnswer = line.Steady();
    uint64_t nextLook = m_due + kBetweenLooks;
    for (;;)
    {
        uint64_t now = line.Steady();
        SendWhatIsDue(line, now);
        TakeWhatCame(line);
        now = line.Steady();
        if (now >= nextLook)
        {
            const HRESULT hr = LookAround(now);
            if (FAILED(hr))
                return hr;
            nextLook = now + kBetweenLooks;
        }
        switch (line.Wait(m_peerHasGone ? nextLook : std::min(m_due, nextLook)))
        {
        case Woken::Stopped:
            return S_OK;
        case Woken::LinkGone:
            return vorl::sender::LinkGone;
        default:
            break;
        }
    }
}

void CSenderRun::SendWhatIsDue(IStampLine& line, uint64_t now)
{
    const uint64_t interval = kStampSecond / m_plan.PacketsPerSecond;
    if (now > m_due + kMakesUpFor)
        m_due = now;
    for (int i = 0; i < kAtOnce && m_due <= now && !m_peerHasGone; ++i)
    {
        const uint64_t steady = line.Steady();
        uint64_t sentAt = 0;
        const Sending sending = SendStampPacket(line, m_plan.Form, m_tally->NextNumber(), sentAt);
        m_refusedSinceAnswer += sending == Sending::Refused;
        // One that the system did not take never was on its way; silence is noticed all the same.
        if (sending == Sending::Done)
            m_tally->Sent(steady, sentAt);
        ++m_sentSinceAnswer;
        m_due += interval;
    }
}

void CSenderRun::TakeWhatCame(IStampLine& line)
{
    for (int i = 0; i < kReadAtOnce; ++i)
    {
        const CExchange exchange = ReceiveStampAnswer(line, m_plan.Form);
        if (exchange.What == Receiving::Nothing)
            return;
        m_refusedSinceAnswer += exchange.What == Receiving::Refused;
        if (!exchange.Answer || !m_tally->Answered(*exchange.Answer, exchange.Time))
            continue;
        m_anyAnswer = true;
        m_lastAnswer = line.Steady();
        m_sentSinceAnswer = 0;
        m_refusedSinceAnswer = 0;
    }
}

HRESULT CSenderRun::JudgeSilence(uint64_t now) const noexcept
{
    if (m_peerHasGone || now - m_lastAnswer < kSilence || m_sentSinceAnswer < kSilentPackets)
        return S_OK;
    return m_anyAnswer ? vorl::sender::WentSilent : vorl::sender::Silent;
}

HRESULT CSenderRun::LookAround(uint64_t now)
{
    if (m_refusedSinceAnswer >= kRefusals && !m_peerHasGone)
    {
        // The responder's run has ended; what was measured until then stands.
        m_peerHasGone = true;
        m_tally->PeerHasGone();
    }
    m_tally->Settle(now);
    const CSenderCounts counts = Counts();
    HRESULT hr = JudgeLoss(counts, m_plan.Loss);
    if (SUCCEEDED(hr))
        hr = JudgeSilence(now);
    // All that was sent has become clear by then.
    if (SUCCEEDED(hr) && m_peerHasGone && now - m_lastAnswer > CSenderTally::kLastOnes &&
        counts.Arrived() < m_plan.Loss.EnoughPackets)
        hr = vorl::sender::PeerEnded;
    if (SUCCEEDED(hr))
        m_measurement.Publish(SenderRecord(counts, m_tally->RoundTrips()));
    return hr;
}
