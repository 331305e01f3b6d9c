// Every code of our agents has a text that a client can show.
#include "Common/src/com/Owned.h"
#include "agent/AgentCodes.h"
#include "agent/host/AddressCarrier.h"

#include <gtest/gtest.h>

namespace
{
constexpr HRESULT kCodes[] = {
    vorl::NoSuchAdapter,
    vorl::NoSuchTest,
    vorl::AlreadyRunning,
    vorl::NotRunning,
    vorl::Stopped,
    vorl::NoStatistics,
    vorl::NotInitialized,
    vorl::FactsUnavailable,
    vorl::link::Down,
    vorl::link::Disabled,
    vorl::link::Unknown,
    vorl::link::NotAuthenticated,
    vorl::link::NotReady,
    vorl::speed::NoLink,
    vorl::speed::NotReported,
    vorl::speed::TooSlow,
    vorl::speed::HalfDuplex,
    vorl::speed::Unequal,
    vorl::speed::DuplexNotReported,
    vorl::speed::NothingReported,
    vorl::errors::Receive,
    vorl::errors::Transmit,
    vorl::errors::Both,
    vorl::errors::CountersReset,
    vorl::errors::NotUp,
    vorl::errors::Few,
    vorl::discards::Receive,
    vorl::discards::Transmit,
    vorl::discards::Both,
    vorl::discards::CountersReset,
    vorl::discards::NotUp,
    vorl::discards::Few,
    vorl::address::None,
    vorl::address::SelfAssigned,
    vorl::address::Duplicate,
    vorl::address::BadPrefix,
    vorl::address::NoGateway,
    vorl::address::GatewayOutside,
    vorl::address::Unconfirmed,
    vorl::gateway::None,
    vorl::gateway::Silent,
    vorl::gateway::Unsupported,
    vorl::gateway::NotSent,
    vorl::names::NoServers,
    vorl::names::NoneAnswers,
    vorl::names::SomeSilent,
    vorl::names::Refused,
    vorl::names::NoAddress,
    vorl::names::NotSent,
    vorl::carrier::VirtualSwitch,
    vorl::carrier::TeamOrBridge,
    vorl::carrier::Above,
    vorl::state::Disabled,
    vorl::state::NotPresent,
    vorl::state::BadMtu,
    vorl::state::NoMacAddress,
    vorl::state::BadMacAddress,
    vorl::state::Suspended,
    vorl::state::DownWithLink,
    vorl::sender::NoPeer,
    vorl::sender::PeerUnknown,
    vorl::sender::BadPeer,
    vorl::sender::NoSource,
    vorl::sender::NotBound,
    vorl::sender::NotSent,
    vorl::sender::Refused,
    vorl::sender::Silent,
    vorl::sender::StrangeAnswers,
    vorl::sender::WentSilent,
    vorl::sender::PeerEnded,
    vorl::sender::LinkGone,
    vorl::sender::NotUp,
    vorl::sender::NoDscp,
    vorl::sender::Unreachable,
    vorl::responder::NoAddress,
    vorl::responder::PortTaken,
    vorl::responder::NotBound,
    vorl::responder::NoSender,
    vorl::responder::LinkGone,
    vorl::responder::NotUp,
    vorl::loss::There,
    vorl::loss::Back,
    vorl::loss::BothWays,
    vorl::loss::SomeWay,
    vorl::loss::HeavyThere,
    vorl::loss::HeavyBack,
    vorl::loss::HeavyBothWays,
    vorl::loss::HeavySomeWay,
    vorl::setting::BadPort,
    vorl::setting::BadRate,
    vorl::setting::BadSize,
    vorl::setting::BadDscp,
    vorl::setting::BadLossLimit,
    vorl::setting::BadWait,
    vorl::setting::NoKeyFile,
    vorl::setting::KeyUnreadable,
    vorl::setting::BadKey,
    vorl::setting::NoCryptography,
    vorl::script::Unreadable,
    vorl::script::NotJson,
    vorl::script::BadContent,
};

class AgentTexts : public testing::Test
{
  protected:
    std::wstring Text(HRESULT code) const
    {
        EXPECT_TRUE(m_library);
        wchar_t text[512] = {};
        LoadStringW(m_library.Get(), (static_cast<UINT>(code) & 0x7FFF) | 0x8000, text, 512);
        return text;
    }

  private:
    const CModule m_library{LoadLibraryExW(L"ENU_8023.dll", nullptr, LOAD_LIBRARY_AS_DATAFILE)};
};

TEST_F(AgentTexts, EveryCodeGivesCauseAndNextStep)
{
    for (const HRESULT code : kCodes)
    {
        // At least two sentences: what is the matter, and what to do.
        EXPECT_NE(std::wstring::npos, Text(code).find(L". ")) << std::hex << code;
    }
}

// On a carrier, a text says first whose addresses it is about.
TEST_F(AgentTexts, WhatIsFoundOnACarrierSaysSoFirst)
{
    constexpr std::pair<Carrier, std::wstring_view> kKinds[] = {
        {Carrier::VirtualSwitch, L"This machine's own adapter on the Hyper-V virtual switch "},
        {Carrier::TeamOrBridge, L"The team or bridge that this adapter belongs to "},
        {Carrier::Above, L"An interface that stands above this adapter "}};
    for (const HRESULT code : kCodes)
        for (const auto& [kind, beginning] : kKinds)
        {
            const HRESULT carried = CarriedOutcome(kind, code);
            if (carried == code)
                continue;
            EXPECT_TRUE(Text(carried).starts_with(beginning)) << std::hex << carried;
            EXPECT_TRUE(Text(carried).ends_with(L"this was found there. " + Text(code)))
                << std::hex << carried;
        }
    EXPECT_NE(vorl::gateway::Silent, CarriedOutcome(Carrier::Above, vorl::gateway::Silent));
}
} // namespace
