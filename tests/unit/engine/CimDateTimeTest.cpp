#include "CDM/src/engine/results/CimDateTime.h"
#include "tests/support/CaseName.h"
#include "tests/support/TraceCapture.h"

#include <gtest/gtest.h>

namespace
{
TIME_ZONE_INFORMATION s_zone;
DWORD s_zoneResult;

DWORD WINAPI ReadTestZone(TIME_ZONE_INFORMATION* zone)
{
    *zone = s_zone;
    return s_zoneResult;
}

struct Zone
{
    const char* name;
    LONG bias;
    LONG daylightBias;
    WORD daylightMonth; // 0: no daylight rule
    DWORD result;
    const wchar_t* offset;
};

class ZoneTest : public testing::TestWithParam<Zone>
{
};

constexpr SYSTEMTIME kTime = {2024, 3, 2, 5, 6, 7, 8, 999};

TEST_P(ZoneTest, EndsWithSignAndOffset)
{
    s_zone = {};
    s_zone.Bias = GetParam().bias;
    s_zone.DaylightBias = GetParam().daylightBias;
    s_zone.DaylightDate.wMonth = GetParam().daylightMonth;
    s_zoneResult = GetParam().result;
    CCoTaskMem<wchar_t> text;
    ASSERT_TRUE(ConvertSystemTimeToString(&kTime, text, &ReadTestZone));
    EXPECT_EQ(std::wstring(L"20240305060708.000000") + GetParam().offset, text.Get());
}

const Zone kZones[] = {
    {"EastWithoutDaylight", -60, -60, 0, TIME_ZONE_ID_UNKNOWN, L"+60"},
    {"WestWithoutDaylight", 300, -60, 0, TIME_ZONE_ID_UNKNOWN, L"-300"},
    {"Utc", 0, 0, 0, TIME_ZONE_ID_UNKNOWN, L"-0"},
    {"EastWithDaylight", -60, -60, 3, TIME_ZONE_ID_DAYLIGHT, L"+120"},
    {"EastWithDaylightNotInForce", -60, -60, 3, TIME_ZONE_ID_STANDARD, L"+120"},
    {"WestWithDaylight", 300, -60, 3, TIME_ZONE_ID_DAYLIGHT, L"-240"},
    {"DaylightAtZero", 0, -60, 3, TIME_ZONE_ID_DAYLIGHT, L"--60"},
    {"HalfHours", -330, 0, 0, TIME_ZONE_ID_UNKNOWN, L"+330"},
    {"Largest", -2147483647, 0, 0, TIME_ZONE_ID_UNKNOWN, L"+2147483647"},
    {"NotPadded", -5, 0, 0, TIME_ZONE_ID_UNKNOWN, L"+5"},
};
INSTANTIATE_TEST_SUITE_P(Zones, ZoneTest, testing::ValuesIn(kZones), NameOf<Zone>);

CCoTaskMem<wchar_t> SomeText()
{
    CCoTaskMem<wchar_t> text(static_cast<wchar_t*>(CoTaskMemAlloc(2 * sizeof(wchar_t))));
    wcscpy(text.Get(), L"x");
    return text;
}

TEST(ToTextTest, NullTimeGivesANullText)
{
    CCoTaskMem<wchar_t> text = SomeText();
    EXPECT_FALSE(ConvertSystemTimeToString(nullptr, text));
    EXPECT_FALSE(text);
}

TEST(ToTextTest, FieldsArePadded)
{
    s_zone = {};
    s_zoneResult = TIME_ZONE_ID_UNKNOWN;
    const SYSTEMTIME early = {7, 1, 0, 2, 3, 4, 5, 0};
    const SYSTEMTIME late = {9999, 12, 0, 31, 23, 59, 59, 999};
    CCoTaskMem<wchar_t> text;
    ASSERT_TRUE(ConvertSystemTimeToString(&early, text, &ReadTestZone));
    EXPECT_STREQ(L"00070102030405.000000-0", text.Get());
    ASSERT_TRUE(ConvertSystemTimeToString(&late, text, &ReadTestZone));
    EXPECT_STREQ(L"99991231235959.000000-0", text.Get());
}

TEST(ToTextTest, TheZoneIsTheSystems)
{
    s_zone = {};
    s_zoneResult = GetTimeZoneInformation(&s_zone);
    CCoTaskMem<wchar_t> expected;
    ASSERT_TRUE(ConvertSystemTimeToString(&kTime, expected, &ReadTestZone));
    CCoTaskMem<wchar_t> text;
    ASSERT_TRUE(ConvertSystemTimeToString(&kTime, text));
    EXPECT_STREQ(expected.Get(), text.Get());
}

TEST(ToTextTest, UnreadableZoneLeavesTheTextAlone)
{
    const CTraceCapture trace;
    s_zoneResult = TIME_ZONE_ID_INVALID;
    CCoTaskMem<wchar_t> text = SomeText();
    EXPECT_FALSE(ConvertSystemTimeToString(&kTime, text, &ReadTestZone));
    EXPECT_STREQ(L"x", text.Get());
    EXPECT_TRUE(trace.Has("ConvertSystemTimeToString: GetTimeZoneInformation failed."));
}

TEST(ToTextTest, ReadsBackWhatItWrote)
{
    CCoTaskMem<wchar_t> text;
    ASSERT_TRUE(ConvertSystemTimeToString(&kTime, text));
    SYSTEMTIME time{};
    ASSERT_TRUE(ConvertStringToSystemTime(text.Get(), time));
    EXPECT_EQ(2024, time.wYear);
    EXPECT_EQ(3, time.wMonth);
    EXPECT_EQ(5, time.wDay);
    EXPECT_EQ(6, time.wHour);
    EXPECT_EQ(7, time.wMinute);
    EXPECT_EQ(8, time.wSecond);
    EXPECT_EQ(0, time.wMilliseconds);
    EXPECT_EQ(0, time.wDayOfWeek);
}

struct FromText
{
    const char* name;
    const wchar_t* text;
    bool good;
};

class FromTextTest : public testing::TestWithParam<FromText>
{
};

TEST_P(FromTextTest, NeedsAllSixFields)
{
    SYSTEMTIME time{};
    time.wYear = 1;
    EXPECT_EQ(GetParam().good, ConvertStringToSystemTime(GetParam().text, time));
    EXPECT_EQ(GetParam().good ? 2024 : 1, time.wYear);
}

const FromText kTexts[] = {
    {"Whole", L"20240305060708.000000+060", true},
    {"WithoutFractionAndOffset", L"20240305060708", true},
    {"OtherFraction", L"20240305060708.123456*abc", true},
    {"Empty", L"", false},
    {"Null", nullptr, false},
    {"DateOnly", L"20240305", false},
    {"SecondsMissing", L"202403050607", false},
    {"Wildcards", L"********060708.000000+000", false},
    {"Words", L"yesterday", false},
};
INSTANTIATE_TEST_SUITE_P(Texts, FromTextTest, testing::ValuesIn(kTexts), NameOf<FromText>);
} // namespace
