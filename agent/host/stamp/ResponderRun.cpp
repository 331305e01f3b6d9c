#include "agent/host/stamp/ResponderRun.h"

#include "agent/AgentCodes.h"
#include "agent/host/stamp/StampExchange.h"
#include "agent/host/stamp/StampRecord.h"

#include <memory>

namespace
{
constexpr uint64_t kBetweenReports = kStampSecond / 10;
constexpr uint64_t kQuiet = kStampSecond;
constexpr uint64_t kStaysAtMost = 5 * kStampSecond;
constexpr int kTakenAtOnce = 64;

class CResponder
{
  public:
    CResponder(IStampLine& line, const CResponderPlan& plan, CMeasurement& measurement)
        : m_line(line), m_plan(plan), m_measurement(measurement), m_begun(line.Steady()),
          m_reflector(std::make_unique<CReflector>(plan.Mac, plan.Port, plan.Limits, m_begun))
    {
    }

    HRESULT Execute()
    {
        for (uint64_t now = m_begun;; now = m_line.Steady())
        {
            Report();
            if (HasWaitedInVain(now))
                return vorl::responder::NoSender;
            const Woken woken = AnswerUntil(now + kBetweenReports);
            if (woken == Woken::LinkGone)
                return vorl::responder::LinkGone;
            if (woken == Woken::Stopped)
                return Stay();
        }
    }

  private:
    bool HasWaitedInVain(uint64_t now) const noexcept
    {
        return m_plan.WaitForSender != 0 && m_reflector->Counts().Received == 0 &&
               now - m_begun >= m_plan.WaitForSender * kStampSecond;
    }

    void Report() { m_measurement.Publish(ResponderRecord(m_reflector->Counts())); }

    void TakeWhatCame() noexcept
    {
        for (int i = 0; i < kTakenAtOnce; ++i)
        {
            CArrival arrival;
            const Receiving what = m_line.Receive(m_buffer, arrival);
            if (what == Receiving::Nothing)
                return;
            if (what == Receiving::Packet)
                m_reflector->Take(std::span(m_buffer).first(arrival.Size), arrival, m_line);
        }
    }

    Woken AnswerUntil(uint64_t until) noexcept
    {
        while (m_line.Steady() < until)
        {
            const Woken woken = m_line.Wait(until);
            if (woken != Woken::Ready)
                return woken;
            TakeWhatCame();
        }
        return Woken::Ready;
    }

    // Both ends stop once they have seen enough packets. Were this one gone first, the other would take its
    // last packets for lost.
    HRESULT Stay() noexcept
    {
        const uint64_t end = m_line.Steady() + kStaysAtMost;
        uint64_t quietAt = m_line.Steady() + kQuiet;
        uint64_t received = m_reflector->Counts().Received;
        for (uint64_t now = m_line.Steady(); received > 0 && now < std::min(end, quietAt);
             now = m_line.Steady())
        {
            // The stop that has been seen is not waited for again.
            if (m_line.WaitStopped(std::min(now + kBetweenReports, quietAt)) == Woken::LinkGone)
                break;
            TakeWhatCame();
            if (m_reflector->Counts().Received != received)
                quietAt = m_line.Steady() + kQuiet;
            received = m_reflector->Counts().Received;
        }
        Report();
        return S_OK;
    }

    IStampLine& m_line;
    const CResponderPlan& m_plan;
    CMeasurement& m_measurement;
    const uint64_t m_begun;
    const std::unique_ptr<CReflector> m_reflector;
    std::array<BYTE, kLargestDatagram> m_buffer;
};
} // namespace

HRESULT RunResponder(IStampLine& line, const CResponderPlan& plan, CMeasurement& measurement)
{
    const auto responder = std::make_unique<CResponder>(line, plan, measurement);
    return responder->Execute();
}
