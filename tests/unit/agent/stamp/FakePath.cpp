#include "tests/unit/agent/stamp/FakePath.h"

#include "agent/host/stamp/StampExchange.h"

#include <algorithm>
#include <deque>

namespace
{
constexpr uint64_t kSystemBegin = 134'000'000'000'000'000; // in 2025

SOCKADDR_INET FromPort(USHORT port)
{
    SOCKADDR_INET address = {};
    address.Ipv4.sin_family = AF_INET;
    address.Ipv4.sin_addr.s_addr = htonl(0xC0000202);
    address.Ipv4.sin_port = port;
    return address;
}
} // namespace

class CFakePath::CSenderLine final : public IStampLine
{
  public:
    CSenderLine(CFakePath& path, USHORT port) : Port(port), m_path(path) { m_path.m_lines[Port] = this; }
    ~CSenderLine() override { m_path.m_lines.erase(Port); }

    uint64_t Now() noexcept override { return kSystemBegin + m_path.m_now; }
    uint64_t Steady() noexcept override { return m_path.m_now; }
    Sending Send(std::span<const BYTE> bytes, const CArrival*) noexcept override
    {
        if (!m_path.SystemSends)
            return Sending::Failed;
        const uint64_t index = m_path.m_there++;
        if (m_path.Elapsed() >= m_path.RefusedFrom)
            Errors.push_back(Receiving::Refused);
        else if (m_path.Elapsed() >= m_path.UnreachableFrom)
            Errors.push_back(Receiving::Unreachable);
        else
            m_path.Fly(m_path.There, index, kThere, {false, Port, {bytes.begin(), bytes.end()}});
        return Sending::Done;
    }
    Receiving Receive(std::span<BYTE> buffer, CArrival& arrival) noexcept override
    {
        if (!Errors.empty())
        {
            const Receiving what = Errors.front();
            Errors.pop_front();
            return what;
        }
        if (Arrived.empty())
            return Receiving::Nothing;
        std::copy(Arrived.front().begin(), Arrived.front().end(), buffer.begin());
        arrival.Size = Arrived.front().size();
        arrival.Time = Now();
        Arrived.pop_front();
        return Receiving::Packet;
    }
    Woken Wait(uint64_t until) noexcept override { return m_path.Advance(*this, until, true); }
    Woken WaitStopped(uint64_t until) noexcept override { return m_path.Advance(*this, until, false); }

    const USHORT Port;
    std::deque<std::vector<BYTE>> Arrived;
    std::deque<Receiving> Errors;

  private:
    CFakePath& m_path;
};

// Where the reflector's answers go: back, after the time that it takes.
class CFakePath::CPeerLine final : public IStampLine
{
  public:
    explicit CPeerLine(CFakePath& path) : m_path(path) {}

    uint64_t Now() noexcept override { return kSystemBegin / 2 + m_path.m_now + kAtPeer; } // clocks differ
    uint64_t Steady() noexcept override { return m_path.m_now; }
    Sending Send(std::span<const BYTE> bytes, const CArrival* answered) noexcept override
    {
        const USHORT port = answered->From.Ipv4.sin_port;
        m_path.Fly(m_path.Back, m_path.m_back++, kAtPeer + kBack, {true, port, {bytes.begin(), bytes.end()}});
        return Sending::Done;
    }
    Receiving Receive(std::span<BYTE>, CArrival&) noexcept override { return Receiving::Nothing; }
    Woken Wait(uint64_t) noexcept override { return Woken::Stopped; }
    Woken WaitStopped(uint64_t) noexcept override { return Woken::Stopped; }

  private:
    CFakePath& m_path;
};

CFakePath::CFakePath(CStampMac* mac)
    : m_reflector(std::make_unique<CReflector>(mac, htons(kStampPort), CReflectorLimits{}, kBegin))
{
}

HRESULT CFakePath::Open(std::unique_ptr<IStampLine>& line)
{
    line.reset();
    line = std::make_unique<CSenderLine>(*this, htons(static_cast<USHORT>(50'000 + m_ports++)));
    return S_OK;
}

void CFakePath::Fly(const Fate& fate, uint64_t index, uint64_t usual, const CFlying& flying)
{
    for (const uint64_t later : fate ? fate(index) : std::vector<uint64_t>{0})
        m_flying.emplace(m_now + usual + later, flying);
}

void CFakePath::Arrive(const CFlying& flying)
{
    if (flying.Back)
    {
        const auto line = m_lines.find(flying.Port);
        if (line != m_lines.end())
            line->second->Arrived.push_back(flying.Bytes);
        return;
    }
    CArrival arrival;
    arrival.From = FromPort(flying.Port);
    arrival.Size = flying.Bytes.size();
    arrival.Time = kSystemBegin / 2 + m_now;
    CPeerLine line(*this);
    std::vector<BYTE> bytes = flying.Bytes;
    if (!OtherPeer)
    {
        m_reflector->Take(bytes, arrival, line);
        return;
    }
    const std::vector<BYTE> answer = OtherPeer(std::move(bytes));
    if (!answer.empty())
        line.Send(answer, &arrival);
}

Woken CFakePath::Advance(CSenderLine& line, uint64_t until, bool heedStop)
{
    // Each wait takes a little, as it does in the world.
    until = std::max(until, m_now + 1);
    while (!m_flying.empty() && m_flying.begin()->first <= until && line.Arrived.empty())
    {
        m_now = std::max(m_now, m_flying.begin()->first);
        const CFlying flying = m_flying.begin()->second;
        m_flying.erase(m_flying.begin());
        Arrive(flying);
    }
    if (line.Arrived.empty())
        m_now = until;
    if (heedStop && Elapsed() >= StopAt)
        return Woken::Stopped;
    return Elapsed() >= LinkGoneAt ? Woken::LinkGone : Woken::Ready;
}

CFakePath::Fate LoseEvery(uint64_t n)
{
    return [n](uint64_t index)
    { return index % n == 0 ? std::vector<uint64_t>{} : std::vector<uint64_t>{0}; };
}

CFakePath::Fate RepeatEvery(uint64_t n)
{
    return [n](uint64_t index) {
        return index % n == 0 ? std::vector<uint64_t>{0, kStampMillisecond / 10} : std::vector<uint64_t>{0};
    };
}

CFakePath::Fate DelayEvery(uint64_t n, uint64_t by)
{
    return [n, by](uint64_t index) { return std::vector<uint64_t>{index % n == n - 1 ? by : 0}; };
}
