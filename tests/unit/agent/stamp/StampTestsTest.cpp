// Tests 9 and 10 as the agent runs them: settings from the registry, addresses of the adapter. The adapter of
// these tests has addresses of this machine's loopback.
#include "Common/src/com/Bstr.h"
#include "agent/AgentCodes.h"
#include "agent/host/HostAgent.h"
#include "tests/support/CaseName.h"
#include "tests/support/RegistryScope.h"
#include "tests/support/TempFolder.h"
#include "tests/unit/agent/FakeNetwork.h"

#include <fstream>
#include <functional>
#include <future>

namespace
{
constexpr char kKey[] = "SOFTWARE\\Veltrane\\Halvern\\ZEB\\ZebDiag";
// Wine binds a socket to any IPv4 address, even to one that the machine does not have.
const SOCKADDR_INET kNobodys = Address(L"2001:db8::2");
constexpr DWORD kPort = 48'620; // below those that the system gives out itself

class StampTests : public testing::Test
{
  protected:
    StampTests()
    {
        WSADATA data = {};
        WSAStartup(MAKEWORD(2, 2), &data);
        m_adapter.Addresses = {{Address(L"127.0.0.2"), 8, IpDadStatePreferred}};
        CAdapterFacts other = HealthyAdapter();
        other.Key = kOtherKey;
        other.Addresses = {{Address(L"127.0.0.1"), 8, IpDadStatePreferred}};
        m_network->Looks = {{m_adapter, other}};
        m_registry.SetString(kKey, "Peer", "127.0.0.1");
        m_registry.SetNumber(kKey, "PeerPort", kPort);
        m_registry.SetNumber(kKey, "ResponderPort", kPort);
    }
    ~StampTests() override { WSACleanup(); }

    // A run on a thread of its own, which is stopped if the test ends early.
    class CBackground
    {
      public:
        CBackground(StampTests& tests, const wchar_t* key, ULONG test)
            : m_tests(tests), m_key(key), m_test(test),
              m_run(std::async(std::launch::async, [=, &tests] { return tests.Run(key, test); }))
        {
        }
        ~CBackground()
        {
            if (m_run.valid())
                m_tests.Stop(m_key, m_test);
        }
        CBackground(const CBackground&) = delete;
        CBackground& operator=(const CBackground&) = delete;

        // Until the record of the run is as wanted; false if the run ended before.
        bool WaitFor(const std::function<bool(const VormTestStatistics&)>& wanted)
        {
            VormTestStatistics record = {};
            while (m_tests.Read(m_key, m_test, record) != S_OK || !wanted(record))
                if (m_run.wait_for(std::chrono::milliseconds(10)) != std::future_status::timeout)
                {
                    ADD_FAILURE() << "ended with " << std::hex << m_run.get();
                    return false;
                }
            return true;
        }
        HRESULT Outcome() { return m_run.get(); }

      private:
        StampTests& m_tests;
        const wchar_t* m_key;
        ULONG m_test;
        std::future<HRESULT> m_run;
    };
    static bool IsResponder(const VormTestStatistics& record) { return record.ByteA == 2; }

    HRESULT Run(const wchar_t* key, ULONG test) { return m_agent->RunDiagTest(CBstr(key).Get(), test); }
    HRESULT Stop(const wchar_t* key, ULONG test) { return m_agent->StopTest(CBstr(key).Get(), test); }
    HRESULT Read(const wchar_t* key, ULONG test, VormTestStatistics& record)
    {
        return m_agent->GetDiagTestStatistics(CBstr(key).Get(), test, &record);
    }
    void Change(const std::function<void(CAdapterFacts&)>& change)
    {
        change(m_adapter);
        m_network->Looks = {{m_adapter}};
    }

    static constexpr wchar_t kOtherKey[] = L"{OTHER}";
    CRegistryScope m_registry;
    CFakeNetwork* m_network = new CFakeNetwork();
    ComPtr<CHostAgent> m_agent = MakeCom<CHostAgent>(std::unique_ptr<INetworkFacts>(m_network), INFINITE);
    CAdapterFacts m_adapter = HealthyAdapter();
};

TEST_F(StampTests, SenderAndResponderMeasureUntilTheyAreStopped)
{
    // What a busy machine loses is not what this test is about.
    m_registry.SetNumber(kKey, "LossLimit", 100);
    CBackground responder(*this, kOtherKey, 10);
    ASSERT_TRUE(responder.WaitFor(IsResponder));
    CBackground sender(*this, kAdapterKey, 9);
    VormTestStatistics last = {};
    ASSERT_TRUE(sender.WaitFor(
        [&](const VormTestStatistics& record)
        {
            last = record;
            return record.Counter[0] >= 50;
        }));
    EXPECT_EQ(1, last.ByteA);
    EXPECT_EQ(last.Counter[2], last.Counter[0] + last.Counter[3]);
    EXPECT_EQ(last.Counter[0], last.Counter[4] + last.Counter[5]);
    EXPECT_EQ(S_OK, Stop(kAdapterKey, 9));
    EXPECT_EQ(S_OK, sender.Outcome());
    EXPECT_EQ(S_OK, Stop(kOtherKey, 10));
    EXPECT_EQ(S_OK, responder.Outcome());
    EXPECT_EQ(vorl::NotRunning, Read(kAdapterKey, 9, last));
    EXPECT_EQ(vorl::NotRunning, Stop(kAdapterKey, 9));
}

TEST_F(StampTests, FailedRunCannotBeStoppedIntoAPassedOne)
{
    EXPECT_EQ(vorl::sender::Refused, Run(kAdapterKey, 9));
    EXPECT_EQ(vorl::sender::Refused, Stop(kAdapterKey, 9));
    VormTestStatistics record = {};
    EXPECT_EQ(vorl::NotRunning, Read(kAdapterKey, 9, record));
    // The next run begins anew.
    CBackground sender(*this, kAdapterKey, 9);
    ASSERT_TRUE(sender.WaitFor([](const VormTestStatistics&) { return true; }));
    EXPECT_EQ(S_OK, Stop(kAdapterKey, 9));
    EXPECT_EQ(S_OK, sender.Outcome());
}

TEST_F(StampTests, LinkThatGoesEndsTheRun)
{
    CBackground responder(*this, kOtherKey, 10);
    ASSERT_TRUE(responder.WaitFor(IsResponder));
    m_network->GoneFromNowOn = true;
    EXPECT_EQ(vorl::responder::LinkGone, responder.Outcome());
}

TEST_F(StampTests, PortThatAnotherResponderHas)
{
    m_network->Looks = {{m_adapter}};
    const SOCKET taken = socket(AF_INET, SOCK_DGRAM, IPPROTO_UDP);
    SOCKADDR_INET here = Address(L"127.0.0.2");
    here.Ipv4.sin_port = htons(kPort);
    ASSERT_EQ(0, bind(taken, reinterpret_cast<sockaddr*>(&here), sizeof here.Ipv4));
    EXPECT_EQ(vorl::responder::PortTaken, Run(kAdapterKey, 10));
    closesocket(taken);
}

// What each test ends with before a packet is sent.
struct EarlyCase
{
    std::string name;
    ULONG test;
    std::function<void(CRegistryScope&, CAdapterFacts&)> change;
    HRESULT expected;
};
class StampTestsEarly : public StampTests, public testing::WithParamInterface<EarlyCase>
{
};

TEST_P(StampTestsEarly, End)
{
    GetParam().change(m_registry, m_adapter);
    m_network->Looks = {{m_adapter}};
    EXPECT_EQ(GetParam().expected, Run(kAdapterKey, GetParam().test));
}

using CRegistry = CRegistryScope;
INSTANTIATE_TEST_SUITE_P(
    Causes, StampTestsEarly,
    testing::Values(
        EarlyCase{"NoPeer", 9, [](CRegistry& r, auto&) { r.SetString(kKey, "Peer", ""); },
                  vorl::sender::NoPeer},
        EarlyCase{"UnknownPeer", 9, [](CRegistry& r, auto&) { r.SetString(kKey, "Peer", "no such name"); },
                  vorl::sender::PeerUnknown},
        EarlyCase{"PeerIsThisMachine", 9, [](CRegistry& r, auto&) { r.SetString(kKey, "Peer", "127.0.0.2"); },
                  vorl::sender::BadPeer},
        EarlyCase{"NoSource", 9, [](CRegistry& r, auto&) { r.SetString(kKey, "Peer", "2001:db8::1"); },
                  vorl::sender::NoSource},
        EarlyCase{"AddressNotOnTheMachine", 9,
                  [](CRegistry& r, CAdapterFacts& a)
                  {
                      r.SetString(kKey, "Peer", "2001:db8::1");
                      a.Addresses = {{kNobodys, 64, IpDadStatePreferred}};
                  },
                  vorl::sender::NotBound},
        EarlyCase{"SenderWithoutLink", 9,
                  [](CRegistry&, CAdapterFacts& a) { a.OperStatus = IfOperStatusDown; }, vorl::sender::NotUp},
        EarlyCase{"SenderDisabled", 9,
                  [](CRegistry&, CAdapterFacts& a) { a.AdminStatus = NET_IF_ADMIN_STATUS_DOWN; },
                  vorl::sender::NotUp},
        EarlyCase{"ResponderUnplugged", 10,
                  [](CRegistry&, CAdapterFacts& a) { a.Media = MediaConnectStateDisconnected; },
                  vorl::responder::NotUp},
        EarlyCase{"ResponderWithoutAddress", 10, [](CRegistry&, CAdapterFacts& a) { a.Addresses.clear(); },
                  vorl::responder::NoAddress},
        EarlyCase{"ResponderWithADuplicate", 10,
                  [](CRegistry&, CAdapterFacts& a) { a.Addresses[0].Duplicates = IpDadStateDuplicate; },
                  vorl::responder::NoAddress},
        EarlyCase{"ResponderWhoseAddressIsGone", 10,
                  [](CRegistry&, CAdapterFacts& a) {
                      a.Addresses = {{kNobodys, 64, IpDadStatePreferred}};
                  },
                  vorl::responder::NotBound},
        EarlyCase{"BadRate", 9, [](CRegistry& r, auto&) { r.SetNumber(kKey, "PacketsPerSecond", 0); },
                  vorl::setting::BadRate},
        EarlyCase{"BadRateOfAResponder", 10,
                  [](CRegistry& r, auto&) { r.SetNumber(kKey, "PacketsPerSecond", 0); },
                  vorl::setting::BadRate},
        EarlyCase{"NoKeyFile", 10, [](CRegistry& r, auto&) { r.SetNumber(kKey, "Authenticate", 1); },
                  vorl::setting::NoKeyFile},
        EarlyCase{"KeyFileThatIsMissing", 10,
                  [](CRegistry& r, auto&) { r.SetString(kKey, "KeyFile", "C:\\no such file"); },
                  vorl::setting::KeyUnreadable},
        EarlyCase{"NobodySends", 10, [](CRegistry& r, auto&) { r.SetNumber(kKey, "WaitForSender", 1); },
                  vorl::responder::NoSender}),
    NameOf<EarlyCase>);
} // namespace
