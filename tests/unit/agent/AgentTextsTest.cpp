// Every code of our agents has a text that a client can show.
#include "Common/src/com/Owned.h"
#include "agent/AgentCodes.h"

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
    vorl::errors::Receive,
    vorl::errors::Transmit,
    vorl::errors::Both,
    vorl::errors::CountersReset,
    vorl::errors::NotUp,
    vorl::discards::Receive,
    vorl::discards::Transmit,
    vorl::discards::Both,
    vorl::discards::CountersReset,
    vorl::discards::NotUp,
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
    vorl::state::Disabled,
    vorl::state::NotPresent,
    vorl::state::BadMtu,
    vorl::state::NoMacAddress,
    vorl::state::BadMacAddress,
    vorl::state::Suspended,
    vorl::state::DownWithLink,
    vorl::script::Unreadable,
    vorl::script::NotJson,
    vorl::script::BadContent,
};

TEST(AgentTexts, EveryCodeGivesCauseAndNextStep)
{
    const CModule library(LoadLibraryExW(L"ENU_8023.dll", nullptr, LOAD_LIBRARY_AS_DATAFILE));
    ASSERT_TRUE(library);
    for (const HRESULT code : kCodes)
    {
        wchar_t text[512] = {};
        const int length = LoadStringW(library.Get(), (static_cast<UINT>(code) & 0x7FFF) | 0x8000, text, 512);
        EXPECT_GT(length, 0) << std::hex << code;
        // At least two sentences: what is the matter, and what to do.
        EXPECT_NE(std::wstring::npos, std::wstring_view(text).find(L". ")) << std::hex << code;
    }
}
} // namespace
