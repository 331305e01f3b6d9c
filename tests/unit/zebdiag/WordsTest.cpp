#include "tools/zebdiag/Words.h"

#include "tests/support/CaseName.h"
#include "tools/zebdiag/DateTime.h"
#include "tools/zebdiag/Filled.h"
#include "tools/zebdiag/LocaleName.h"
#include "tools/zebdiag/ObjectPath.h"

namespace zebdiag
{
namespace
{
struct TimeCase
{
    const char* name;
    const wchar_t* given;
    const wchar_t* readable;
    const wchar_t* iso;
};

class TimeTest : public testing::TestWithParam<TimeCase>
{
};

TEST_P(TimeTest, Reads)
{
    EXPECT_EQ(ReadableTime(GetParam().given), GetParam().readable);
    EXPECT_EQ(IsoTime(GetParam().given), GetParam().iso);
}

INSTANTIATE_TEST_SUITE_P(Times, TimeTest,
                         testing::Values(TimeCase{"Padded", L"20240501134510.000000+120",
                                                  L"2024-05-01 13:45:10", L"2024-05-01T13:45:10"},
                                         TimeCase{"OffsetWithoutPadding", L"20240501134510.000000-0",
                                                  L"2024-05-01 13:45:10", L"2024-05-01T13:45:10"},
                                         TimeCase{"OffsetWithTwoSigns", L"20240501134510.000000--60",
                                                  L"2024-05-01 13:45:10", L"2024-05-01T13:45:10"},
                                         TimeCase{"Empty", L"", L"", L""},
                                         TimeCase{"TooShort", L"2024050113451", L"", L""},
                                         TimeCase{"NotDigits", L"2024-05-01 13:45", L"", L""},
                                         TimeCase{"Wildcards", L"********134510.000000+000", L"", L""}),
                         NameOf<TimeCase>);

TEST(ReadableEndTest, LeavesOutTheDateOfTheSameDay)
{
    EXPECT_EQ(ReadableEnd(L"20240501134511.000000+0", L"20240501134510.000000+0"), L"13:45:11");
    EXPECT_EQ(ReadableEnd(L"20240502000001.000000+0", L"20240501235959.000000+0"), L"2024-05-02 00:00:01");
    EXPECT_EQ(ReadableEnd(L"20240501134511.000000+0", L""), L"2024-05-01 13:45:11");
    EXPECT_EQ(ReadableEnd(L"", L"20240501134510.000000+0"), L"");
}

struct FilledCase
{
    const char* name;
    const wchar_t* text;
    const wchar_t* filled;
};

class FilledTest : public testing::TestWithParam<FilledCase>
{
};

TEST_P(FilledTest, PutsValuesIn)
{
    EXPECT_EQ(Filled(GetParam().text, {L"a{2}", L"b"}), GetParam().filled);
}

INSTANTIATE_TEST_SUITE_P(Texts, FilledTest,
                         testing::Values(FilledCase{"InOrder", L"{1} and {2}.", L"a{2} and b."},
                                         FilledCase{"InAnotherOrder", L"{2}, {1}, {2}", L"b, a{2}, b"},
                                         FilledCase{"NoValueOfThatNumber", L"{3} {0} {x}", L"{3} {0} {x}"},
                                         FilledCase{"NoPlace", L"{} { 1} {1", L"{} { 1} {1"},
                                         FilledCase{"Empty", L"", L""}),
                         NameOf<FilledCase>);

struct DurationCase
{
    const char* name;
    unsigned long long seconds;
    const wchar_t* words;
};

class DurationTest : public testing::TestWithParam<DurationCase>
{
};

TEST_P(DurationTest, SaysMinutesWhereThereAreAny)
{
    EXPECT_EQ(Duration(GetParam().seconds), GetParam().words);
}

INSTANTIATE_TEST_SUITE_P(Seconds, DurationTest,
                         testing::Values(DurationCase{"None", 0, L"0 s"},
                                         DurationCase{"UnderAMinute", 59, L"59 s"},
                                         DurationCase{"AMinute", 60, L"1 min 0 s"},
                                         DurationCase{"More", 125, L"2 min 5 s"}),
                         NameOf<DurationCase>);

struct StateCase
{
    const char* name;
    long number;
    const wchar_t* words;
    const char* json;
};

class StateTest : public testing::TestWithParam<StateCase>
{
};

TEST_P(StateTest, HasWords)
{
    EXPECT_EQ(StateInWords(static_cast<TestState>(GetParam().number)), GetParam().words);
    EXPECT_STREQ(StateName(static_cast<TestState>(GetParam().number)), GetParam().json);
}

INSTANTIATE_TEST_SUITE_P(States, StateTest,
                         testing::Values(StateCase{"Unknown", 0, L"Unknown", "unknown"},
                                         StateCase{"Other", 1, L"Other", "other"},
                                         StateCase{"Passed", 2, L"Passed", "passed"},
                                         StateCase{"Failed", 3, L"Failed", "failed"},
                                         StateCase{"InProgress", 4, L"In progress", "in_progress"},
                                         StateCase{"Stopped", 5, L"Stopped", "stopped"},
                                         StateCase{"AboveTheLast", 6, L"Unknown", "unknown"},
                                         StateCase{"Negative", -1, L"Unknown", "unknown"}),
                         NameOf<StateCase>);

struct FindingsCase
{
    const char* name;
    std::vector<std::wstring> lines;
    std::vector<std::wstring> findings;
};

class FindingsTest : public testing::TestWithParam<FindingsCase>
{
};

TEST_P(FindingsTest, AreWhatFollowsTimeAndName)
{
    CResult result;
    result.Lines = GetParam().lines;
    EXPECT_EQ(Findings(result), GetParam().findings);
}

INSTANTIATE_TEST_SUITE_P(
    Lines, FindingsTest,
    testing::Values(
        FindingsCase{"None", {}, {}}, FindingsCase{"Whole", {L"20240501|Link|no cable"}, {L"no cable"}},
        FindingsCase{"BarsInTheFinding", {L"t|Link|a|b"}, {L"a|b"}},
        FindingsCase{"EmptyFinding", {L"t|Link|"}, {L""}},
        FindingsCase{"OneBarOnly", {L"t|rest"}, {L"t|rest"}}, FindingsCase{"NoBar", {L"text"}, {L"text"}},
        FindingsCase{"Empty", {L""}, {L""}},
        FindingsCase{"CountersFrom2To31",
                     {L"t|S|Sent: 2147483647", L"t|S|Received: -2147483648", L"t|S|Lost: -1"},
                     {L"Sent: 2147483647", L"Received: 2147483648", L"Lost: 4294967295"}},
        FindingsCase{"TooNegativeForACounter",
                     {L"t|S|Sent: 1", L"t|S|Received: 2", L"t|S|Lost: -2147483649"},
                     {L"Sent: 1", L"Received: 2", L"Lost: -2147483649"}},
        FindingsCase{"TooFewForCounters", {L"t|S|Status: 1", L"t|S|Level: -5"}, {L"Status: 1", L"Level: -5"}},
        FindingsCase{"WordsAmongThem",
                     {L"t|S|Level: -5", L"t|S|no cable", L"t|S|Lost: 1"},
                     {L"Level: -5", L"no cable", L"Lost: 1"}}),
    NameOf<FindingsCase>);

TEST(CountTest, OneIsSingular)
{
    EXPECT_EQ(Tests(1), L"1 test");
    EXPECT_EQ(Tests(0), L"0 tests");
    EXPECT_EQ(Adapters(1), L"1 adapter");
    EXPECT_EQ(Adapters(2), L"2 adapters");
    EXPECT_EQ(Results(1), L"1 result");
    EXPECT_EQ(Results(2), L"2 results");
}

struct LocaleCase
{
    const char* name;
    const wchar_t* text;
    const wchar_t* argument;
};

class LocaleTest : public testing::TestWithParam<LocaleCase>
{
};

TEST_P(LocaleTest, BecomesTheServicesForm)
{
    EXPECT_EQ(LocaleArgument(GetParam().text), GetParam().argument);
}

INSTANTIATE_TEST_SUITE_P(Locales, LocaleTest,
                         testing::Values(LocaleCase{"ServicesForm", L"MS_407", L"MS_407"},
                                         LocaleCase{"LowerCase", L"ms_40c", L"MS_40c"},
                                         LocaleCase{"Hexadecimal", L"0x407", L"MS_407"},
                                         LocaleCase{"BareNumber", L"409", L"MS_409"},
                                         LocaleCase{"LanguageAndCountry", L"de-DE", L"MS_407"},
                                         LocaleCase{"LanguageThatLooksLikeANumber", L"de", L"MS_407"},
                                         LocaleCase{"Empty", L"", L""},
                                         LocaleCase{"Unknown", L"klingon", L""},
                                         LocaleCase{"PrefixOnly", L"MS_", L""},
                                         LocaleCase{"NotHexadecimal", L"MS_xyz", L""},
                                         LocaleCase{"TooLong", L"MS_123456789", L""}),
                         NameOf<LocaleCase>);

TEST(ObjectPathTest, ValuesAreEscaped)
{
    EXPECT_EQ(TestPath(L"1@a\"b\\c"), L"Tolva_DiagTest.Name=\"1@a\\\"b\\\\c\"");
    EXPECT_EQ(SettingPath(L"9@K"), L"Tolva_DiagSetting.SettingID=\"9@K\"");
    EXPECT_EQ(ResultPath(L"9@K", L"K"), L"Tolva_DiagResult.DiagnosticCreationClassName=\"Tolva_DiagTest\","
                                        L"DiagnosticName=\"9@K\",ExecutionID=\"K\"");
}

TEST(ObjectPathTest, AdapterCarriesAllFourKeys)
{
    EXPECT_EQ(AdapterPath(L"{AAAA}", L"WS42"),
              L"Tolva_EthernetAdapter.DeviceID=\"{AAAA}\",CreationClassName=\"Tolva_EthernetAdapter\","
              L"SystemCreationClassName=\"Win32_ComputerSystem\",SystemName=\"WS42\"");
}
} // namespace
} // namespace zebdiag
