#include "CDM/src/engine/naming/DiagKeys.h"

#include "CDM/src/ZebHelpers.h"
#include "CDM/src/engine/naming/InstancePath.h"
#include "tests/support/CaseName.h"
#include "tests/support/TraceCapture.h"

#include <gtest/gtest.h>

namespace
{
struct Split
{
    const char* name;
    const wchar_t* key;
    const wchar_t* test;    // null: nothing
    const wchar_t* adapter; // null: nothing
};

class SplitTest : public testing::TestWithParam<Split>
{
};

void ExpectText(const wchar_t* expected, const CBstr& text)
{
    ASSERT_EQ(expected != nullptr, static_cast<bool>(text));
    if (expected)
    {
        EXPECT_STREQ(expected, text.Text());
    }
}

TEST_P(SplitTest, GivesBothParts)
{
    ExpectText(GetParam().test, ParseForTestName(CBstr(GetParam().key).View()));
    ExpectText(GetParam().adapter, ParseForAdapterKey(CBstr(GetParam().key).View()));
}

const Split kSplits[] = {
    {"OneSeparator", L"A@K1", L"A", L"K1"},      {"FirstSeparatorCounts", L"a@b@c", L"a", L"b@c"},
    {"NoSeparator", L"Cable", nullptr, nullptr}, {"Empty", L"", nullptr, nullptr},
    {"Null", nullptr, nullptr, nullptr},         {"BeginsWithSeparator", L"@K1", L"", L"K1"},
    {"EndsWithSeparator", L"A@", L"A", L""},     {"SeparatorAlone", L"@", L"", L""},
};
INSTANTIATE_TEST_SUITE_P(Keys, SplitTest, testing::ValuesIn(kSplits), NameOf<Split>);

TEST(SplitLimitsTest, SeparatorBehindAnEmbeddedNulIsNotThere)
{
    const std::wstring_view key(L"abc\0@K1", 7);
    EXPECT_FALSE(ParseForTestName(CBstr(key).View()));
    EXPECT_FALSE(ParseForAdapterKey(CBstr(key).View()));
}

TEST(SplitLimitsTest, KeysLongerThanAPathBufferAreSplit)
{
    const std::wstring adapter(10000, L'K');
    const CBstr key(std::wstring_view(L"A@" + adapter));
    EXPECT_EQ(L"A", ParseForTestName(key.View()).View());
    EXPECT_EQ(adapter, ParseForAdapterKey(key.View()).View());
    EXPECT_FALSE(ParseForTestName(adapter));
}

TEST(JoinKeyTest, PutsTheSeparatorBetween)
{
    EXPECT_STREQ(L"A@K1", JoinKey(L"A", L"K1").Text());
    EXPECT_STREQ(L"A@", JoinKey(L"A", CBstr().View()).Text());
    EXPECT_STREQ(L"@", JoinKey(L"", L"").Text());
}

TEST(ReferenceTest, TestWithCimKeyModeHasTheSingleKeyName)
{
    EXPECT_STREQ(L"Tolva_DiagTest.Name=\"Link@A\"", CreateTestReference(L"Link@A", true).Text());
}

TEST(ReferenceTest, TestWithFullKeys)
{
    const std::wstring expected =
        L"Tolva_DiagTest.Name=\"Link@A\",CreationClassName=\"Tolva_DiagTest\",SystemCreationClassName="
        L"\"Win32_ComputerSystem\",SystemName=\"" +
        std::wstring(ComputerName()) + L"\"";
    EXPECT_EQ(expected, CreateTestReference(L"Link@A", false).View());
}

TEST(ReferenceTest, SettingHasTheSingleKeySettingID)
{
    EXPECT_STREQ(L"Tolva_DiagSetting.SettingID=\"9@K1\"", CreateSettingReference(L"9@K1").Text());
}

TEST(ReferenceTest, ResultHasTheWholeKeyAndItsAdapterPart)
{
    const std::wstring expected =
        L"Tolva_DiagResult.DiagnosticCreationClassName=\"Tolva_DiagTest\",DiagnosticName=\"Cable@K1\","
        L"ExecutionID=\"K1\",DiagSystemCreationClassName=\"Win32_ComputerSystem\",DiagSystemName=\"" +
        std::wstring(ComputerName()) + L"\"";
    EXPECT_EQ(expected, CreateResultReference(L"Cable@K1").View());
}

TEST(ReferenceTest, ResultOfAKeyWithoutAdapterIsNothing)
{
    const CTraceCapture trace;
    EXPECT_FALSE(CreateResultReference(L"Cable"));
    EXPECT_TRUE(trace.Has("CreateResultReference: Cannot extract AdapterKey from DiagObject key"));
}

TEST(ReferenceTest, SystemElementInBothModes)
{
    EXPECT_STREQ(L"Tolva_EthernetAdapter.DeviceID=\"K1\"", CreateSysElemReference(L"K1", true).Text());
    const std::wstring expected =
        L"Tolva_EthernetAdapter.DeviceID=\"K1\",CreationClassName=\"Tolva_EthernetAdapter\","
        L"SystemCreationClassName=\"Win32_ComputerSystem\",SystemName=\"" +
        std::wstring(ComputerName()) + L"\"";
    EXPECT_EQ(expected, CreateSysElemReference(L"K1", false).View());
}

TEST(ReferenceTest, ValuesGoInAsTheyAre)
{
    EXPECT_STREQ(L"Tolva_DiagTest.Name=\"1@%s\\\"x\"", CreateTestReference(L"1@%s\\\"x", true).Text());
    EXPECT_STREQ(L"Tolva_DiagTest.Name=\"\"", CreateTestReference(CBstr().View(), true).Text());
}

TEST(ReferenceTest, LongKeysMakeLongPaths)
{
    const std::wstring key = L"1@" + std::wstring(10000, L'K');
    const CBstr path = CreateTestReference(key, false);
    CParsedObjectPath parsed;
    ASSERT_EQ(S_OK, ParseObjectPath(path.Text(), parsed));
    EXPECT_EQ(key, GetKeyRef(parsed, L"Name", false)->Text().View());
}

TEST(ReferenceTest, WhatIsBuiltCanBeParsed)
{
    for (const wchar_t* key : {L"1@{6C1F0A52-3B7E}", L"1@PCI\\VEN_8086&DEV_1", L"A@a,b=c"})
    {
        CParsedObjectPath parsed;
        ASSERT_EQ(S_OK, ParseObjectPath(CreateResultReference(CBstr(key).View()).Text(), parsed));
        EXPECT_STREQ(key, GetKeyRef(parsed, L"DiagnosticName", false)->Text().Text());
        EXPECT_EQ(5u, parsed.Keys.size());
    }
}
} // namespace
