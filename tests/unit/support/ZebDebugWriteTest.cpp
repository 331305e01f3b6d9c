#include "tests/support/CaseName.h"
#include "tests/support/ImportHook.h"
#include "tests/unit/support/LogFile.h"

#include <atomic>
#include <gtest/gtest.h>
#include <regex>
#include <thread>

ZEB_HOOKED_IMPORT("kernel32", FormatMessageA)
ZEB_HOOKED_IMPORT("kernel32", GetLocalTime)

namespace
{
using Lines = std::vector<std::string>;

constexpr size_t kMessageMax = 1023;

TEST(DebugWrite, ALineHasThreadAndLocalTimeInFrontOfIt)
{
    CLogFile file(2);
    SYSTEMTIME before;
    GetLocalTime(&before);
    file.Log.Write("value %d of %s", 7, "x");
    const std::string line = file.Lines().at(0);
    std::smatch parts;
    ASSERT_TRUE(std::regex_match(
        line, parts,
        std::regex("\\[([0-9a-f]+)\\] ([0-9]{2}):([0-9]{2}):([0-9]{2})\\.([0-9]{3}) value 7 of x")))
        << line;
    EXPECT_EQ(GetCurrentThreadId(), std::stoul(parts[1], nullptr, 16));
    // Within the minute, or just past its end.
    const int minutes = std::stoi(parts[2]) * 60 + std::stoi(parts[3]) - before.wHour * 60 - before.wMinute;
    EXPECT_TRUE(minutes == 0 || minutes == 1 || minutes == -24 * 60 + 1) << line;
}

void WINAPI TimeOfElsewhere(SYSTEMTIME* time)
{
    *time = {2031, 2, 0, 3, 4, 5, 6, 7};
}

// On a machine that keeps universal time, as most that build this do, no other test could tell the two.
TEST(DebugWrite, TheTimeIsTheLocalOne)
{
    CLogFile file(2);
    const CImportHook elsewhere(__imp_GetLocalTime, &TimeOfElsewhere);
    file.Log.Write("trace");
    file.Log.Error("F", 1, "error");
    for (const std::string& line : file.Lines())
        EXPECT_EQ("04:05:06.007 ", line.substr(line.find(' ') + 1, 13)) << line;
    EXPECT_EQ(2u, file.Lines().size());
}

struct LevelCase
{
    const char* name;
    long level;
    Lines messages;
};

class LevelTest : public testing::TestWithParam<LevelCase>
{
};

TEST_P(LevelTest, DecidesWhatIsWritten)
{
    CLogFile file(GetParam().level);
    file.Log.Write("trace");
    file.Log.Write(L"wide");
    file.Log.WriteLong("long");
    file.Log.Error("CDM/src/Some", 12, "error %d", 5);
    EXPECT_EQ(GetParam().messages, file.Messages());
    EXPECT_EQ(GetParam().level, file.Log.Level());
}

INSTANTIATE_TEST_SUITE_P(
    Levels, LevelTest,
    testing::Values(LevelCase{"Zero", 0, {}}, LevelCase{"One", 1, {"CDM/src/Some (12): error 5"}},
                    LevelCase{"Two", 2, {"trace", "wide", "long", "CDM/src/Some (12): error 5"}},
                    LevelCase{"Three", 3, {"trace", "wide", "long", "CDM/src/Some (12): error 5"}},
                    LevelCase{"Negative", -2, {}}),
    NameOf<LevelCase>);

TEST(DebugWrite, AnErrorLineAtLevelOneHasTheSamePrefix)
{
    CLogFile file(1);
    file.Log.Error("CDM/src/Some", 12, "it broke");
    EXPECT_TRUE(
        std::regex_match(file.Lines().at(0),
                         std::regex("\\[[0-9a-f]+\\] [0-9:]{8}\\.[0-9]{3} CDM/src/Some \\(12\\): it broke")))
        << file.Lines().at(0);
}

TEST(DebugWrite, NothingIsWrittenBeforeConfigureOrAfterClose)
{
    CLogFile file(2);
    file.Log.Write("before");
    file.Log.Close();
    file.Log.Write("after");
    file.Log.Error("a", 1, "after");
    file.Log.SystemError(5);
    EXPECT_EQ(Lines{"before"}, file.Messages());
    CZebDebug never;
    never.Write("nowhere");
    never.Error("a", 1, "nowhere");
    EXPECT_EQ(0, never.Level());
}

struct LengthCase
{
    const char* name;
    size_t given;
    size_t written;
};

class LengthTest : public testing::TestWithParam<LengthCase>
{
};

TEST_P(LengthTest, NarrowAndWideMessagesAreCutAlike)
{
    CLogFile file(2);
    file.Log.Write("%s", std::string(GetParam().given, 'n').c_str());
    file.Log.Write(L"%s", std::wstring(GetParam().given, L'w').c_str());
    file.Log.Write("next");
    EXPECT_EQ((Lines{std::string(GetParam().written, 'n'), std::string(GetParam().written, 'w'), "next"}),
              file.Messages());
    // Each with its line end and nothing behind it.
    EXPECT_EQ(PrefixLength() + GetParam().written, file.Lines().at(0).size());
}

INSTANTIATE_TEST_SUITE_P(Lengths, LengthTest,
                         testing::Values(LengthCase{"Empty", 0, 0}, LengthCase{"One", 1, 1},
                                         LengthCase{"JustFits", 1023, kMessageMax},
                                         LengthCase{"OneTooMany", 1024, kMessageMax},
                                         LengthCase{"Of2000", 2000, kMessageMax},
                                         LengthCase{"Of100000", 100000, kMessageMax}),
                         NameOf<LengthCase>);

TEST(DebugWrite, AnErrorMessageIsCutTwice)
{
    CLogFile file(2);
    file.Log.Error("F", 1, "%s", std::string(2000, 'e').c_str());
    const std::string start = "F (1): ";
    EXPECT_EQ(Lines{start + std::string(kMessageMax - start.size(), 'e')}, file.Messages());
}

TEST(DebugWrite, LongTextsAreCutIntoLinesOf974Characters)
{
    CLogFile file(2);
    file.Log.WriteLong((std::string(974, 'a') + std::string(974, 'b') + "c").c_str());
    EXPECT_EQ((Lines{std::string(974, 'a'), std::string(974, 'b'), "c"}), file.Messages());
}

TEST(DebugWrite, AMessageThatCannotBeFormattedStillMakesOneLine)
{
    CLogFile file(2);
    file.Log.Write("%s", std::string(kMessageMax, 'o').c_str());
    file.Log.Write("ab%lscd", L"\u4E2D");
    file.Log.Write("next");
    const Lines messages = file.Messages();
    ASSERT_EQ(3u, messages.size());
    EXPECT_EQ("ab" + std::string(kMessageMax - 2, ' '), messages[1]);
    EXPECT_EQ("next", messages[2]);
}

TEST(DebugWrite, ANulInsideAMessageDoesNotCostTheLineItsEnd)
{
    CLogFile file(2);
    file.Log.Write("a%cb", 0);
    file.Log.Write("next");
    EXPECT_EQ((Lines{"a b", "next"}), file.Messages());
}

TEST(DebugWrite, AFormattedMessageIsNotFormattedAgain)
{
    CLogFile file(2);
    file.Log.Write("%s", "100%s %d %n");
    file.Log.Error("F", 1, "%s", "100%s %d %n");
    EXPECT_EQ((Lines{"100%s %d %n", "F (1): 100%s %d %n"}), file.Messages());
}

TEST(DebugWrite, WideMessagesAreConvertedToTheAnsiCodePage)
{
    CLogFile file(2);
    file.Log.Write(L"%s %d", L"gr\u00FCn \u4E2D", 5);
    EXPECT_EQ(Lines{"gr\xFCn ? 5"}, file.Messages());
}

TEST(DebugWrite, TheLineThatStartsBelowTheLimitIsWrittenWholeAndLaterOnesAreDropped)
{
    CLogFile file(2, 1000);
    // A line that brings the file to 999 bytes: its text, prefix and line end.
    const size_t room = 999 - file.Text().size() - PrefixLength() - 2;
    file.Log.Write("%s", std::string(room, 'f').c_str());
    ASSERT_EQ(999u, file.Text().size());
    file.Log.Write("%s", std::string(100, 'w').c_str());
    EXPECT_EQ(999 + PrefixLength() + 102, file.Text().size());
    file.Log.Write("dropped");
    file.Log.Error("F", 1, "dropped");
    EXPECT_EQ((Lines{std::string(room, 'f'), std::string(100, 'w')}), file.Messages());
}

TEST(DebugWrite, AFileOfExactlyTheLimitIsFull)
{
    CLogFile file(2, 1000);
    file.Log.Write("%s", std::string(1000 - file.Text().size() - PrefixLength() - 2, 'f').c_str());
    ASSERT_EQ(1000u, file.Text().size());
    file.Log.Write("dropped");
    EXPECT_EQ(1000u, file.Text().size());
}

std::string SystemText(DWORD code)
{
    char text[1000] = {};
    FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, code,
                   MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT), text, sizeof(text), nullptr);
    std::string line = text;
    return line.substr(0, line.find_first_of("\r\n"));
}

TEST(DebugWrite, ASystemErrorIsTheSystemsText)
{
    CLogFile file(2);
    file.Log.SystemError(ERROR_ACCESS_DENIED);
    SetLastError(ERROR_FILE_NOT_FOUND);
    file.Log.SystemError(0);
    // A text brings a line end of its own.
    const std::string all = file.Text();
    EXPECT_NE(std::string::npos, all.find(SystemText(ERROR_ACCESS_DENIED)));
    EXPECT_NE(std::string::npos, all.find(SystemText(ERROR_FILE_NOT_FOUND)));
    EXPECT_NE("", SystemText(ERROR_ACCESS_DENIED));
}

TEST(DebugWrite, APercentSignInASystemTextCountsAsAConversion)
{
    const std::string text = SystemText(ERROR_BAD_EXE_FORMAT);
    ASSERT_NE(std::string::npos, text.find("%1")) << text;
    CLogFile file(2);
    file.Log.SystemError(ERROR_BAD_EXE_FORMAT);
    const std::string message = file.Messages().at(0);
    EXPECT_EQ(text.substr(0, text.find('%')), message.substr(0, text.find('%')));
    EXPECT_EQ(std::string::npos, message.find("%1")) << message;
}

DWORD WINAPI GiveTextThatWrites(DWORD, const void*, DWORD, DWORD, char* text, DWORD, va_list*)
{
    constexpr char kText[] = "abc%n|%s|%n%lld|%S|";
    char* const copy = static_cast<char*>(LocalAlloc(LMEM_FIXED, sizeof kText));
    memcpy(copy, kText, sizeof kText);
    *reinterpret_cast<char**>(text) = copy;
    return sizeof kText - 1;
}

TEST(DebugWrite, ASystemTextThatWritesThroughItsConversionsDoesNoHarm)
{
    CLogFile file(2);
    {
        const CImportHook hook(__imp_FormatMessageA, &GiveTextThatWrites);
        file.Log.SystemError(ERROR_ACCESS_DENIED);
    }
    const std::string message = file.Messages().at(0);
    EXPECT_TRUE(message.starts_with("abc||")) << message;
    EXPECT_TRUE(message.ends_with("||")) << message;
}

TEST(DebugWrite, ACodeWithoutATextWritesNothing)
{
    CLogFile file(2);
    file.Log.SystemError(0x2FFFFFFF);
    EXPECT_EQ(Lines{}, file.Lines());
}

TEST(DebugThreads, NoLineIsTornWhenSeveralWriteAtOnce)
{
    constexpr int kThreads = 8;
    constexpr int kLines = 200;
    CLogFile file(2);
    std::vector<std::thread> threads;
    for (int n = 0; n < kThreads; ++n)
        threads.emplace_back(
            [&file, n]
            {
                const std::string text(100 + 10 * n, static_cast<char>('a' + n));
                for (int i = 0; i < kLines; ++i)
                    if (i % 2)
                        file.Log.Write("%d %s", i, text.c_str());
                    else
                        file.Log.Error("F", i, "%s", text.c_str());
            });
    for (std::thread& thread : threads)
        thread.join();
    const std::regex whole("\\[[0-9a-f]+\\] [0-9:]{8}\\.[0-9]{3} (F \\([0-9]+\\):|[0-9]+) ([a-h])\\2+");
    int counts[kThreads] = {};
    for (const std::string& line : file.Lines())
    {
        ASSERT_TRUE(std::regex_match(line, whole)) << line;
        const int n = line.back() - 'a';
        EXPECT_EQ(static_cast<size_t>(100 + 10 * n), line.size() - 1 - line.rfind(' '));
        ++counts[n];
    }
    for (const int count : counts)
        EXPECT_EQ(kLines, count);
}

TEST(DebugThreads, AtLevelOneNoTraceLineSlipsThroughBesideAnError)
{
    CLogFile file(1);
    std::atomic<bool> done{false};
    std::thread tracer(
        [&]
        {
            while (!done)
                file.Log.Write("trace");
        });
    for (int i = 0; i < 500; ++i)
        file.Log.Error("F", i, "error");
    done = true;
    tracer.join();
    const std::string text = file.Text();
    EXPECT_EQ(500u, file.Lines().size());
    EXPECT_EQ(std::string::npos, text.find("trace"));
}
} // namespace
