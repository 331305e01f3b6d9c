#include "Common/src/com/Owned.h"
#include "agent/AgentCodes.h"
#include "agent/host/HostTest.h"
#include "tests/support/CaseName.h"
#include "tests/unit/agent/FakeNetwork.h"

#include <functional>

namespace
{
using Change = std::function<void(CFakeNetwork&, CAdapterFacts&)>;

// One test on one adapter that differs from a healthy one as the case says.
struct Case
{
    std::string name;
    HRESULT (*test)(const CHostRun&);
    Change change;
    HRESULT expected;
};

class HostTest : public testing::TestWithParam<Case>
{
};

// Nothing has to pass between the two looks at the counters.
constexpr DWORD kNoSampling = 0;

TEST_P(HostTest, EndsWithItsCode)
{
    CFakeNetwork network;
    CAdapterFacts adapter = HealthyAdapter();
    network.Looks.clear();
    GetParam().change(network, adapter);
    network.Looks.push_back({adapter});
    const CHandle stop(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    const std::wstring key = kAdapterKey;
    EXPECT_EQ(GetParam().expected, GetParam().test(CHostRun(network, key, stop.Get(), kNoSampling)));
}

Change None()
{
    return [](CFakeNetwork&, CAdapterFacts&) {};
}
template <class Member, class Value>
Change Set(Member CAdapterFacts::*member, Value value)
{
    return [=](CFakeNetwork&, CAdapterFacts& adapter) { adapter.*member = Member(value); };
}
Change Then(const Change& first, const Change& second)
{
    return [=](CFakeNetwork& network, CAdapterFacts& adapter)
    {
        first(network, adapter);
        second(network, adapter);
    };
}
Change Speed(ULONG64 speed)
{
    return Then(Set(&CAdapterFacts::TransmitSpeed, speed), Set(&CAdapterFacts::ReceiveSpeed, speed));
}
Change Duplex(std::optional<bool> full)
{
    return [=](CFakeNetwork& network, CAdapterFacts&) { network.FullDuplex = full; };
}

INSTANTIATE_TEST_SUITE_P(
    Link, HostTest,
    testing::Values(Case{"Healthy", RunLinkTest, None(), S_OK},
                    Case{"CableUnplugged", RunLinkTest,
                         Then(Set(&CAdapterFacts::OperStatus, IfOperStatusDown),
                              Set(&CAdapterFacts::Media, MediaConnectStateDisconnected)),
                         vorl::link::Down},
                    Case{"DownForNoToldReason", RunLinkTest,
                         Set(&CAdapterFacts::OperStatus, IfOperStatusDown), vorl::link::Down},
                    Case{"LowerLayerDown", RunLinkTest,
                         Set(&CAdapterFacts::OperStatus, IfOperStatusLowerLayerDown), vorl::link::Down},
                    Case{"UpButMediaDisconnected", RunLinkTest,
                         Set(&CAdapterFacts::Media, MediaConnectStateDisconnected), vorl::link::Down},
                    Case{"Disabled", RunLinkTest, Set(&CAdapterFacts::AdminStatus, NET_IF_ADMIN_STATUS_DOWN),
                         vorl::link::Disabled},
                    Case{"NotAuthenticated", RunLinkTest, Set(&CAdapterFacts::NotAuthenticated, true),
                         vorl::link::NotAuthenticated},
                    Case{"Unknown", RunLinkTest, Set(&CAdapterFacts::OperStatus, IfOperStatusUnknown),
                         vorl::link::Unknown},
                    Case{"Dormant", RunLinkTest, Set(&CAdapterFacts::OperStatus, IfOperStatusDormant),
                         vorl::link::NotReady},
                    Case{"NotPresent", RunLinkTest, Set(&CAdapterFacts::OperStatus, IfOperStatusNotPresent),
                         vorl::link::NotReady}),
    NameOf<Case>);

INSTANTIATE_TEST_SUITE_P(
    Speed, HostTest,
    testing::Values(
        Case{"Gigabit", RunSpeedTest, None(), S_OK},
        Case{"GigabitNeedsNoReportedDuplex", RunSpeedTest, Duplex(std::nullopt), S_OK},
        Case{"HundredFullDuplex", RunSpeedTest, Speed(100'000'000), S_OK},
        Case{"HundredHalfDuplex", RunSpeedTest, Then(Speed(100'000'000), Duplex(false)),
             vorl::speed::HalfDuplex},
        Case{"HundredUnknownDuplex", RunSpeedTest, Then(Speed(100'000'000), Duplex(std::nullopt)),
             vorl::speed::DuplexNotReported},
        Case{"Ten", RunSpeedTest, Speed(10'000'000), vorl::speed::TooSlow},
        Case{"ReportedAsZero", RunSpeedTest, Speed(0), vorl::speed::NotReported},
        Case{"ReportedAsAllOnes", RunSpeedTest, Speed(~0ULL), vorl::speed::NotReported},
        Case{"OneDirectionNotReported", RunSpeedTest, Set(&CAdapterFacts::ReceiveSpeed, 0),
             vorl::speed::NotReported},
        Case{"OneDirectionTooSlowTheOtherNotReported", RunSpeedTest,
             Then(Set(&CAdapterFacts::ReceiveSpeed, 0), Set(&CAdapterFacts::TransmitSpeed, 10'000'000)),
             vorl::speed::TooSlow},
        Case{"NeitherReported", RunSpeedTest, Then(Speed(0), Duplex(std::nullopt)),
             vorl::speed::NothingReported},
        Case{"SpeedNotReportedHalfDuplex", RunSpeedTest, Then(Speed(0), Duplex(false)),
             vorl::speed::HalfDuplex},
        Case{"Unequal", RunSpeedTest, Set(&CAdapterFacts::ReceiveSpeed, 100'000'000), vorl::speed::Unequal},
        Case{"NoLink", RunSpeedTest, Set(&CAdapterFacts::OperStatus, IfOperStatusDown), vorl::speed::NoLink}),
    NameOf<Case>);

// The first look shows a healthy adapter; until the next one, two seconds later, its counters grow by this
// much.
Change Grow(CTrafficCounters by)
{
    return [=](CFakeNetwork& network, CAdapterFacts& adapter)
    {
        network.Looks.push_back({adapter});
        adapter.Moment += 2000;
        adapter.Traffic.ReceiveErrors += by.ReceiveErrors;
        adapter.Traffic.TransmitErrors += by.TransmitErrors;
        adapter.Traffic.ReceiveDiscards += by.ReceiveDiscards;
        adapter.Traffic.TransmitDiscards += by.TransmitDiscards;
        adapter.Traffic.Received += by.Received;
        adapter.Traffic.Transmitted += by.Transmitted;
    };
}
// As above, from counters that run on to ones that begin anew.
Change Restart(ULONG64 CTrafficCounters::*counter)
{
    return [=](CFakeNetwork& network, CAdapterFacts& adapter)
    {
        network.Looks.push_back({adapter});
        adapter.Traffic.*counter = 0;
    };
}
Change GoesDownMeanwhile()
{
    return [](CFakeNetwork& network, CAdapterFacts& adapter)
    {
        network.Looks.push_back({adapter});
        adapter.OperStatus = IfOperStatusDown;
    };
}
Change DisappearsMeanwhile()
{
    return [](CFakeNetwork& network, CAdapterFacts& adapter)
    {
        network.Looks.push_back({adapter});
        adapter.Key = L"{another}";
    };
}

INSTANTIATE_TEST_SUITE_P(
    Counters, HostTest,
    testing::Values(
        Case{"ErrorsStay", RunErrorsTest, Grow({0, 0, 0, 0, 5000, 5000}), S_OK},
        Case{"OneErrorASecond", RunErrorsTest, Grow({2, 0, 0, 0, 0, 0}), vorl::errors::Few},
        Case{"OneErrorTooManyWithoutTraffic", RunErrorsTest, Grow({3, 0, 0, 0, 0, 0}), vorl::errors::Receive},
        Case{"OneErrorInTenThousand", RunErrorsTest, Grow({3, 0, 0, 0, 29'997, 0}), vorl::errors::Few},
        Case{"MoreThanOneErrorInTenThousand", RunErrorsTest, Grow({3, 0, 0, 0, 29'996, 0}),
             vorl::errors::Receive},
        Case{"TransmitErrorsASecond", RunErrorsTest, Grow({0, 2, 0, 0, 0, 0}), vorl::errors::Few},
        Case{"TransmitErrorsInTenThousand", RunErrorsTest, Grow({0, 3, 0, 0, 0, 29'997}), vorl::errors::Few},
        Case{"TransmitErrorsExceed", RunErrorsTest, Grow({0, 3, 0, 0, 0, 29'996}), vorl::errors::Transmit},
        Case{"TrafficOfTheOtherDirectionDoesNotCount", RunErrorsTest, Grow({3, 0, 0, 0, 0, 90'000}),
             vorl::errors::Receive},
        Case{"BothErrorsExceed", RunErrorsTest, Grow({3, 3, 0, 0, 100, 100}), vorl::errors::Both},
        Case{"OneExceedsTheOtherHasFew", RunErrorsTest, Grow({1, 3, 0, 0, 100, 100}), vorl::errors::Transmit},
        Case{"ReceiveErrorsReset", RunErrorsTest, Restart(&CTrafficCounters::ReceiveErrors),
             vorl::errors::CountersReset},
        Case{"TransmitErrorsReset", RunErrorsTest, Restart(&CTrafficCounters::TransmitErrors),
             vorl::errors::CountersReset},
        Case{"ReceivedReset", RunErrorsTest, Restart(&CTrafficCounters::Received),
             vorl::errors::CountersReset},
        Case{"TransmittedReset", RunErrorsTest, Restart(&CTrafficCounters::Transmitted),
             vorl::errors::CountersReset},
        Case{"ErrorsIgnoreDiscards", RunErrorsTest, Grow({0, 0, 900, 900, 0, 0}), S_OK},
        Case{"ErrorsOfAnAdapterThatIsDown", RunErrorsTest, Set(&CAdapterFacts::OperStatus, IfOperStatusDown),
             vorl::errors::NotUp},
        Case{"ErrorsLinkLostMeanwhile", RunErrorsTest, GoesDownMeanwhile(), vorl::errors::NotUp},
        Case{"ErrorsAdapterGoneMeanwhile", RunErrorsTest, DisappearsMeanwhile(), vorl::NoSuchAdapter},
        Case{"DiscardsStay", RunDiscardsTest, Grow({0, 0, 0, 0, 5000, 5000}), S_OK},
        Case{"OneDiscardMore", RunDiscardsTest, Grow({0, 0, 1, 0, 0, 0}), vorl::discards::Few},
        Case{"TenDiscardsASecond", RunDiscardsTest, Grow({0, 0, 20, 0, 0, 0}), vorl::discards::Few},
        Case{"OneDiscardTooManyWithoutTraffic", RunDiscardsTest, Grow({0, 0, 21, 0, 0, 0}),
             vorl::discards::Receive},
        Case{"OneDiscardInAHundred", RunDiscardsTest, Grow({0, 0, 21, 0, 2079, 0}), vorl::discards::Few},
        Case{"MoreThanOneDiscardInAHundred", RunDiscardsTest, Grow({0, 0, 21, 0, 2078, 0}),
             vorl::discards::Receive},
        Case{"TransmitDiscardsInAHundred", RunDiscardsTest, Grow({0, 0, 0, 21, 0, 2079}),
             vorl::discards::Few},
        Case{"TransmitDiscardsExceed", RunDiscardsTest, Grow({0, 0, 0, 21, 0, 2078}),
             vorl::discards::Transmit},
        Case{"BothDiscardsExceed", RunDiscardsTest, Grow({0, 0, 21, 21, 100, 100}), vorl::discards::Both},
        Case{"ReceiveDiscardsReset", RunDiscardsTest, Restart(&CTrafficCounters::ReceiveDiscards),
             vorl::discards::CountersReset},
        Case{"TransmitDiscardsReset", RunDiscardsTest, Restart(&CTrafficCounters::TransmitDiscards),
             vorl::discards::CountersReset},
        Case{"DiscardsIgnoreErrors", RunDiscardsTest, Grow({900, 900, 0, 0, 0, 0}), S_OK},
        Case{"DiscardsOfAnAdapterThatIsDown", RunDiscardsTest,
             Set(&CAdapterFacts::OperStatus, IfOperStatusDown), vorl::discards::NotUp},
        Case{"DiscardsLinkLostMeanwhile", RunDiscardsTest, GoesDownMeanwhile(), vorl::discards::NotUp}),
    NameOf<Case>);

Change Own(const std::vector<COwnAddress>& addresses)
{
    return Set(&CAdapterFacts::Addresses, addresses);
}
Change OneOwn(const wchar_t* address, BYTE prefix, NL_DAD_STATE state = IpDadStatePreferred)
{
    return Own({{Address(address), prefix, state}});
}
Change Gateway(const wchar_t* address)
{
    return Set(&CAdapterFacts::Gateways, std::vector{Address(address)});
}

// The analyser loses sight of who frees the lists in a long row of temporaries.
// NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDeleteLeaks)
INSTANTIATE_TEST_SUITE_P(
    Addresses, HostTest,
    testing::Values(
        Case{"Healthy", RunAddressTest, None(), S_OK},
        Case{"NoAddress", RunAddressTest, Own({}), vorl::address::None},
        Case{"OnlySelfAssigned4", RunAddressTest, OneOwn(L"169.254.7.7", 16), vorl::address::SelfAssigned},
        Case{"OnlySelfAssigned6", RunAddressTest, OneOwn(L"fe80::7", 64), vorl::address::SelfAssigned},
        Case{"Duplicate", RunAddressTest, OneOwn(L"192.0.2.2", 24, IpDadStateDuplicate),
             vorl::address::Duplicate},
        Case{"Unconfirmed", RunAddressTest, OneOwn(L"192.0.2.2", 24, IpDadStateTentative),
             vorl::address::Unconfirmed},
        Case{"DeprecatedStillWorks", RunAddressTest, OneOwn(L"192.0.2.2", 24, IpDadStateDeprecated), S_OK},
        Case{"PrefixZero", RunAddressTest, OneOwn(L"192.0.2.2", 0), vorl::address::BadPrefix},
        Case{"PrefixSeven", RunAddressTest, OneOwn(L"192.0.2.2", 7), vorl::address::BadPrefix},
        Case{"PrefixEight", RunAddressTest, Then(OneOwn(L"10.0.2.2", 8), Gateway(L"10.9.9.9")), S_OK},
        Case{"PrefixThirtyThree", RunAddressTest, OneOwn(L"192.0.2.2", 33), vorl::address::BadPrefix},
        Case{"NetworkAddress", RunAddressTest, OneOwn(L"192.0.2.0", 24), vorl::address::BadPrefix},
        Case{"BroadcastAddress", RunAddressTest, OneOwn(L"192.0.2.255", 24), vorl::address::BadPrefix},
        Case{"PointToPoint", RunAddressTest, Then(OneOwn(L"192.0.2.2", 32), Gateway(L"198.51.100.1")), S_OK},
        Case{"NoGateway", RunAddressTest, Set(&CAdapterFacts::Gateways, std::vector<SOCKADDR_INET>()),
             vorl::address::NoGateway},
        Case{"GatewayOutside", RunAddressTest, Gateway(L"198.51.100.1"), vorl::address::GatewayOutside},
        Case{"LinkLocalGateway6", RunAddressTest, Then(OneOwn(L"2001:db8::2", 64), Gateway(L"fe80::99")),
             S_OK},
        Case{"PrefixZero6", RunAddressTest, OneOwn(L"2001:db8::2", 0), vorl::address::BadPrefix},
        Case{"FailsOnACarrier", RunAddressTest,
             Then(OneOwn(L"169.254.7.7", 16), Set(&CAdapterFacts::AddressCarrier, Carrier::VirtualSwitch)),
             static_cast<HRESULT>(0x80040552)},
        Case{"GatewayOutside6", RunAddressTest, Then(OneOwn(L"2001:db8::2", 64), Gateway(L"2001:db9::1")),
             vorl::address::GatewayOutside}),
    NameOf<Case>);

Change Replies(const std::deque<Reply>& pings, Reply neighbour)
{
    return [=](CFakeNetwork& network, CAdapterFacts&)
    {
        network.Pings = pings;
        network.Neighbour = neighbour;
    };
}
Change TwoGateways(const std::deque<Reply>& pings, Reply neighbour)
{
    return Then(Replies(pings, neighbour),
                Set(&CAdapterFacts::Gateways, std::vector{Address(L"192.0.2.1"), Address(L"192.0.2.3")}));
}

INSTANTIATE_TEST_SUITE_P(
    Gateway, HostTest,
    testing::Values(
        Case{"Answers", RunGatewayTest, None(), S_OK},
        Case{"AnswersTheThirdTime", RunGatewayTest,
             Replies({Reply::Silent, Reply::Silent, Reply::Answered}, Reply::Silent), S_OK},
        Case{"AnswersForItsHardwareAddressOnly", RunGatewayTest, Replies({Reply::Silent}, Reply::Answered),
             S_OK},
        Case{"Silent", RunGatewayTest, Replies({Reply::Silent}, Reply::Silent), vorl::gateway::Silent},
        Case{"SilentAndNoNeighbourRequests", RunGatewayTest, Replies({Reply::Silent}, Reply::Unsupported),
             vorl::gateway::Silent},
        Case{"SilentAndNeighbourRequestNotSent", RunGatewayTest, Replies({Reply::Silent}, Reply::NotSent),
             vorl::gateway::Silent},
        Case{"NothingSupported", RunGatewayTest, Replies({Reply::Unsupported}, Reply::Unsupported),
             vorl::gateway::Unsupported},
        Case{"EchoUnsupportedNeighbourSilent", RunGatewayTest, Replies({Reply::Unsupported}, Reply::Silent),
             vorl::gateway::Silent},
        Case{"EchoUnsupportedNeighbourAnswers", RunGatewayTest,
             Replies({Reply::Unsupported}, Reply::Answered), S_OK},
        Case{"NothingSent", RunGatewayTest, Replies({Reply::NotSent}, Reply::Unsupported),
             vorl::gateway::NotSent},
        Case{"NoGateway", RunGatewayTest, Set(&CAdapterFacts::Gateways, std::vector<SOCKADDR_INET>()),
             vorl::gateway::None},
        Case{"TheSecondOneAnswers", RunGatewayTest,
             TwoGateways({Reply::Silent, Reply::Silent, Reply::Silent, Reply::Answered}, Reply::Silent),
             S_OK},
        Case{"SilentOnACarrier", RunGatewayTest,
             Then(Replies({Reply::Silent}, Reply::Silent),
                  Set(&CAdapterFacts::AddressCarrier, Carrier::TeamOrBridge)),
             static_cast<HRESULT>(0x80040662)},
        Case{"SilenceCountsMoreThanNoProbe", RunGatewayTest,
             TwoGateways({Reply::Unsupported, Reply::Silent}, Reply::Unsupported), vorl::gateway::Silent}),
    NameOf<Case>);

Change Dns(const std::deque<Reply>& replies)
{
    return [=](CFakeNetwork& network, CAdapterFacts&) { network.Dns = replies; };
}
Change DnsServers(const std::vector<SOCKADDR_INET>& servers)
{
    return Set(&CAdapterFacts::DnsServers, servers);
}

// The analyser loses sight of who frees the lists in a long row of temporaries.
// NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDeleteLeaks)
INSTANTIATE_TEST_SUITE_P(
    Names, HostTest,
    testing::Values(Case{"AllAnswer", RunNamesTest, None(), S_OK},
                    Case{"NoServers", RunNamesTest, DnsServers({}), vorl::names::NoServers},
                    Case{"PlaceholdersOnly", RunNamesTest, DnsServers({Address(L"fec0:0:0:ffff::1")}),
                         vorl::names::NoServers},
                    Case{"NoneAnswers", RunNamesTest, Dns({Reply::Silent}), vorl::names::NoneAnswers},
                    Case{"OneOfTwoSilent", RunNamesTest, Dns({Reply::Answered, Reply::Silent}),
                         vorl::names::SomeSilent},
                    Case{"OneOfTwoRefuses", RunNamesTest, Dns({Reply::Refused, Reply::Answered}),
                         vorl::names::SomeSilent},
                    Case{"AllRefuse", RunNamesTest, Dns({Reply::Refused}), vorl::names::Refused},
                    Case{"NotSent", RunNamesTest, Dns({Reply::NotSent}), vorl::names::NotSent},
                    Case{"Stopped", RunNamesTest, Dns({Reply::Stopped}), vorl::Stopped},
                    Case{"NoAddress", RunNamesTest, Own({}), vorl::names::NoAddress},
                    Case{"NoServersOnACarrier", RunNamesTest,
                         Then(DnsServers({}), Set(&CAdapterFacts::AddressCarrier, Carrier::Above)),
                         static_cast<HRESULT>(0x80040771)},
                    Case{"ServerOfAFamilyWithoutAddress", RunNamesTest,
                         DnsServers({Address(L"192.0.2.53"), Address(L"2001:db8::53")}), S_OK}),
    NameOf<Case>);

INSTANTIATE_TEST_SUITE_P(
    State, HostTest,
    testing::Values(
        Case{"Healthy", RunStateTest, None(), S_OK},
        Case{"CableUnpluggedIsTheLinkTestsMatter", RunStateTest,
             Then(Set(&CAdapterFacts::OperStatus, IfOperStatusDown),
                  Set(&CAdapterFacts::Media, MediaConnectStateDisconnected)),
             S_OK},
        Case{"Disabled", RunStateTest, Set(&CAdapterFacts::AdminStatus, NET_IF_ADMIN_STATUS_DOWN),
             vorl::state::Disabled},
        Case{"NotPresent", RunStateTest, Set(&CAdapterFacts::OperStatus, IfOperStatusNotPresent),
             vorl::state::NotPresent},
        Case{"DownWithLink", RunStateTest, Set(&CAdapterFacts::OperStatus, IfOperStatusDown),
             vorl::state::DownWithLink},
        Case{"MtuBelow", RunStateTest, Set(&CAdapterFacts::Mtu, 1279), vorl::state::BadMtu},
        Case{"MtuSmallest", RunStateTest, Set(&CAdapterFacts::Mtu, 1280), S_OK},
        Case{"MtuLargest", RunStateTest, Set(&CAdapterFacts::Mtu, 65535), S_OK},
        Case{"MtuAbove", RunStateTest, Set(&CAdapterFacts::Mtu, 65536), vorl::state::BadMtu},
        Case{"NoMac", RunStateTest, Set(&CAdapterFacts::MacAddress, std::vector<BYTE>()),
             vorl::state::NoMacAddress},
        Case{"ZeroMac", RunStateTest, Set(&CAdapterFacts::MacAddress, std::vector<BYTE>(6, 0)),
             vorl::state::NoMacAddress},
        Case{"BroadcastMac", RunStateTest, Set(&CAdapterFacts::MacAddress, std::vector<BYTE>(6, 0xFF)),
             vorl::state::BadMacAddress},
        Case{"GroupMac", RunStateTest, Set(&CAdapterFacts::MacAddress, std::vector<BYTE>{1, 2, 3, 4, 5, 6}),
             vorl::state::BadMacAddress},
        Case{"Paused", RunStateTest, Set(&CAdapterFacts::Paused, true), vorl::state::Suspended},
        Case{"LowPower", RunStateTest, Set(&CAdapterFacts::LowPower, true), vorl::state::Suspended}),
    NameOf<Case>);

std::vector<Case> ForEveryTest(const char* suffix, const Change& change, HRESULT expected)
{
    std::vector<Case> cases;
    for (const CHostTest& test : HostTests())
        cases.push_back({"Test" + std::to_string(test.Id) + suffix, test.Run, change, expected});
    return cases;
}

INSTANTIATE_TEST_SUITE_P(AdapterGone, HostTest,
                         testing::ValuesIn(ForEveryTest("AdapterGone", Set(&CAdapterFacts::Key, L"{another}"),
                                                        vorl::NoSuchAdapter)),
                         NameOf<Case>);
INSTANTIATE_TEST_SUITE_P(SystemRefuses, HostTest,
                         testing::ValuesIn(ForEveryTest(
                             "SystemRefuses",
                             [](CFakeNetwork& network, CAdapterFacts&)
                             { network.ListStatus = ERROR_ACCESS_DENIED; },
                             vorl::FactsUnavailable)),
                         NameOf<Case>);

struct CRunFixture
{
    CFakeNetwork Network;
    std::wstring Key = kAdapterKey;
    CHandle Stop{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    CHostRun Run{Network, Key, Stop.Get(), INFINITE};
};

TEST(HostTests, AreTheEightOrdinaryOnesAndTwoThatMeasure)
{
    std::vector<ULONG> ids;
    for (const CHostTest& test : HostTests())
    {
        ids.push_back(test.Id);
        EXPECT_EQ(test.Id == 9 || test.Id == 10, test.IsMeasured);
    }
    EXPECT_EQ((std::vector<ULONG>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10}), ids);
}

TEST(HostTests, SamplingEndsOnceStopped)
{
    CRunFixture fixture;
    SetEvent(fixture.Stop.Get());
    EXPECT_EQ(vorl::Stopped, RunErrorsTest(fixture.Run));
    EXPECT_EQ(vorl::Stopped, RunDiscardsTest(fixture.Run));
}

TEST(HostTests, GatewayIsPingedFromTheAdaptersOwnAddressAndNotAfterAStop)
{
    CRunFixture fixture;
    EXPECT_EQ(S_OK, RunGatewayTest(fixture.Run));
    ASSERT_EQ(1u, fixture.Network.Pinged.size());
    EXPECT_EQ(Address(L"192.0.2.1").Ipv4.sin_addr.s_addr,
              fixture.Network.Pinged[0].first.Ipv4.sin_addr.s_addr);
    EXPECT_EQ(Address(L"192.0.2.2").Ipv4.sin_addr.s_addr,
              fixture.Network.Pinged[0].second.Ipv4.sin_addr.s_addr);
    EXPECT_EQ(0, fixture.Network.NeighboursAsked);

    SetEvent(fixture.Stop.Get());
    EXPECT_EQ(vorl::Stopped, RunGatewayTest(fixture.Run));
    EXPECT_EQ(1u, fixture.Network.Pinged.size());
}

TEST(HostTests, StopBetweenTwoPingsEndsTheGatewayTest)
{
    CRunFixture fixture;
    fixture.Network.Pings = {Reply::Silent};
    fixture.Network.PingMade = fixture.Stop.Get();
    EXPECT_EQ(vorl::Stopped, RunGatewayTest(fixture.Run));
    EXPECT_EQ(1u, fixture.Network.Pinged.size());
    EXPECT_EQ(0, fixture.Network.NeighboursAsked);
}

TEST(HostTests, DnsServersAreAskedForTheAdaptersOwnAddress)
{
    CRunFixture fixture;
    EXPECT_EQ(S_OK, RunNamesTest(fixture.Run));
    EXPECT_EQ((std::vector<std::string>(2, "2.2.0.192.in-addr.arpa")), fixture.Network.NamesAsked);
}

TEST(HostTests, AdapterKeysAreComparedWithoutCase)
{
    CRunFixture fixture;
    fixture.Key = L"{00000004-0000-0000-0000-0000000000ab}";
    EXPECT_EQ(S_OK, RunLinkTest(fixture.Run));
}
} // namespace
