// One run of a sender: greets the peer, then sends at its rate and counts until it is stopped, or until it is
// certain that the run cannot pass.
#pragma once

#include "agent/host/stamp/Measurement.h"
#include "agent/host/stamp/SenderVerdict.h"
#include "agent/host/stamp/StampExchange.h"

#include <functional>
#include <memory>

struct CSenderPlan
{
    CPacketForm Form;
    DWORD PacketsPerSecond = 100;
    CLossRule Loss = {1, 200};
};

class CSenderRun
{
  public:
    // Makes a line to the peer from a port of its own; a failure's code is that of the run.
    using OpenLine = std::function<HRESULT(std::unique_ptr<IStampLine>& line)>;

    CSenderRun(const CSenderPlan& plan, OpenLine openLine, CMeasurement& measurement);

    // S_OK once it was stopped. Throws std::bad_alloc.
    HRESULT Execute();

    // Of what was counted, the greeting included.
    CSenderCounts Counts() const noexcept;
    const CRoundTrips& RoundTrips() const noexcept { return m_tally->RoundTrips(); }

  private:
    HRESULT Measure(IStampLine& line);
    void SendWhatIsDue(IStampLine& line, uint64_t now);
    void TakeWhatCame(IStampLine& line);
    // Counts, publishes and judges.
    HRESULT LookAround(uint64_t now);
    HRESULT JudgeSilence(uint64_t now) const noexcept;

    const CSenderPlan m_plan;
    const OpenLine m_openLine;
    CMeasurement& m_measurement;
    CSenderCounts m_greeting;
    std::unique_ptr<CSenderTally> m_tally; // too large for a stack

    uint64_t m_due = 0;
    uint64_t m_lastAnswer = 0;
    uint64_t m_sentSinceAnswer = 0;
    int m_refusedSinceAnswer = 0;
    bool m_anyAnswer = false;
    bool m_peerHasGone = false;
};
