// A sender and a responder in one process, over the real sockets of this machine.
#include "agent/AgentCodes.h"
#include "agent/host/stamp/ResponderRun.h"
#include "agent/host/stamp/SenderRun.h"
#include "agent/host/stamp/SocketLine.h"
#include "tests/support/CaseName.h"
#include "tests/unit/agent/FakeNetwork.h"

#include <future>

namespace
{
struct LoopbackCase
{
    const char* name;
    const wchar_t* address;
    bool authenticated;
    size_t size;
};

class Loopback : public testing::TestWithParam<LoopbackCase>
{
  protected:
    Loopback()
    {
        WSADATA data = {};
        WSAStartup(MAKEWORD(2, 2), &data);
    }
    ~Loopback() override { WSACleanup(); }

    static CHandle Event() { return CHandle(CreateEventW(nullptr, TRUE, FALSE, nullptr)); }

    // A port that is free just now.
    static USHORT FreePort(SOCKADDR_INET address)
    {
        const SOCKET probe = socket(address.si_family, SOCK_DGRAM, IPPROTO_UDP);
        int size = address.si_family == AF_INET ? sizeof address.Ipv4 : sizeof address.Ipv6;
        if (bind(probe, reinterpret_cast<const sockaddr*>(&address), size) == 0)
            getsockname(probe, reinterpret_cast<sockaddr*>(&address), &size);
        closesocket(probe);
        return address.Ipv4.sin_port;
    }

    // Until the sender has counted so many packets; false if it ended before.
    template <class Run>
    static bool WaitForPackets(const CMeasurement& measurement, ULONG packets, std::future<Run>& run)
    {
        VormTestStatistics record = {};
        while (run.wait_for(std::chrono::milliseconds(20)) == std::future_status::timeout)
            if (measurement.Read(record) && record.Counter[0] >= packets)
                return true;
        return false;
    }

    CHandle m_stopSender = Event();
    CHandle m_stopResponder = Event();
    CHandle m_linkGone = Event();
    CMeasurement m_sent;
    CMeasurement m_answered;
};

TEST_P(Loopback, SenderMeasuresResponder)
{
    SOCKADDR_INET there = Address(GetParam().address);
    there.Ipv4.sin_port = FreePort(there);
    if (there.Ipv4.sin_port == 0)
        GTEST_SKIP() << "this machine has no " << GetParam().name;
    const std::vector<BYTE> key(16, 5);
    const auto sendersMac = GetParam().authenticated ? CStampMac::Make(key) : nullptr;
    const auto respondersMac = GetParam().authenticated ? CStampMac::Make(key) : nullptr;
    m_sent.Begin();
    m_answered.Begin();

    CSocketLine responder({m_stopResponder.Get(), m_linkGone.Get()});
    ASSERT_EQ(0, responder.Listen(there));
    auto answering = std::async(
        std::launch::async,
        [&] {
            return RunResponder(responder, {respondersMac.get(), there.Ipv4.sin_port, 0, {}}, m_answered);
        });
    const auto open = [&](std::unique_ptr<IStampLine>& line)
    {
        auto socket = std::make_unique<CSocketLine>(CLineSignals{m_stopSender.Get(), m_linkGone.Get()});
        const HRESULT hr = socket->Connect(Address(GetParam().address), there, 0);
        line = std::move(socket);
        return hr;
    };
    // A busy machine may be late with packets; that is not what this test is about.
    CSenderRun sender({{sendersMac.get(), GetParam().size}, 200, {100, 1}}, open, m_sent);
    auto sending = std::async(std::launch::async, [&] { return sender.Execute(); });
    EXPECT_TRUE(WaitForPackets(m_sent, 100, sending));
    SetEvent(m_stopSender.Get());
    EXPECT_EQ(S_OK, sending.get());
    SetEvent(m_stopResponder.Get());
    EXPECT_EQ(S_OK, answering.get());

    const CSenderCounts counts = sender.Counts();
    VormTestStatistics answered = {};
    m_answered.Read(answered);
    EXPECT_GE(counts.Answered, 100u);
    EXPECT_GE(answered.Counter[0], counts.Arrived());
    EXPECT_EQ(answered.Counter[0], answered.Counter[1]);
    EXPECT_FALSE(counts.OneSum);
    EXPECT_EQ(0u, counts.Repeated);
    EXPECT_EQ(0u, answered.Counter[6]);
    EXPECT_GT(sender.RoundTrips().Median(), 0u);
}

INSTANTIATE_TEST_SUITE_P(Families, Loopback,
                         testing::Values(LoopbackCase{"IPv4", L"127.0.0.1", false, 44},
                                         LoopbackCase{"IPv6", L"::1", false, 44},
                                         LoopbackCase{"IPv4Authenticated", L"127.0.0.1", true, 112},
                                         LoopbackCase{"IPv6Authenticated", L"::1", true, 112},
                                         LoopbackCase{"LargestPackets", L"127.0.0.1", false, 1452}),
                         NameOf<LoopbackCase>);

class LoopbackSocket : public Loopback
{
  protected:
    CSocketLine m_line{CLineSignals{m_stopSender.Get(), m_linkGone.Get()}};
};

TEST_F(LoopbackSocket, NobodyListens)
{
    SOCKADDR_INET there = Address(L"127.0.0.1");
    there.Ipv4.sin_port = FreePort(there);
    const auto open = [&](std::unique_ptr<IStampLine>& line)
    {
        auto socket = std::make_unique<CSocketLine>(CLineSignals{m_stopSender.Get(), m_linkGone.Get()});
        const HRESULT hr = socket->Connect(Address(L"127.0.0.1"), there, 0);
        line = std::move(socket);
        return hr;
    };
    m_sent.Begin();
    CSenderRun sender({{nullptr, 44}, 100, {1, 200}}, open, m_sent);
    EXPECT_EQ(vorl::sender::Refused, sender.Execute());
}

TEST_F(LoopbackSocket, AddressThatIsNotThisMachines)
{
    // Wine binds a socket to any IPv4 address.
    SOCKADDR_INET there = Address(L"::1");
    there.Ipv4.sin_port = 9;
    EXPECT_EQ(vorl::sender::NotBound, m_line.Connect(Address(L"2001:db8::77"), there, 0));
    EXPECT_EQ(WSAEADDRNOTAVAIL, m_line.Listen(Address(L"2001:db8::77")));
}

TEST_F(LoopbackSocket, PortThatIsTaken)
{
    SOCKADDR_INET here = Address(L"127.0.0.1");
    here.Ipv4.sin_port = FreePort(here);
    EXPECT_EQ(0, m_line.Listen(here));
    CSocketLine second({m_stopSender.Get(), m_linkGone.Get()});
    const int error = second.Listen(here);
    EXPECT_TRUE(error == WSAEADDRINUSE || error == WSAEACCES) << error;
}

TEST_F(LoopbackSocket, HearsTheHopLimit)
{
    for (const wchar_t* text : {L"127.0.0.1", L"::1"})
    {
        SOCKADDR_INET here = Address(text);
        here.Ipv4.sin_port = FreePort(here);
        if (here.Ipv4.sin_port == 0)
            continue;
        CSocketLine listening({m_stopSender.Get(), m_linkGone.Get()});
        ASSERT_EQ(0, listening.Listen(here));
        CSocketLine sending({m_stopSender.Get(), m_linkGone.Get()});
        ASSERT_EQ(S_OK, sending.Connect(Address(text), here, 0));
        constexpr BYTE kBytes[] = {1, 2, 3};
        ASSERT_EQ(Sending::Done, sending.Send(kBytes, nullptr));
        std::vector<BYTE> buffer(100);
        CArrival arrival;
        while (listening.Receive(buffer, arrival) == Receiving::Nothing)
            ASSERT_EQ(Woken::Ready, listening.Wait(listening.Steady() + kStampSecond));
        EXPECT_EQ(3u, arrival.Size);
        EXPECT_EQ(255, arrival.HopLimit) << "which is what senders send with";
        EXPECT_EQ(here.si_family, arrival.From.si_family);
        EXPECT_LE(arrival.Time, listening.Now());
    }
}

TEST_F(LoopbackSocket, WaitsEndByTheirTimeAndBySignals)
{
    const uint64_t begin = m_line.Steady();
    EXPECT_EQ(Woken::Ready, m_line.Wait(begin + 3 * kStampMillisecond));
    EXPECT_GE(m_line.Steady() + kStampMillisecond, begin + 3 * kStampMillisecond);
    EXPECT_EQ(Woken::Ready, m_line.Wait(0));
    SetEvent(m_linkGone.Get());
    EXPECT_EQ(Woken::LinkGone, m_line.Wait(begin + 1000 * kStampSecond));
    EXPECT_EQ(Woken::LinkGone, m_line.WaitStopped(begin + 1000 * kStampSecond));
    SetEvent(m_stopSender.Get());
    EXPECT_EQ(Woken::Stopped, m_line.Wait(begin + 1000 * kStampSecond));
    ResetEvent(m_linkGone.Get());
    EXPECT_EQ(Woken::Ready, m_line.WaitStopped(m_line.Steady() + 60 * kStampMillisecond));
}
} // namespace
