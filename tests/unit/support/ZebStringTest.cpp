#include "CDM/src/ZebString.h"

#include "tests/support/ImportHook.h"
#include "tests/support/TraceCapture.h"

#include <gtest/gtest.h>

ZEB_HOOKED_IMPORT("kernel32", LockResource)

namespace
{
constexpr LCID kEnglish = 0x409;
constexpr LCID kSystemDefault = 0x0800;

// A library made for these tests; see TestStrings.rc.
HMODULE Library()
{
    static HMODULE library = LoadLibraryA("TestStrings.dll");
    return library;
}

TEST(StringLoad, ReadsTheStringOfTheNumber)
{
    const CTraceCapture trace;
    for (const LCID locale : {LCID(0), kEnglish, kSystemDefault})
    {
        EXPECT_EQ("first of its block", LoadZebString(Library(), 16, locale)) << locale;
        EXPECT_EQ("last of its block", LoadZebString(Library(), 31, locale)) << locale;
        EXPECT_EQ("blank at the end ", LoadZebString(Library(), 20, locale)) << locale;
        EXPECT_EQ("number zero", LoadZebString(Library(), 0, locale)) << locale;
        EXPECT_EQ("largest number", LoadZebString(Library(), 0xFFFF, locale)) << locale;
    }
    EXPECT_EQ(std::vector<std::string>{}, trace.Lines());
}

TEST(StringLoad, ANullHandleGivesAnEmptyTextWithoutATrace)
{
    const CTraceCapture trace;
    EXPECT_EQ("", LoadZebString(nullptr, 16, kEnglish));
    EXPECT_EQ("", LoadZebString(nullptr, 16, kSystemDefault));
    EXPECT_EQ(std::vector<std::string>{}, trace.Lines());
}

TEST(StringLoad, AMissingBlockIsAnError)
{
    const CTraceCapture trace;
    EXPECT_EQ("", LoadZebString(Library(), 500, kEnglish));
    EXPECT_EQ(1u, trace.Count("Failed to find resource"));
    EXPECT_EQ(1u, trace.Count("CDM/src/ZebString ("));
    EXPECT_EQ(1u, trace.Lines().size());
}

void* WINAPI RefuseLock(HGLOBAL)
{
    return nullptr;
}

TEST(StringLoad, ABlockThatCannotBeLockedIsAnError)
{
    const CTraceCapture trace;
    {
        const CImportHook refused(__imp_LockResource, &RefuseLock);
        EXPECT_EQ("", LoadZebString(Library(), 16, kEnglish));
    }
    EXPECT_EQ(1u, trace.Count("CDM/src/ZebString ("));
    EXPECT_EQ(1u, trace.Count("): Failed to lock resource."));
    EXPECT_EQ(1u, trace.Lines().size());
    EXPECT_EQ("first of its block", LoadZebString(Library(), 16, kEnglish));
}

// A block whose first text is longer than any block of the library.
void* WINAPI GiveDamagedBlock(HGLOBAL)
{
    static wchar_t block[0x10000] = {0x8000};
    return block;
}

TEST(StringLoad, ATextThatIsLongerThanItsBlockIsNone)
{
    const CTraceCapture trace;
    const CImportHook damaged(__imp_LockResource, &GiveDamagedBlock);
    EXPECT_EQ("", LoadZebString(Library(), 16, kEnglish));
    EXPECT_EQ("", LoadZebString(Library(), 17, kEnglish)) << "it would stand behind it";
    EXPECT_EQ(std::vector<std::string>{}, trace.Lines());
}

TEST(StringLoad, AMissingStringOfAPresentBlockIsEmptyWithoutATrace)
{
    const CTraceCapture trace;
    EXPECT_EQ("", LoadZebString(Library(), 17, kEnglish));
    EXPECT_EQ(std::vector<std::string>{}, trace.Lines());
}

TEST(StringLoad, LocaleZeroEightHundredUsesTheSystemsLoader)
{
    const CTraceCapture trace;
    EXPECT_EQ("", LoadZebString(Library(), 500, kSystemDefault));
    EXPECT_EQ(1u, trace.Count("Error in LoadString"));
    EXPECT_EQ(0u, trace.Count("Failed to find resource"));
    // Only the low sixteen bits tell the language.
    EXPECT_EQ("", LoadZebString(Library(), 500, 0x00010800));
    EXPECT_EQ(2u, trace.Count("Error in LoadString"));
}

TEST(StringLoad, LongTextsComeWholeEitherWay)
{
    const std::string text = LoadZebString(Library(), 2001, kEnglish);
    EXPECT_EQ(3000u, text.size());
    EXPECT_EQ(text, LoadZebString(Library(), 2001, kSystemDefault));
    EXPECT_EQ(1023u, LoadZebString(Library(), 2002, kSystemDefault).size());
    EXPECT_EQ(1022u, LoadZebString(Library(), 2003, kSystemDefault).size());
}

TEST(StringLoad, TheTextIsInTheCodePageOfTheLocale)
{
    // A capital Zhe: the Russian code page has it, the western one has not.
    EXPECT_EQ("\xC6", LoadZebString(Library(), 2010, 0x419));
    EXPECT_EQ("?", LoadZebString(Library(), 2010, kEnglish));
    EXPECT_EQ("?", LoadZebString(Library(), 2010, 0));
    EXPECT_EQ("gr\xFCn", LoadZebString(Library(), 2011, kEnglish));
    EXPECT_EQ("gr\xFCn", LoadZebString(Library(), 2011, 0));
}

TEST(StringLoad, TheThreadsLanguageDoesNotMatter)
{
    const LCID before = GetThreadLocale();
    SetThreadLocale(0x407);
    EXPECT_EQ("first of its block", LoadZebString(Library(), 16, 0x407));
    SetThreadLocale(before);
}
} // namespace
