#include "agent/host/stamp/PeerGreeting.h"

#include "agent/AgentCodes.h"

namespace
{
constexpr uint32_t kFirstNumber = 1000;
constexpr uint32_t kAttempts = 3;

// What has come so far besides the answer that is waited for.
struct COtherwise
{
    bool Refused = false;
    bool Unreachable = false;
    bool Strange = false;
    bool Sent = false;

    HRESULT Code() const noexcept
    {
        if (!Sent)
            return vorl::sender::NotSent;
        if (Refused)
            return vorl::sender::Refused;
        if (Strange)
            return vorl::sender::StrangeAnswers;
        return Unreachable ? vorl::sender::Unreachable : vorl::sender::Silent;
    }
};

bool Answers(const CReflectorPacket& answer, uint64_t sentAt, uint32_t number) noexcept
{
    return answer.SenderNumber == number && IsEcho(ToStampTime(sentAt), answer.SenderSent);
}

// Reads what has come; true once the answer is among it.
bool TakeAnswer(IStampLine& line, const CPacketForm& form, uint64_t sentAt, uint32_t number,
                COtherwise& otherwise, CReflectorPacket& answer) noexcept
{
    for (;;)
    {
        const CExchange exchange = ReceiveStampAnswer(line, form);
        if (exchange.What == Receiving::Nothing)
            return false;
        otherwise.Refused |= exchange.What == Receiving::Refused;
        otherwise.Unreachable |= exchange.What == Receiving::Unreachable;
        if (exchange.What != Receiving::Packet)
            continue;
        if (exchange.Answer && Answers(*exchange.Answer, sentAt, number))
        {
            answer = *exchange.Answer;
            return true;
        }
        // An answer to an earlier packet of this greeting is late, not strange.
        const bool late = exchange.Answer && exchange.Answer->SenderNumber >= kFirstNumber &&
                          exchange.Answer->SenderNumber < number;
        otherwise.Strange |= !late;
    }
}

// The packets before the one that was answered were lost: on the way back as many as the peer has counted.
CSenderCounts CountsOf(uint32_t attempts, const CReflectorPacket& answer, bool peerCounts) noexcept
{
    CSenderCounts counts;
    counts.Sent = attempts;
    counts.Answered = 1;
    counts.OneSum = !peerCounts;
    const uint64_t lost = counts.Lost();
    // A peer that has counted more goes on from an earlier time, and tells nothing.
    counts.LostBack = peerCounts && answer.Number <= lost ? answer.Number : 0;
    counts.LostThere = lost - counts.LostBack;
    return counts;
}
} // namespace

CGreeting GreetPeer(IStampLine& line, const CPacketForm& form) noexcept
{
    CGreeting greeting;
    COtherwise otherwise;
    for (uint32_t attempt = 0; attempt < kAttempts; ++attempt)
    {
        const uint32_t number = kFirstNumber + attempt;
        const uint64_t until = line.Steady() + CSenderTally::kPatience;
        uint64_t sentAt = 0;
        const Sending sending = SendStampPacket(line, form, number, sentAt);
        otherwise.Sent |= sending != Sending::Failed;
        otherwise.Refused |= sending == Sending::Refused;
        while (line.Steady() < until)
        {
            const Woken woken = line.Wait(until);
            if (woken == Woken::Stopped)
            {
                greeting.Stopped = true;
                return greeting;
            }
            if (woken == Woken::LinkGone)
            {
                greeting.Outcome = vorl::sender::LinkGone;
                return greeting;
            }
            CReflectorPacket answer;
            if (TakeAnswer(line, form, sentAt, number, otherwise, answer))
            {
                greeting.PeerCounts = answer.Number != number;
                greeting.Counts = CountsOf(attempt + 1, answer, greeting.PeerCounts);
                return greeting;
            }
        }
    }
    greeting.Outcome = otherwise.Code();
    return greeting;
}
