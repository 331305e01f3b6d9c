#include "agent/host/stamp/StampSettings.h"

#include "agent/AgentCodes.h"
#include "tests/support/CaseName.h"
#include "tests/support/RegistryScope.h"

namespace
{
constexpr char kKey[] = "SOFTWARE\\Veltrane\\Halvern\\ZEB\\ZebDiag";

TEST(StampSettings, HaveDefaults)
{
    CRegistryScope registry;
    CStampSettings settings;
    settings.Peer = L"old";
    EXPECT_EQ(S_OK, ReadStampSettings(settings));
    EXPECT_EQ(L"", settings.Peer);
    EXPECT_EQ(862u, settings.PeerPort);
    EXPECT_EQ(862u, settings.ResponderPort);
    EXPECT_EQ(100u, settings.PacketsPerSecond);
    EXPECT_EQ(44u, settings.PacketSize);
    EXPECT_EQ(0u, settings.Dscp);
    EXPECT_EQ(1u, settings.Loss.LimitPercent);
    EXPECT_EQ(200u, settings.Loss.EnoughPackets);
    EXPECT_EQ(60u, settings.WaitForSender);
    EXPECT_EQ(StampMode::Open, settings.Mode);
}

TEST(StampSettings, AreRead)
{
    CRegistryScope registry;
    registry.SetString(kKey, "Peer", "switch-7.example");
    registry.SetString(kKey, "KeyFile", "C:\\key.txt");
    registry.SetNumber(kKey, "PeerPort", 1);
    registry.SetNumber(kKey, "ResponderPort", 2);
    registry.SetNumber(kKey, "PacketsPerSecond", 3);
    registry.SetNumber(kKey, "PacketSize", 1452);
    registry.SetNumber(kKey, "Dscp", 46);
    registry.SetNumber(kKey, "LossLimit", 5);
    registry.SetNumber(kKey, "MaxPktsRcvd", 6);
    registry.SetNumber(kKey, "WaitForSender", 7);
    CStampSettings settings;
    EXPECT_EQ(S_OK, ReadStampSettings(settings));
    EXPECT_EQ(L"switch-7.example", settings.Peer);
    EXPECT_EQ(L"C:\\key.txt", settings.KeyFile);
    EXPECT_EQ(1u, settings.PeerPort);
    EXPECT_EQ(2u, settings.ResponderPort);
    EXPECT_EQ(3u, settings.PacketsPerSecond);
    EXPECT_EQ(1452u, settings.PacketSize);
    EXPECT_EQ(46u, settings.Dscp);
    EXPECT_EQ(5u, settings.Loss.LimitPercent);
    EXPECT_EQ(6u, settings.Loss.EnoughPackets);
    EXPECT_EQ(7u, settings.WaitForSender);
    EXPECT_EQ(StampMode::Authenticated, settings.Mode) << "a key is there to be used";
}

TEST(StampSettings, AuthenticationCanBeSwitchedOffBesideAKeyAndNotOnWithoutOne)
{
    CRegistryScope registry;
    registry.SetNumber(kKey, "Authenticate", 1);
    CStampSettings settings;
    EXPECT_EQ(vorl::setting::NoKeyFile, ReadStampSettings(settings));
    registry.SetString(kKey, "KeyFile", "C:\\key.txt");
    EXPECT_EQ(S_OK, ReadStampSettings(settings));
    EXPECT_EQ(StampMode::Authenticated, settings.Mode);
    EXPECT_EQ(112u, settings.PacketSize);
    registry.SetNumber(kKey, "Authenticate", 0);
    EXPECT_EQ(S_OK, ReadStampSettings(settings));
    EXPECT_EQ(StampMode::Open, settings.Mode);
    EXPECT_EQ(44u, settings.PacketSize);
}

TEST(StampSettings, ValueOfAnotherTypeCountsAsAbsent)
{
    CRegistryScope registry;
    registry.SetNumber(kKey, "Peer", 1);
    registry.SetString(kKey, "PeerPort", "99999");
    CStampSettings settings;
    EXPECT_EQ(S_OK, ReadStampSettings(settings));
    EXPECT_EQ(L"", settings.Peer);
    EXPECT_EQ(862u, settings.PeerPort);
}

class StampLimits : public testing::TestWithParam<std::tuple<const char*, DWORD, HRESULT>>
{
};

TEST_P(StampLimits, AreKept)
{
    const auto& [name, value, expected] = GetParam();
    CRegistryScope registry;
    registry.SetNumber(kKey, name, value);
    CStampSettings settings;
    EXPECT_EQ(expected, ReadStampSettings(settings)) << name << " = " << value;
}

using vorl::setting::BadDscp;
using vorl::setting::BadLossLimit;
using vorl::setting::BadPort;
using vorl::setting::BadRate;
using vorl::setting::BadSize;
using vorl::setting::BadWait;
using Limit = std::tuple<const char*, DWORD, HRESULT>;
INSTANTIATE_TEST_SUITE_P(
    Values, StampLimits,
    testing::Values(Limit{"PeerPort", 0, BadPort}, Limit{"PeerPort", 65535, S_OK},
                    Limit{"PeerPort", 65536, BadPort}, Limit{"ResponderPort", 0, BadPort},
                    Limit{"ResponderPort", 65536, BadPort}, Limit{"PacketsPerSecond", 0, BadRate},
                    Limit{"PacketsPerSecond", 1000, S_OK}, Limit{"PacketsPerSecond", 1001, BadRate},
                    Limit{"PacketSize", 43, BadSize}, Limit{"PacketSize", 1452, S_OK},
                    Limit{"PacketSize", 1453, BadSize}, Limit{"Dscp", 63, S_OK}, Limit{"Dscp", 64, BadDscp},
                    Limit{"LossLimit", 0, S_OK}, Limit{"LossLimit", 100, S_OK},
                    Limit{"LossLimit", 101, BadLossLimit}, Limit{"WaitForSender", 0, S_OK},
                    Limit{"WaitForSender", 3600, S_OK}, Limit{"WaitForSender", 3601, BadWait},
                    Limit{"MaxPktsRcvd", 0, S_OK}));
} // namespace
