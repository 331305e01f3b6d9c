#include "agent/host/PeerAddress.h"

#include "Common/src/com/Owned.h"
#include "agent/AgentCodes.h"
#include "agent/host/Addresses.h"
#include "tests/support/CaseName.h"
#include "tests/unit/agent/FakeNetwork.h"

namespace
{
struct PathCase
{
    const char* name;
    std::vector<const wchar_t*> addresses;
    HRESULT expected;
    const wchar_t* source = nullptr;
    const wchar_t* peer = nullptr;
};
class PeerPath : public testing::TestWithParam<PathCase>
{
};

// The adapter has 192.0.2.2/24 and fe80::1/64.
TEST_P(PeerPath, IsChosen)
{
    std::vector<SOCKADDR_INET> addresses;
    for (const wchar_t* text : GetParam().addresses)
        addresses.push_back(Address(text));
    CPath path;
    ASSERT_EQ(GetParam().expected, ChoosePath(HealthyAdapter(), addresses, 862, path));
    if (FAILED(GetParam().expected))
        return;
    EXPECT_TRUE(InSamePrefix(Address(GetParam().source), path.Source, 32));
    EXPECT_TRUE(InSamePrefix(Address(GetParam().peer), path.Peer, 128));
    EXPECT_EQ(htons(862), path.Peer.Ipv4.sin_port);
}

INSTANTIATE_TEST_SUITE_P(
    Paths, PeerPath,
    testing::Values(
        PathCase{"Neighbour", {L"192.0.2.9"}, S_OK, L"192.0.2.2", L"192.0.2.9"},
        PathCase{"FarAway", {L"203.0.113.1"}, S_OK, L"192.0.2.2", L"203.0.113.1"},
        PathCase{"LinkLocal", {L"fe80::9"}, S_OK, L"fe80::1", L"fe80::9"},
        PathCase{"SecondAddressHasAPath", {L"2001:db8::1", L"192.0.2.9"}, S_OK, L"192.0.2.2", L"192.0.2.9"},
        PathCase{"NoAddress", {}, vorl::sender::PeerUnknown},
        PathCase{"NoSource", {L"2001:db8::1"}, vorl::sender::NoSource},
        PathCase{"Itself", {L"192.0.2.2"}, vorl::sender::BadPeer},
        PathCase{"Loopback", {L"127.0.0.1"}, vorl::sender::BadPeer},
        PathCase{"Loopback6", {L"::1"}, vorl::sender::BadPeer},
        PathCase{"NoneAtAll", {L"0.0.0.0"}, vorl::sender::BadPeer},
        PathCase{"NoneAtAll6", {L"::"}, vorl::sender::BadPeer},
        PathCase{"Group", {L"224.0.0.1"}, vorl::sender::BadPeer},
        PathCase{"Group6", {L"ff02::1"}, vorl::sender::BadPeer},
        PathCase{"Everybody", {L"255.255.255.255"}, vorl::sender::BadPeer},
        PathCase{"EverybodyOnTheSubnet", {L"192.0.2.255"}, vorl::sender::BadPeer},
        PathCase{"MissingSourceSaysMore", {L"2001:db8::1", L"127.0.0.1"}, vorl::sender::NoSource}),
    NameOf<PathCase>);

TEST(PeerScope, OfALinkLocalPeerIsTheAdapters)
{
    CAdapterFacts adapter = HealthyAdapter();
    adapter.Addresses[1].Address.Ipv6.sin6_scope_id = 7;
    CPath path;
    ASSERT_EQ(S_OK, ChoosePath(adapter, {Address(L"fe80::9")}, 862, path));
    EXPECT_EQ(7u, path.Peer.Ipv6.sin6_scope_id);
    SOCKADDR_INET scoped = Address(L"fe80::9");
    scoped.Ipv6.sin6_scope_id = 8;
    ASSERT_EQ(S_OK, ChoosePath(adapter, {scoped}, 862, path));
    EXPECT_EQ(8u, path.Peer.Ipv6.sin6_scope_id);
}

class PeerName : public testing::Test
{
  protected:
    PeerName()
    {
        WSADATA data = {};
        WSAStartup(MAKEWORD(2, 2), &data);
    }
    ~PeerName() override { WSACleanup(); }

    CHandle m_stop{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
};

TEST_F(PeerName, AddressesAreTheirOwnNames)
{
    auto found = ResolvePeer(L"192.0.2.9", m_stop.Get());
    ASSERT_EQ(1u, found.size());
    EXPECT_TRUE(InSamePrefix(Address(L"192.0.2.9"), found[0], 32));
    found = ResolvePeer(L"2001:db8::9", m_stop.Get());
    ASSERT_EQ(1u, found.size());
    EXPECT_TRUE(InSamePrefix(Address(L"2001:db8::9"), found[0], 128));
}

TEST_F(PeerName, NameWithoutAnAddressHasNone)
{
    EXPECT_TRUE(ResolvePeer(L"no such name", m_stop.Get()).empty());
}
} // namespace
