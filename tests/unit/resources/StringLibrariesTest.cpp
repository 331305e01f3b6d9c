// The shipped English libraries have a text for every number that the provider can ask for. What every
// language must be like is in LanguagesTest.cpp.
#include "tests/unit/resources/Library.h"

#include "tests/support/CaseName.h"

#include <gtest/gtest.h>

namespace
{
constexpr LCID kEnglish = 0x409;

std::string Text(const char* file, UINT id)
{
    return LoadZebString(Library(file), id, kEnglish);
}

struct Range
{
    const char* name;
    const char* file;
    UINT first;
    UINT last;
};

class StringRangeTest : public testing::TestWithParam<Range>
{
};

TEST_P(StringRangeTest, HasATextForEveryNumber)
{
    const Range& range = GetParam();
    HMODULE library = Library(range.file);
    ASSERT_NE(nullptr, library) << range.file;
    for (UINT id = range.first; id <= range.last; ++id)
        EXPECT_NE("", LoadZebString(library, id, kEnglish)) << range.file << " " << id;
}

INSTANTIATE_TEST_SUITE_P(
    Libraries, StringRangeTest,
    testing::Values(Range{"UnknownClassNames", "ENU_NWR.dll", 1000, 1003},
                    Range{"ErrorWithoutText", "ENU_8023.dll", 100, 100},
                    Range{"TestNames", "ENU_8023.dll", 3500, 3515},
                    Range{"TestDescriptions", "ENU_8023.dll", 3600, 3615},
                    Range{"FailedRuns", "ENU_8023.dll", 3800, 3855},
                    Range{"EngineCodes", "ENU_8023.dll", 0xA000, 0xA007},
                    Range{"ServiceCodesFailedToUnsupported", "ENU_8023.dll", 0x9001, 0x900C},
                    Range{"ServiceCodesOfClassesAndProviders", "ENU_8023.dll", 0x9010, 0x9015},
                    Range{"ServiceCodeInvalidMethod", "ENU_8023.dll", 0x902E, 0x902F},
                    Range{"ServiceCodeCancelled", "ENU_8023.dll", 0x9032, 0x9032},
                    Range{"ServiceCodeInvalidObjectPath", "ENU_8023.dll", 0x903A, 0x903A},
                    Range{"RegistrationCodes", "ENU_8023.dll", 0x8150, 0x8155},
                    Range{"FactoryCodes", "ENU_8023.dll", 0x8110, 0x8111},
                    Range{"ConnectionLost", "ENU_8023.dll", 0x81FD, 0x81FD},
                    Range{"AccessDenied", "ENU_8023.dll", 0x8005, 0x8005},
                    Range{"OutOfMemory", "ENU_8023.dll", 0x800E, 0x800E},
                    Range{"InvalidParameter", "ENU_8023.dll", 0x8057, 0x8057},
                    Range{"ServerUnavailable", "ENU_8023.dll", 0x86BA, 0x86BA},
                    Range{"StatusCode", "ENUDiag.dll", 0, 0}, Range{"Counters", "ENUDiag.dll", 3, 13}),
    NameOf<Range>);

TEST(StringLibraries, TheTextForUnknownErrorsTakesTheCode)
{
    const std::string format = Text("ENU_8023.dll", 100);
    char text[1025] = {};
    wsprintfA(text, format.c_str(), static_cast<HRESULT>(0x80040123));
    EXPECT_NE(std::string::npos, std::string(text).find("0x80040123")) << text;
    EXPECT_EQ(std::string::npos, std::string(text).find('%')) << text;
}

TEST(StringLibraries, EveryDescriptionSaysWhetherTrafficIsDisturbed)
{
    for (UINT id = 3600; id <= 3615; ++id)
    {
        const std::string text = Text("ENU_8023.dll", id);
        EXPECT_TRUE(text.find("raffic") != std::string::npos) << id << " " << text;
    }
}
} // namespace
