// What the reader takes and what it refuses, and where.
#include "standin/mof/MofSyntax.h"

#include "standin/mof/MofError.h"
#include "tests/support/CaseName.h"

#include <gtest/gtest.h>

using namespace standin;

namespace
{
CMofValue ValueOf(const std::string& text)
{
    const auto statements = ParseMof("instance of C { P = " + text + "; };", "t");
    return std::get<CMofInstance>(statements.at(0)).Assignments.at(0).Value;
}
} // namespace

// Numbers

struct NumberCase
{
    const char* name;
    const char* text;
    bool negative;
    uint64_t number;
};
class MofNumber : public testing::TestWithParam<NumberCase>
{
};
TEST_P(MofNumber, IsRead)
{
    const CMofValue value = ValueOf(GetParam().text);
    EXPECT_EQ(value.Kind, CMofValue::Integer);
    EXPECT_EQ(value.Negative, GetParam().negative);
    EXPECT_EQ(value.Number, GetParam().number);
}
INSTANTIATE_TEST_SUITE_P(
    Forms, MofNumber,
    testing::Values(NumberCase{"Zero", "0", false, 0}, NumberCase{"Decimal", "1234", false, 1234},
                    NumberCase{"Plus", "+7", false, 7}, NumberCase{"Minus", "-7", true, 7},
                    NumberCase{"Hex", "0x1fF", false, 0x1FF}, NumberCase{"NegativeHex", "-0X10", true, 16},
                    NumberCase{"Octal", "0777", false, 0777}, NumberCase{"Binary", "1011b", false, 11},
                    NumberCase{"Largest", "18446744073709551615", false, UINT64_MAX}),
    NameOf<NumberCase>);

struct RealCase
{
    const char* name;
    const char* text;
    double value;
};
class MofReal : public testing::TestWithParam<RealCase>
{
};
TEST_P(MofReal, IsRead)
{
    const CMofValue value = ValueOf(GetParam().text);
    EXPECT_EQ(value.Kind, CMofValue::Real);
    EXPECT_DOUBLE_EQ(value.Fraction, GetParam().value);
}
INSTANTIATE_TEST_SUITE_P(Forms, MofReal,
                         testing::Values(RealCase{"Point", "2.5", 2.5}, RealCase{"NoWhole", "-.25", -0.25},
                                         RealCase{"Exponent", "1e3", 1000},
                                         RealCase{"Both", "1.5E-2", 0.015}),
                         NameOf<RealCase>);

// Texts

struct TextCase
{
    const char* name;
    const char* text;
    const wchar_t* expected;
};
class MofText : public testing::TestWithParam<TextCase>
{
};
TEST_P(MofText, IsRead)
{
    const CMofValue value = ValueOf(GetParam().text);
    EXPECT_EQ(value.Kind, CMofValue::Text);
    EXPECT_EQ(value.Characters, GetParam().expected);
}
INSTANTIATE_TEST_SUITE_P(
    Forms, MofText,
    testing::Values(TextCase{"Empty", R"("")", L""}, TextCase{"Plain", R"("a b")", L"a b"},
                    TextCase{"Concatenated", "\"a \" /* and */ \"b\"\n// or\n\"c\"", L"a bc"},
                    TextCase{"Escapes", R"("\b\t\n\f\r\"\'\\")", L"\b\t\n\f\r\"'\\"},
                    TextCase{"HexEscape", R"("\x41\x00e4z")", L"A\x00e4z"},
                    TextCase{"CommentInside", R"("//no /*comment*/")", L"//no /*comment*/"},
                    TextCase{"Utf8", "\"\xC3\xA4\xE2\x82\xAC\"", L"\x00e4\x20ac"},
                    TextCase{"Date", R"("20240229120000.000000+060")", L"20240229120000.000000+060"}),
    NameOf<TextCase>);

TEST(MofValue, WordsCharactersAndAliases)
{
    EXPECT_EQ(ValueOf("NULL").Kind, CMofValue::Null);
    EXPECT_EQ(ValueOf("True").Number, 1u);
    EXPECT_EQ(ValueOf("fAlSe").Number, 0u);
    EXPECT_EQ(ValueOf("'a'").Number, static_cast<uint64_t>('a'));
    EXPECT_EQ(ValueOf("'\\''").Number, static_cast<uint64_t>('\''));
    EXPECT_EQ(ValueOf("'\xC3\xA4'").Number, 0xE4u);
    EXPECT_EQ(ValueOf("$Some_1").Kind, CMofValue::Alias);
    EXPECT_EQ(ValueOf("$Some_1").Characters, L"Some_1");
}

TEST(MofValue, ListsHoldValuesInOrder)
{
    const CMofValue list = ValueOf("{ 1, \"two\" \"!\", TRUE, 'c', 5.0, NULL }");
    ASSERT_EQ(list.Kind, CMofValue::List);
    ASSERT_EQ(list.Items.size(), 6u);
    EXPECT_EQ(list.Items[1].Characters, L"two!");
    EXPECT_EQ(list.Items[4].Kind, CMofValue::Real);
    EXPECT_TRUE(ValueOf("{}").Items.empty());
}

// Statements

TEST(MofStatements, AClassInAllItsParts)
{
    const auto statements = ParseMof(R"(
        [Abstract, Description("a" "b") : ToSubclass Amended, ValueMap{"1","2"}: ToInstance, Version(3)]
        class My_Class : My_Base
        {
            [Key, Read: ToSubclass] string Name;
            uint16 Numbers[] = {1, 2};
            sint8 Fixed[12];
            Other ref Link = NULL;
            My_Class Inner;
            [Implemented] uint32 Do([In, ID(0)] string What, [In, Out, Optional] Other ref Whom, [Out] uint8 Bytes[]);
            void Nothing();
        };)",
                                     "t");
    ASSERT_EQ(statements.size(), 1u);
    const auto& parsed = std::get<CMofClass>(statements[0]);
    EXPECT_EQ(parsed.Name.Text, L"My_Class");
    EXPECT_EQ(parsed.Name.Place.Line, 3u);
    EXPECT_EQ(parsed.Name.Place.Column, 15u);
    EXPECT_EQ(parsed.Superclass->Text, L"My_Base");
    ASSERT_EQ(parsed.Qualifiers.size(), 4u);
    EXPECT_FALSE(parsed.Qualifiers[0].Value);
    EXPECT_EQ(parsed.Qualifiers[1].Value->Characters, L"ab");
    ASSERT_EQ(parsed.Qualifiers[1].Flavors.size(), 2u);
    EXPECT_EQ(parsed.Qualifiers[1].Flavors[1].Text, L"Amended");
    EXPECT_EQ(parsed.Qualifiers[2].Value->Items.size(), 2u);
    ASSERT_EQ(parsed.Properties.size(), 5u);
    EXPECT_EQ(parsed.Properties[0].Type.Text, L"string");
    EXPECT_TRUE(parsed.Properties[1].Array);
    EXPECT_EQ(parsed.Properties[1].Value->Items.size(), 2u);
    EXPECT_TRUE(parsed.Properties[2].Array);
    EXPECT_TRUE(parsed.Properties[3].Reference);
    EXPECT_EQ(parsed.Properties[3].Value->Kind, CMofValue::Null);
    EXPECT_EQ(parsed.Properties[4].Type.Text, L"My_Class");
    ASSERT_EQ(parsed.Methods.size(), 2u);
    ASSERT_EQ(parsed.Methods[0].Parameters.size(), 3u);
    EXPECT_TRUE(parsed.Methods[0].Parameters[1].Reference);
    EXPECT_EQ(parsed.Methods[0].Parameters[1].Name.Text, L"Whom");
    EXPECT_TRUE(parsed.Methods[0].Parameters[2].Array);
    EXPECT_EQ(parsed.Methods[1].Type.Text, L"void");
}

TEST(MofStatements, InstancesAndDirectives)
{
    const auto statements = ParseMof(R"(#pragma autorecover
        #PRAGMA classflags("forceupdate", updateonly)
        Instance Of __Win32Provider As $P { Name = "x"; [foo] Pure = TRUE; };)",
                                     "t");
    ASSERT_EQ(statements.size(), 3u);
    EXPECT_EQ(std::get<CMofPragma>(statements[0]).Name.Text, L"autorecover");
    EXPECT_EQ(std::get<CMofPragma>(statements[1]).Arguments[1].Characters, L"updateonly");
    const auto& instance = std::get<CMofInstance>(statements[2]);
    EXPECT_EQ(instance.Class.Text, L"__Win32Provider");
    EXPECT_EQ(instance.Alias->Text, L"P");
    ASSERT_EQ(instance.Assignments.size(), 2u);
    EXPECT_EQ(instance.Assignments[1].Name.Text, L"Pure");
}

TEST(MofStatements, NamesMayBeginLikeKeywords)
{
    const auto statements =
        ParseMof("class classic : instanceX { refuge reference; uint8 nullable = 1; };", "t");
    const auto& parsed = std::get<CMofClass>(statements[0]);
    EXPECT_EQ(parsed.Name.Text, L"classic");
    EXPECT_EQ(parsed.Properties[0].Name.Text, L"reference");
    EXPECT_FALSE(parsed.Properties[0].Reference);
}

TEST(MofStatements, NothingButCommentsIsNothing)
{
    EXPECT_TRUE(ParseMof("", "t").empty());
    EXPECT_TRUE(ParseMof("  /* a \n b */ // c", "t").empty());
}

// Errors

struct ErrorCase
{
    const char* name;
    const char* text;
    size_t line;
    size_t column;
    const char* reason;
};
class MofSyntaxError : public testing::TestWithParam<ErrorCase>
{
};
TEST_P(MofSyntaxError, TellsWhere)
{
    try
    {
        ParseMof(GetParam().text, "dir/some.mof");
        FAIL() << "was taken";
    }
    catch (const CMofError& error)
    {
        EXPECT_EQ(error.Line, GetParam().line);
        EXPECT_EQ(error.Column, GetParam().column);
        EXPECT_EQ(std::string(error.what()), "dir/some.mof(" + std::to_string(GetParam().line) + "," +
                                                 std::to_string(GetParam().column) +
                                                 "): " + GetParam().reason);
    }
}
INSTANTIATE_TEST_SUITE_P(
    Places, MofSyntaxError,
    testing::Values(
        ErrorCase{"Garbage", "class A {};\n  what", 2, 3, "expected a class, an instance or a #pragma"},
        ErrorCase{"NoSemicolon", "class A\n{\n  uint8 P\n};", 4, 1, "expected \";\""},
        ErrorCase{"NoClassName", "class {};", 1, 7, "expected a name"},
        ErrorCase{"NoSuperclass", "class A : {};", 1, 11, "expected the name of the superclass"},
        ErrorCase{"NoBrace", "class A;", 1, 8, "expected \"{\""},
        ErrorCase{"NoEnd", "class A { uint8 P;", 1, 19, "expected a name"},
        ErrorCase{"NoValue", "class A { uint8 P = ; };", 1, 21,
                  "expected a value or a list of values in braces"},
        ErrorCase{"NoListItem", "instance of A { P = {1, }; };", 1, 25, "expected a value"},
        ErrorCase{"OpenString", "instance of A { P = \"abc\n\"; };", 1, 25, "expected the end of the string"},
        ErrorCase{"BadEscape", "instance of A { P = \"a\\q\"; };", 1, 23, "expected the end of the string"},
        ErrorCase{"OpenComment", "class A {};\n/* abc", 2, 7, "expected the end of the comment"},
        ErrorCase{"OpenQualifiers", "[Key(1 class A {};", 1, 8, "expected \")\""},
        ErrorCase{"NoQualifier", "[] class A {};", 1, 2, "expected a name"},
        ErrorCase{"NoFlavor", "[Key :] class A {};", 1, 7, "expected a flavor"},
        ErrorCase{"BadCharacter", "instance of A { P = 'ab'; };", 1, 23, "expected one character and \"'\""},
        ErrorCase{"NoAlias", "instance of A as B {};", 1, 18, "expected an alias, \"$\" and a name"},
        ErrorCase{"NoOf", "instance A {};", 1, 10, "expected \"of\""},
        ErrorCase{"NoEquals", "instance of A { P 5; };", 1, 19, "expected \"=\""},
        ErrorCase{"NumberAndLetters", "instance of A { P = 12x; };", 1, 21,
                  "expected a value or a list of values in braces"},
        ErrorCase{"NumberTooLong", "instance of A { P = 18446744073709551616; };", 1, 21,
                  "a number of more than 64 bits"},
        ErrorCase{"ParameterWithoutName", "class A { void M(uint8); };", 1, 23, "expected a name"},
        ErrorCase{"Directive", "#define X", 1, 2, "expected \"pragma\""}),
    NameOf<ErrorCase>);

// Whatever is cut off anywhere is refused or is a shorter text, and never read past its end.
TEST(MofSyntaxErrors, EveryPrefixEndsWell)
{
    const std::string text =
        "#pragma namespace(\"\\\\\\\\.\\\\root\")\n[A{\"x\",\"y\"}: ToInstance] class B : C { [Key] "
        "string P[] = {\"\\x41\", 'c', 0x1}; uint8 M([In] D ref E); };\n"
        "instance of B as $F { P = {$G, 1.5e3, -0b}; }; // end";
    size_t refused = 0;
    for (size_t length = 0; length <= text.size(); ++length)
        try
        {
            ParseMof(std::string_view(text).substr(0, length), "t");
        }
        catch (const CMofError& error)
        {
            EXPECT_GE(error.Line, 1u);
            ++refused;
        }
    EXPECT_GT(refused, text.size() / 2);
}
