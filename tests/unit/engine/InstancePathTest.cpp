#include "CDM/src/engine/naming/InstancePath.h"
#include "Common/src/com/WmiStatus.h"
#include "tests/support/CaseName.h"

#include <gtest/gtest.h>

namespace
{
struct Key
{
    const wchar_t* name; // null for the unnamed form
    std::variant<const wchar_t*, LONG> value;
};

struct Good
{
    const char* name;
    const wchar_t* path;
    const wchar_t* server;
    std::vector<std::wstring> namespaces;
    const wchar_t* className;
    std::vector<Key> keys;
};

class GoodPathTest : public testing::TestWithParam<Good>
{
};

TEST_P(GoodPathTest, GivesClassAndTypedKeysInOrder)
{
    const Good& expected = GetParam();
    CParsedObjectPath path;
    ASSERT_EQ(S_OK, ParseObjectPath(expected.path, path));
    EXPECT_EQ(expected.server, path.Server);
    EXPECT_EQ(expected.namespaces, path.Namespaces);
    EXPECT_EQ(expected.className, path.Class);
    ASSERT_EQ(expected.keys.size(), path.Keys.size());
    for (size_t i = 0; i < path.Keys.size(); ++i)
    {
        const Key& key = expected.keys[i];
        EXPECT_EQ(key.name != nullptr, path.Keys[i].Name.has_value());
        if (key.name)
        {
            EXPECT_EQ(key.name, path.Keys[i].Name.value());
        }
        ASSERT_EQ(key.value.index(), path.Keys[i].Value.index());
        if (const auto* text = std::get_if<const wchar_t*>(&key.value))
        {
            EXPECT_EQ(*text, std::get<std::wstring>(path.Keys[i].Value));
        }
        else
            EXPECT_EQ(std::get<LONG>(key.value), std::get<LONG>(path.Keys[i].Value));
    }
}

const Good kGood[] = {
    {"ClassAlone", L"Tolva_DiagTest", L"", {}, L"Tolva_DiagTest", {}},
    {"OneKey", L"Tolva_DiagTest.Name=\"1@A\"", L"", {}, L"Tolva_DiagTest", {{L"Name", L"1@A"}}},
    {"UnnamedKey", L"Tolva_DiagTest=\"1@A\"", L"", {}, L"Tolva_DiagTest", {{nullptr, L"1@A"}}},
    {"UnnamedNumber", L"C=5", L"", {}, L"C", {{nullptr, 5L}}},
    {"SeveralKeysKeepTheirOrder",
     L"C.b=\"1\",a=2,c=\"3\"",
     L"",
     {},
     L"C",
     {{L"b", L"1"}, {L"a", 2L}, {L"c", L"3"}}},
    {"ServerAndNamespace",
     L"\\\\HOST\\root\\cimv2:C.k=\"v\"",
     L"HOST",
     {L"root", L"cimv2"},
     L"C",
     {{L"k", L"v"}}},
    {"ForwardSlashes",
     L"//HOST/"
     L"root/cimv2:C.k=\"v\"",
     L"HOST",
     {L"root", L"cimv2"},
     L"C",
     {{L"k", L"v"}}},
    {"ThisServer", L"\\\\.\\root:C", L".", {L"root"}, L"C", {}},
    {"ServerWithDots", L"\\\\host.example\\root:C", L"host.example", {L"root"}, L"C", {}},
    {"RelativeNamespace", L"root\\cimv2:C.k=\"v\"", L"", {L"root", L"cimv2"}, L"C", {{L"k", L"v"}}},
    {"OneRelativeNamespace", L"cimv2:C=\"v\"", L"", {L"cimv2"}, L"C", {{nullptr, L"v"}}},
    {"ColonInValue", L"C.k=\"a:b\"", L"", {}, L"C", {{L"k", L"a:b"}}},
    {"EscapedQuote", LR"(C.k="a\"b")", L"", {}, L"C", {{L"k", L"a\"b"}}},
    {"EscapedBackslash", LR"(C.k="a\\b")", L"", {}, L"C", {{L"k", L"a\\b"}}},
    {"LoneBackslash", LR"(C.k="PCI\VEN_8086")", L"", {}, L"C", {{L"k", L"PCI\\VEN_8086"}}},
    {"EmbeddedReference",
     LR"(A.Result="R.DiagnosticName=\"1@A\"",SystemElement="E.DeviceID=\"A\"")",
     L"",
     {},
     L"A",
     {{L"Result", L"R.DiagnosticName=\"1@A\""}, {L"SystemElement", L"E.DeviceID=\"A\""}}},
    {"SingleQuotes", L"C.k='a\"b'", L"", {}, L"C", {{L"k", L"a\"b"}}},
    {"EmptyValue", L"C.k=\"\"", L"", {}, L"C", {{L"k", L""}}},
    {"SeparatorsInValue", L"C.k=\"a,b=c.d\"", L"", {}, L"C", {{L"k", L"a,b=c.d"}}},
    {"BlanksAround", L" C . k = \"v\" , l = 1 ", L"", {}, L"C", {{L"k", L"v"}, {L"l", 1L}}},
    {"Decimal", L"C.k=42", L"", {}, L"C", {{L"k", 42L}}},
    {"NegativeDecimal", L"C.k=-42", L"", {}, L"C", {{L"k", -42L}}},
    {"SmallestNumber", L"C.k=-2147483648", L"", {}, L"C", {{L"k", -2147483647L - 1}}},
    {"LargestNumber", L"C.k=4294967295", L"", {}, L"C", {{L"k", -1L}}},
    {"Hexadecimal", L"C.k=0x1F", L"", {}, L"C", {{L"k", 31L}}},
    {"HexadecimalUpperPrefix", L"C.k=0XfF", L"", {}, L"C", {{L"k", 255L}}},
    {"HexadecimalOf32Bits", L"C.k=0x0080042000", L"", {}, L"C", {{L"k", static_cast<LONG>(0x80042000)}}},
    {"TrueInLowerCase", L"C.k=true", L"", {}, L"C", {{L"k", 1L}}},
    {"True", L"C.k=TRUE", L"", {}, L"C", {{L"k", 1L}}},
    {"FalseInMixedCase", L"C.k=False", L"", {}, L"C", {{L"k", 0L}}},
    {"Underscores", L"__NAMESPACE.Name=\"x\"", L"", {}, L"__NAMESPACE", {{L"Name", L"x"}}},
};
INSTANTIATE_TEST_SUITE_P(Paths, GoodPathTest, testing::ValuesIn(kGood), NameOf<Good>);

struct Bad
{
    const char* name;
    const wchar_t* path;
};

class BadPathTest : public testing::TestWithParam<Bad>
{
};

TEST_P(BadPathTest, IsRefusedAndChangesNothing)
{
    CParsedObjectPath path;
    path.Class = L"before";
    EXPECT_EQ(wmi::InvalidObjectPath, ParseObjectPath(GetParam().path, path));
    EXPECT_EQ(L"before", path.Class);
}

const Bad kBad[] = {
    {"Null", nullptr},
    {"Empty", L""},
    {"Blank", L"  "},
    {"NoClass", L".k=\"v\""},
    {"ClassBeginsWithDigit", L"1C.k=\"v\""},
    {"DotWithoutKeys", L"C."},
    {"KeyWithoutValue", L"C.k"},
    {"EqualsWithoutValue", L"C="},
    {"NamedEqualsWithoutValue", L"C.k="},
    {"TrailingComma", L"C.k=\"v\","},
    {"UnnamedAfterComma", L"C.k=\"v\",\"w\""},
    {"TwoUnnamed", L"C=\"v\",\"w\""},
    {"NoComma", L"C.k=\"v\" l=\"w\""},
    {"Unterminated", L"C.k=\"v"},
    {"UnterminatedByBackslash", L"C.k=\"v\\\""},
    {"QuoteInValue", L"C.k=\"a\"b\""},
    {"UnquotedWord", L"C.k=word"},
    {"AlmostTrue", L"C.k=TRUE1"},
    {"HexWithoutDigits", L"C.k=0x"},
    {"HexWithOtherLetters", L"C.k=0x1G"},
    {"HexTooLong", L"C.k=0x123456789"},
    {"NumberTooLarge", L"C.k=4294967296"},
    {"NumberTooSmall", L"C.k=-2147483649"},
    {"NumberFarTooLarge", L"C.k=99999999999999999999999999"},
    {"SignAlone", L"C.k=-"},
    {"TextBehind", L"C.k=\"v\"x"},
    {"ServerAlone", L"\\\\HOST"},
    {"ServerAndNamespaceAlone", L"\\\\HOST\\root"},
    {"EmptyServer", L"\\\\\\root:C"},
    {"EmptyNamespace", L"\\\\HOST\\:C"},
    {"EmptyMiddleNamespace", L"root\\\\cimv2:C"},
    {"NamespaceWithoutClass", L"root\\cimv2:"},
    {"OneLeadingSeparator", L"\\root:C"},
    {"Punctuation", L"?!"},
};
INSTANTIATE_TEST_SUITE_P(Paths, BadPathTest, testing::ValuesIn(kBad), NameOf<Bad>);

TEST(ObjectPathTest, KeyOfTenThousandCharactersIsReadWhole)
{
    const std::wstring value(10000, L'k');
    CParsedObjectPath path;
    ASSERT_EQ(S_OK, ParseObjectPath((L"C.Name=\"" + value + L"\"").c_str(), path));
    EXPECT_EQ(value, std::get<std::wstring>(path.Keys.at(0).Value));
}

TEST(ObjectPathTest, SingletonHasNoKeys)
{
    CParsedObjectPath path;
    ASSERT_EQ(S_OK, ParseObjectPath(L"C=@", path));
    EXPECT_TRUE(path.Singleton);
    EXPECT_TRUE(path.Keys.empty());
    CParsedObjectPath other;
    ASSERT_EQ(S_OK, ParseObjectPath(L"C.k=1", other));
    EXPECT_FALSE(other.Singleton);
}

TEST(ObjectPathTest, TextOfANumberIsItsDigits)
{
    CParsedObjectPath path;
    ASSERT_EQ(S_OK, ParseObjectPath(L"C.a=-7,b=\"x\"", path));
    EXPECT_STREQ(L"-7", path.Keys[0].Text().Text());
    EXPECT_STREQ(L"x", path.Keys[1].Text().Text());
}

struct Lookup
{
    const char* name;
    const wchar_t* path;
    const wchar_t* defaultName;
    const wchar_t* wanted;
    bool acceptUnnamed;
    const wchar_t* found; // null: none
};

class KeyRefTest : public testing::TestWithParam<Lookup>
{
};

TEST_P(KeyRefTest, FindsTheFirstMatch)
{
    const Lookup& expected = GetParam();
    CParsedObjectPath path;
    ASSERT_EQ(S_OK, ParseObjectPath(expected.path, path));
    if (expected.defaultName)
        SetDefaultKeyName(path, expected.defaultName);
    const CKeyRef* const found = GetKeyRef(path, expected.wanted, expected.acceptUnnamed);
    ASSERT_EQ(expected.found != nullptr, found != nullptr);
    if (found)
    {
        EXPECT_STREQ(expected.found, found->Text().Text());
    }
}

const Lookup kLookups[] = {
    {"Named", L"C.a=\"1\",b=\"2\"", nullptr, L"b", false, L"2"},
    {"NamedInOtherCase", L"C.NAME=\"1\"", nullptr, L"name", false, L"1"},
    {"OtherLettersAreNotFolded", L"C.\u00e4=\"1\"", nullptr, L"\u00c4", false, nullptr},
    {"FirstOfTwo", L"C.a=\"1\",A=\"2\"", nullptr, L"a", false, L"1"},
    {"Unknown", L"C.a=\"1\"", nullptr, L"b", true, nullptr},
    {"NoKeys", L"C", nullptr, L"a", true, nullptr},
    {"UnnamedAccepted", L"C=\"1\"", nullptr, L"a", true, L"1"},
    {"UnnamedNotAccepted", L"C=\"1\"", nullptr, L"a", false, nullptr},
    {"UnnamedByDefaultName", L"C=\"1\"", L"A", L"a", false, L"1"},
    {"UnnamedByOtherDefaultName", L"C=\"1\"", L"b", L"a", false, nullptr},
    {"DefaultNameDoesNotRename", L"C.x=\"1\"", L"a", L"a", false, nullptr},
};
INSTANTIATE_TEST_SUITE_P(Keys, KeyRefTest, testing::ValuesIn(kLookups), NameOf<Lookup>);
} // namespace
