#include "agent/host/Addresses.h"

#include "tests/unit/agent/FakeNetwork.h"

#include <gtest/gtest.h>

namespace
{
TEST(Addresses, LinkLocal)
{
    EXPECT_TRUE(IsLinkLocal(Address(L"169.254.0.1")));
    EXPECT_FALSE(IsLinkLocal(Address(L"169.253.0.1")));
    EXPECT_TRUE(IsLinkLocal(Address(L"fe80::1")));
    EXPECT_TRUE(IsLinkLocal(Address(L"febf::1")));
    EXPECT_FALSE(IsLinkLocal(Address(L"fec0::1")));
}

TEST(Addresses, PlaceholderDnsServersAreIpv6Only)
{
    EXPECT_TRUE(IsPlaceholderDns(Address(L"fec0:0:0:ffff::2")));
    EXPECT_FALSE(IsPlaceholderDns(Address(L"fec0::2")));
    EXPECT_FALSE(IsPlaceholderDns(Address(L"254.192.0.1")));
}

TEST(Addresses, PrefixesAreComparedToTheBit)
{
    EXPECT_TRUE(InSamePrefix(Address(L"10.1.127.1"), Address(L"10.1.1.1"), 17));
    EXPECT_FALSE(InSamePrefix(Address(L"10.1.128.1"), Address(L"10.1.1.1"), 17));
    EXPECT_TRUE(InSamePrefix(Address(L"10.1.128.1"), Address(L"200.1.1.1"), 0));
    EXPECT_TRUE(InSamePrefix(Address(L"10.1.1.1"), Address(L"10.1.1.1"), 32));
    EXPECT_FALSE(InSamePrefix(Address(L"10.1.1.1"), Address(L"10.1.1.0"), 32));
    EXPECT_TRUE(InSamePrefix(Address(L"2001:db8::1"), Address(L"2001:db8::2"), 64));
    EXPECT_FALSE(InSamePrefix(Address(L"2001:db8::1"), Address(L"2001:db8::2"), 128));
    EXPECT_FALSE(InSamePrefix(Address(L"10.1.1.1"), Address(L"2001:db8::2"), 0));
}

TEST(Addresses, NetworkAndBroadcastAddresses)
{
    EXPECT_TRUE(IsNetworkOrBroadcast(Address(L"10.1.0.0"), 16));
    EXPECT_TRUE(IsNetworkOrBroadcast(Address(L"10.1.255.255"), 16));
    EXPECT_FALSE(IsNetworkOrBroadcast(Address(L"10.1.255.0"), 16));
    EXPECT_FALSE(IsNetworkOrBroadcast(Address(L"10.1.0.0"), 31));
    EXPECT_FALSE(IsNetworkOrBroadcast(Address(L"2001:db8::"), 30));
}

TEST(Addresses, ReverseNames)
{
    EXPECT_EQ("4.3.2.1.in-addr.arpa", ReverseName(Address(L"1.2.3.4")));
    EXPECT_EQ("1.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.8.b.d.0.1.0.0.2.ip6.arpa",
              ReverseName(Address(L"2001:db8::1")));
}

TEST(Addresses, SourceIsOfTheTargetsFamilyAndScope)
{
    const CAdapterFacts adapter = HealthyAdapter();
    ASSERT_TRUE(SourceFor(adapter, Address(L"198.51.100.1")));
    EXPECT_EQ(AF_INET, SourceFor(adapter, Address(L"198.51.100.1"))->si_family);
    ASSERT_TRUE(SourceFor(adapter, Address(L"fe80::99")));
    EXPECT_EQ(AF_INET6, SourceFor(adapter, Address(L"fe80::99"))->si_family);
    EXPECT_FALSE(SourceFor(adapter, Address(L"2001:db8::99")));
}
} // namespace
