#include "agent/host/stamp/ResponderRun.h"
#include "agent/host/stamp/SenderRun.h"
#include "agent/host/stamp/SocketLine.h"
#include "bench/BareEcho.h"
#include "bench/Figures.h"
#include "bench/Measure.h"
#include "bench/Must.h"

#include <algorithm>
#include <thread>

namespace
{
constexpr CFigureTexts kTexts = {
    .Letter = 'f',
    .Title = "Sender and responder over loopback",
    .Measured = "what the sender's run counts and reports, with the responder in the same process",
    .Against = "a bare loop that sends and receives packets of the same size",
    .Goal = "rate without loss at least 0.80, round trip 0.90 to 1.10",
    .FirstColumn = "packets",
};

constexpr double kRateGoal = 0.8;
constexpr double kRoundTripTolerance = 0.1;
constexpr int kRounds = 5;
constexpr DWORD kSeconds = 1; // of each sample
constexpr DWORD kCalmRate = 200;
// What is tried, as parts of the bare loop's rate, from the highest down to the first that is held.
constexpr double kParts[] = {2.0, 1.75, 1.5, 1.25, 1.1, 1.0, 0.9, 0.8, 0.7, 0.6, 0.5, 0.4, 0.3, 0.2, 0.1};
constexpr CReflectorLimits kUnbounded = {1'000'000, 1'000'000, 30 * kStampSecond};

struct CForm
{
    const char* Name;
    size_t Size;
    bool Authenticated;
};
constexpr CForm kForms[] = {
    {"44 octets", 44, false}, {"1452 octets", 1452, false}, {"112 octets, authenticated", 112, true}};

CHandle MakeEvent()
{
    return CHandle(CreateEventW(nullptr, TRUE, FALSE, nullptr));
}

// A responder on loopback, for as long as it lives.
class CLocalResponder
{
  public:
    CLocalResponder(const SOCKADDR_INET& address, CStampMac* mac) : m_line({m_stop.Get(), m_never.Get()})
    {
        Must(m_line.Listen(address) == 0, "listening on loopback");
        m_thread = std::thread(
            [this, mac, port = address.Ipv4.sin_port] {
                RunResponder(m_line, {mac, port, 0, kUnbounded}, m_measurement);
            });
    }
    ~CLocalResponder()
    {
        SetEvent(m_stop.Get());
        m_thread.join();
    }
    CLocalResponder(const CLocalResponder&) = delete;
    CLocalResponder& operator=(const CLocalResponder&) = delete;

  private:
    CHandle m_stop = MakeEvent();
    CHandle m_never = MakeEvent();
    CSocketLine m_line;
    CMeasurement m_measurement;
    std::thread m_thread;
};

struct CSample
{
    CSenderCounts Counts;
    double RoundTrip; // seconds
};

// A second of the sender at this rate.
CSample RunSender(const SOCKADDR_INET& responder, const CForm& form, CStampMac* mac, DWORD rate)
{
    const CHandle stop = MakeEvent();
    const CHandle never = MakeEvent();
    const auto open = [&](std::unique_ptr<IStampLine>& line)
    {
        auto socket = std::make_unique<CSocketLine>(CLineSignals{stop.Get(), never.Get()});
        const HRESULT hr = socket->Connect(LoopbackAddress(0), responder, 0);
        line = std::move(socket);
        return hr;
    };
    CMeasurement measurement;
    CSenderRun run({{mac, form.Size}, rate, {100, 1}}, open, measurement);
    std::thread stopper(
        [&]
        {
            Sleep(kSeconds * 1000);
            SetEvent(stop.Get());
        });
    const HRESULT hr = run.Execute();
    stopper.join();
    Must(hr, "a run of the sender");
    return {run.Counts(), static_cast<double>(run.RoundTrips().Median()) / static_cast<double>(kStampSecond)};
}

// Without loss, and without falling behind: what is not clear at the end are the last tenths of a second.
bool Holds(const CSample& sample, double rate)
{
    constexpr double kCounted = 0.7;
    return sample.Counts.Lost() == 0 && static_cast<double>(sample.Counts.Sent) >= kCounted * rate * kSeconds;
}

double HeldPart(const SOCKADDR_INET& responder, const CForm& form, CStampMac* mac, double bareRate)
{
    for (const double part : kParts)
        if (Holds(RunSender(responder, form, mac, static_cast<DWORD>(bareRate * part)), bareRate * part))
            return part;
    return 0;
}

void MeasureForm(CReport& report, const CForm& form)
{
    const std::vector<BYTE> key(16, 7);
    const auto mac = form.Authenticated ? CStampMac::Make(key) : nullptr;
    const auto respondersMac = form.Authenticated ? CStampMac::Make(key) : nullptr;
    const CBareEcho bare(form.Size);
    const SOCKADDR_INET address = LoopbackAddress(FreeLoopbackPort());
    const CLocalResponder responder(address, respondersMac.get());
    std::vector<double> parts;
    std::vector<double> rates;
    std::vector<double> roundTrips;
    std::vector<double> bareRoundTrips;
    std::vector<double> ratios;
    for (int round = 0; round < kRounds; ++round)
    {
        rates.push_back(bare.Rate(kSeconds));
        parts.push_back(HeldPart(address, form, mac.get(), rates.back()));
        bareRoundTrips.push_back(bare.RoundTrip(kCalmRate, kSeconds));
        roundTrips.push_back(RunSender(address, form, mac.get(), kCalmRate).RoundTrip);
        ratios.push_back(roundTrips.back() / bareRoundTrips.back());
    }
    const double part = Median(parts);
    report.Line(std::string(form.Name) + ", per second",
                {Fixed(part * Median(rates), 0), Fixed(Median(rates), 0), Fixed(part, 2)}, part >= kRateGoal);
    const double ratio = Median(ratios);
    report.Line(std::string(form.Name) + ", us",
                {Fixed(Median(roundTrips) * 1e6, 1), Fixed(Median(bareRoundTrips) * 1e6, 1), Fixed(ratio, 2)},
                ratio >= 1 - kRoundTripTolerance && ratio <= 1 + kRoundTripTolerance);
}
} // namespace

void MeasureStamp(CReport& report)
{
    report.Begin(kTexts, {"ours", "bare", "ratio"});
    const CSocketsScope sockets;
    for (const CForm& form : kForms)
        MeasureForm(report, form);
}
