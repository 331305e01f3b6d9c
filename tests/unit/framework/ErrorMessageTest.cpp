#include "Common/src/VormErrorMessage.h"

#include "tests/support/FakeResources.h"
#include "tests/support/TraceCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;

namespace
{
constexpr LCID kEnglish = 0x409;
constexpr LCID kGerman = 0x407;

TEST(ErrorMessage, AnAgentsCodeHasItsTextInTheLibraries)
{
    CFakeResources resources;
    resources.Texts[{"_8023", 0x8123}] = "No link.";
    const CTraceCapture trace;
    std::string text = "before";
    FormatVorlErrorMessage(static_cast<HRESULT>(0x80040123), text, resources, kGerman);
    EXPECT_EQ("No link.", text);
    EXPECT_THAT(resources.Locales, ElementsAre(kGerman));
    EXPECT_THAT(trace.Lines(), ElementsAre(" { --> FormatVorlErrorMessage", "HR = 0x80040123 ID = 0x8123",
                                           " } <-- FormatVorlErrorMessage"));
}

TEST(ErrorMessage, HighBitsOfAnAgentsCodeDoNotCount)
{
    CFakeResources resources;
    resources.Texts[{"_8023", 0xFFFF}] = "Everything.";
    std::string text;
    FormatVorlErrorMessage(static_cast<HRESULT>(0xFFFFFFFF), text, resources, kEnglish);
    EXPECT_EQ("Everything.", text);
}

TEST(ErrorMessage, AnUnknownCodeOfAnAgentIsFormattedWithString100)
{
    CFakeResources resources;
    resources.Texts[{"_8023", 100}] = "Unknown error 0x%08X";
    std::string text = "before";
    FormatVorlErrorMessage(static_cast<HRESULT>(0x80041234), text, resources, kEnglish);
    EXPECT_EQ("Unknown error 0x80041234", text);
}

// What an agent that throws, breaks down or is gone leaves, and a system code that has no text.
TEST(ErrorMessage, ACodeOfTheSystemWithoutATextIsFormattedWithString100Too)
{
    CFakeResources resources;
    resources.Texts[{"_8023", 100}] = "Unknown error 0x%08X";
    std::string text;
    FormatVorlErrorMessage(static_cast<HRESULT>(0x8003FFFF), text, resources, kEnglish);
    EXPECT_EQ("Unknown error 0x8003FFFF", text);
    for (const DWORD code : {0x8000FFFFul, 0x8007ABCDul, 0xC0000005ul, 0x80010108ul})
    {
        text.clear();
        FormatVorlErrorMessage(static_cast<HRESULT>(code), text, resources, kEnglish);
        EXPECT_FALSE(text.empty()) << std::hex << code;
    }
}

TEST(ErrorMessage, WithoutString100ThereIsNoText)
{
    CFakeResources resources;
    std::string text = "before";
    FormatVorlErrorMessage(static_cast<HRESULT>(0x80041234), text, resources, kEnglish);
    EXPECT_EQ("", text);
}

TEST(ErrorMessage, ASystemCodeHasTheSystemsTextWithoutItsLineEnd)
{
    char* message = nullptr;
    const DWORD length =
        FormatMessageA(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM, nullptr, 0x80070005,
                       LANGIDFROMLCID(kEnglish), reinterpret_cast<char*>(&message), 0, nullptr);
    ASSERT_GT(length, 2u);
    const std::string system(message, length);
    LocalFree(message);
    ASSERT_EQ("\r\n", system.substr(length - 2));

    CFakeResources resources;
    const CTraceCapture trace;
    std::string text;
    FormatVorlErrorMessage(E_ACCESSDENIED, text, resources, kEnglish);
    EXPECT_EQ(system.substr(0, length - 2), text);
    EXPECT_TRUE(resources.Locales.empty());
    EXPECT_FALSE(trace.Has("HR = "));
}

TEST(ErrorMessage, ASystemCodeWithoutATextLeavesTheTextAlone)
{
    CFakeResources resources;
    std::string text = "before";
    FormatVorlErrorMessage(static_cast<HRESULT>(0x8003FFFF), text, resources, kEnglish);
    EXPECT_EQ("before", text);
}

TEST(ErrorMessage, ASystemTextThatWantsInsertsDoesNoHarm)
{
    CFakeResources resources;
    std::string text;
    FormatVorlErrorMessage(HRESULT_FROM_WIN32(ERROR_BAD_EXE_FORMAT), text, resources, kEnglish);
    EXPECT_EQ(std::string::npos, text.find('\n'));
}

TEST(ErrorMessage, SuccessIsASystemCode)
{
    CFakeResources resources;
    std::string text;
    FormatVorlErrorMessage(S_OK, text, resources, kEnglish);
    EXPECT_FALSE(text.empty());
}
} // namespace
