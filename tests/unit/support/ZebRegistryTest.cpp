#include "CDM/src/ZebRegistry.h"
#include "tests/support/CaseName.h"
#include "tests/support/RegistryScope.h"
#include "tests/support/TraceCapture.h"

#include <gtest/gtest.h>

namespace
{
using Lines = std::vector<std::string>;
using namespace std::string_literals;

struct TextCase
{
    const char* name;
    DWORD type;
    std::string bytes;
    const char* text; // null: refused, and the caller's default stays
    Lines trace;
};

class RegistryStringTest : public testing::TestWithParam<TextCase>
{
};

TEST_P(RegistryStringTest, GoesIntoABufferOfEightBytes)
{
    CRegistryScope registry;
    registry.SetRaw(kZebDiagKey, "DebugFileName", GetParam().type, GetParam().bytes);
    const CTraceCapture trace;
    char buffer[8] = "default";
    EXPECT_EQ(GetParam().text != nullptr,
              ReadRegistryString(kZebDiagKey, "DebugFileName", buffer, sizeof(buffer)));
    EXPECT_STREQ(GetParam().text ? GetParam().text : "default", buffer);
    EXPECT_EQ(GetParam().trace, trace.Lines());
}

INSTANTIATE_TEST_SUITE_P(
    Values, RegistryStringTest,
    testing::Values(
        TextCase{"Text", REG_SZ, "x.log\0"s, "x.log", {}},
        TextCase{"Expandable", REG_EXPAND_SZ, "%A%\0"s, "%A%", {}}, TextCase{"Empty", REG_SZ, "\0"s, "", {}},
        TextCase{"JustFits", REG_SZ, "1234567\0"s, "1234567", {}},
        TextCase{"Unterminated", REG_SZ, "x.log"s, "x.log", {}},
        TextCase{"UnterminatedWithoutRoom", REG_SZ, "12345678"s, nullptr, {"Query Value failed, <234>"}},
        TextCase{"TooLong", REG_SZ, "12345678\0"s, nullptr, {"Query Value failed, <234>"}},
        TextCase{"Number", REG_DWORD, "abc\0"s, nullptr, {"Query Value failed, <1630>"}},
        TextCase{"Bytes", REG_BINARY, "abc\0"s, nullptr, {"Query Value failed, <1630>"}}),
    NameOf<TextCase>);

TEST(RegistryString, AMissingKeyIsTraced)
{
    const CRegistryScope registry;
    const CTraceCapture trace;
    char buffer[8] = "default";
    EXPECT_FALSE(ReadRegistryString(kZebDiagKey, "DebugFileName", buffer, sizeof(buffer)));
    EXPECT_STREQ("default", buffer);
    EXPECT_EQ(Lines{"Open Key failed."}, trace.Lines());
}

TEST(RegistryString, AMissingValueIsTracedWithItsError)
{
    CRegistryScope registry;
    registry.CreateKey(kZebDiagKey);
    const CTraceCapture trace;
    char buffer[8] = "default";
    EXPECT_FALSE(ReadRegistryString(kZebDiagKey, "DebugFileName", buffer, sizeof(buffer)));
    EXPECT_STREQ("default", buffer);
    EXPECT_EQ(Lines{"Query Value failed, <2>"}, trace.Lines());
}

struct NumberCase
{
    const char* name;
    DWORD type;
    std::string bytes;
    bool read;
    DWORD value;
};

class RegistryNumberTest : public testing::TestWithParam<NumberCase>
{
};

TEST_P(RegistryNumberTest, IsFourBytesOfTheRightTypeAndTracesNothing)
{
    CRegistryScope registry;
    registry.SetRaw(kZebDiagKey, "DebugLevel", GetParam().type, GetParam().bytes);
    const CTraceCapture trace;
    DWORD value = 77;
    EXPECT_EQ(GetParam().read, ReadRegistryNumber(kZebDiagKey, "DebugLevel", value));
    EXPECT_EQ(GetParam().value, value);
    EXPECT_EQ(Lines{}, trace.Lines());
}

INSTANTIATE_TEST_SUITE_P(Values, RegistryNumberTest,
                         testing::Values(NumberCase{"Number", REG_DWORD, "\2\0\0\0"s, true, 2},
                                         NumberCase{"Zero", REG_DWORD, "\0\0\0\0"s, true, 0},
                                         NumberCase{"Short", REG_DWORD, "\2\0"s, false, 77},
                                         NumberCase{"Wide", REG_QWORD, "\2\0\0\0\0\0\0\0"s, false, 77},
                                         NumberCase{"Text", REG_SZ, "2\0"s, false, 77},
                                         NumberCase{"Bytes", REG_BINARY, "\2\0\0\0"s, false, 77}),
                         NameOf<NumberCase>);

// Installations write there, and administrators.
TEST(RegistryKeys, AreWhereTheProductIsConfigured)
{
    EXPECT_STREQ("SOFTWARE\\Veltrane\\Halvern\\ZEB", kZebKey);
    EXPECT_STREQ("SOFTWARE\\Veltrane\\Halvern\\ZEB\\ZebDiag", kZebDiagKey);
    EXPECT_STREQ("SOFTWARE\\Veltrane\\Halvern\\ZEB\\WMI\\Providers", kProvidersKey);
}

TEST(RegistryNumber, AMissingKeyOrValueIsSilent)
{
    CRegistryScope registry;
    const CTraceCapture trace;
    DWORD value = 77;
    EXPECT_FALSE(ReadRegistryNumber(kZebDiagKey, "DebugLevel", value));
    registry.CreateKey(kZebDiagKey);
    EXPECT_FALSE(ReadRegistryNumber(kZebDiagKey, "DebugLevel", value));
    EXPECT_EQ(77u, value);
    EXPECT_EQ(Lines{}, trace.Lines());
}
} // namespace
