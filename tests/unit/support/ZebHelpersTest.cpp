#include "CDM/src/ZebHelpers.h"

#include "CDM/src/ZebRegistry.h"
#include "tests/support/CaseName.h"
#include "tests/support/RegistryScope.h"
#include "tests/support/TraceCapture.h"

#include <gtest/gtest.h>
#include <thread>

namespace
{
using Lines = std::vector<std::string>;
using namespace std::string_literals;

struct HexCase
{
    const char* name;
    const wchar_t* text;
    DWORD value;
    Lines trace;
};

class ParseHexTest : public testing::TestWithParam<HexCase>
{
};

TEST_P(ParseHexTest, GivesValueAndTrace)
{
    const CTraceCapture trace;
    EXPECT_EQ(GetParam().value, ParseHex(GetParam().text));
    EXPECT_EQ(GetParam().trace, trace.Lines());
}

INSTANTIATE_TEST_SUITE_P(
    Texts, ParseHexTest,
    testing::Values(HexCase{"Locale", L"409", 0x409, {}}, HexCase{"Empty", L"", 0, {}},
                    HexCase{"BothCases", L"aBcDeF", 0xABCDEF, {}},
                    HexCase{"EightDigits", L"89abcdef", 0x89ABCDEF, {}},
                    HexCase{"NineDigitsPushTheFirstOut", L"123456789", 0x23456789, {}},
                    HexCase{"BadCharacter", L"1g", 0x10, {"Unexpected hex char in 1g"}},
                    HexCase{"Prefix", L"0x10", 0x10, {"Unexpected hex char in 0x10"}},
                    HexCase{"JustOutsideTheDigits", L"/:@G`g", 0, Lines(6, "Unexpected hex char in /:@G`g")},
                    HexCase{"BadOneInBetween", L"1 2", 0x102, {"Unexpected hex char in 1 2"}},
                    HexCase{"OutsideTheCodePage", L"\u4E2D4", 4, {"Unexpected hex char in ?4"}}),
    NameOf<HexCase>);

struct SelectorCase
{
    const char* name;
    DWORD type;
    std::string bytes;
    DWORD value;
    const char* trace;
};

class AgentSelectorTest : public testing::TestWithParam<SelectorCase>
{
};

TEST_P(AgentSelectorTest, IsANumberOrTheRealAgent)
{
    CRegistryScope registry;
    registry.SetRaw(kProvidersKey, "TestVorl", GetParam().type, GetParam().bytes);
    const CTraceCapture trace;
    EXPECT_EQ(GetParam().value, ReadAgentSelector());
    EXPECT_EQ(Lines{GetParam().trace}, trace.Lines());
}

constexpr char kNoValue[] = "Failed to get TestVorl value - using real Vorl";

INSTANTIATE_TEST_SUITE_P(Values, AgentSelectorTest,
                         testing::Values(SelectorCase{"Real", REG_DWORD, "\0\0\0\0"s, 0, "TestVorl value 0"},
                                         SelectorCase{"Test", REG_DWORD, "\1\0\0\0"s, 1, "TestVorl value 1"},
                                         SelectorCase{"Proxy", REG_DWORD, "\2\0\0\0"s, 2, "TestVorl value 2"},
                                         SelectorCase{"Negative", REG_DWORD, "\xFF\xFF\xFF\xFF"s, 0xFFFFFFFF,
                                                      "TestVorl value -1"},
                                         SelectorCase{"Text", REG_SZ, "1\0"s, 0, kNoValue},
                                         SelectorCase{"Bytes", REG_BINARY, "\1\0\0\0"s, 0, kNoValue},
                                         SelectorCase{"Wide", REG_QWORD, "\1\0\0\0\0\0\0\0"s, 0, kNoValue}),
                         NameOf<SelectorCase>);

TEST(AgentSelector, WithoutTheValueItIsTheRealAgent)
{
    CRegistryScope registry;
    registry.CreateKey(kProvidersKey);
    const CTraceCapture trace;
    EXPECT_EQ(0u, ReadAgentSelector());
    EXPECT_EQ(Lines{kNoValue}, trace.Lines());
}

TEST(AgentSelector, WithoutTheKeyItIsTheRealAgent)
{
    const CRegistryScope registry;
    const CTraceCapture trace;
    EXPECT_EQ(0u, ReadAgentSelector());
    EXPECT_EQ(Lines{"Failed to get WMI base path - using real Vorl"}, trace.Lines());
}

std::atomic<int> g_asked{0};

BOOL WINAPI Refuse(char*, DWORD*)
{
    ++g_asked;
    SetLastError(ERROR_BUFFER_OVERFLOW);
    return FALSE;
}

BOOL WINAPI Answer(char* buffer, DWORD* size)
{
    ++g_asked;
    EXPECT_EQ(16u, *size);
    strcpy(buffer, "M\xDCLLER-15-CHARS");
    return TRUE;
}

TEST(ComputerName, IsAskedForOnceAndWidened)
{
    g_asked = 0;
    CComputerName name(Answer);
    const CTraceCapture trace;
    const wchar_t* const first = name.Get();
    EXPECT_STREQ(L"M\u00DCLLER-15-CHARS", first);
    EXPECT_EQ(first, name.Get());
    EXPECT_EQ(1, g_asked);
    const Lines lines = trace.Lines();
    ASSERT_EQ(8u, lines.size());
    EXPECT_TRUE(lines[0].starts_with("Locking ")) << lines[0];
    EXPECT_EQ("Entered", lines[1]);
    EXPECT_TRUE(lines[2].starts_with("Unlocking ")) << lines[2];
    EXPECT_EQ("Computer name is M\xDCLLER-15-CHARS", lines[3]);
    EXPECT_EQ(lines[3], lines[7]);
}

BOOL WINAPI AnswerOneCharacter(char* buffer, DWORD*)
{
    ++g_asked;
    strcpy(buffer, "X");
    return TRUE;
}

TEST(ComputerName, OfOneCharacterIsAskedForOnce)
{
    g_asked = 0;
    CComputerName name(AnswerOneCharacter);
    EXPECT_STREQ(L"X", name.Get());
    EXPECT_STREQ(L"X", name.Get());
    EXPECT_EQ(1, g_asked);
}

TEST(ComputerName, IsErrorWhereTheSystemWillNotTellAndIsNotAskedForAgain)
{
    g_asked = 0;
    CComputerName name(Refuse);
    const CTraceCapture trace;
    EXPECT_STREQ(L"error", name.Get());
    EXPECT_STREQ(L"error", name.Get());
    EXPECT_EQ(1, g_asked);
    EXPECT_EQ(1u, trace.Count("Get computer name failed with 111"));
    EXPECT_EQ(2u, trace.Count("Computer name is error"));
}

BOOL WINAPI AnswerWithoutEnd(char* buffer, DWORD* size)
{
    ++g_asked;
    memset(buffer, 'x', *size);
    return TRUE;
}

TEST(ComputerName, IsErrorWhereTheAnswerCannotBeUsed)
{
    g_asked = 0;
    CComputerName name(AnswerWithoutEnd);
    const CTraceCapture trace;
    EXPECT_STREQ(L"error", name.Get());
    EXPECT_STREQ(L"error", name.Get());
    EXPECT_EQ(1, g_asked);
    EXPECT_EQ(1u, trace.Count("Get computer name failed with 122"));
}

TEST(ComputerName, ConcurrentFirstCallersAskOnce)
{
    g_asked = 0;
    CComputerName name(Answer);
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i)
        threads.emplace_back([&name] { EXPECT_STREQ(L"M\u00DCLLER-15-CHARS", name.Get()); });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(1, g_asked);
}

TEST(ComputerName, OfThisProcessIsTheSystems)
{
    wchar_t expected[MAX_COMPUTERNAME_LENGTH + 1] = {};
    DWORD size = MAX_COMPUTERNAME_LENGTH + 1;
    ASSERT_TRUE(GetComputerNameW(expected, &size));
    EXPECT_STREQ(expected, ComputerName());
    EXPECT_EQ(ComputerName(), ComputerName());
}
} // namespace
