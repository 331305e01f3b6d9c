// What the reader of MOF takes and what it refuses, and where.
#include "tests/support/CaseName.h"
#include "tests/unit/standin_mof/RepositoryFixture.h"

using namespace standin;

namespace
{
struct DefaultCase
{
    const char* name;
    const char* type;
    const char* text;
    const wchar_t* read; // as a text
};

class MofDefault : public Repository, public testing::WithParamInterface<DefaultCase>
{
};

std::wstring Show(const VARIANT& value)
{
    switch (value.vt)
    {
    case VT_BSTR:
        return value.bstrVal;
    case VT_I4:
        return std::to_wstring(value.lVal);
    case VT_BOOL:
        return value.boolVal ? L"true" : L"false";
    case VT_ARRAY | VT_BSTR:
    {
        std::wstring all;
        for (const std::wstring& item : sample::Strings(value.parray))
            all += item + L";";
        return all;
    }
    }
    return value.vt == VT_NULL ? L"null" : L"?";
}
} // namespace

TEST_P(MofDefault, IsRead)
{
    Compile(std::string("class A { ") + GetParam().type + " = " + GetParam().text + "; };");
    EXPECT_EQ(Show(Class(L"A")->FindProperty(L"P")->Default), GetParam().read);
}

INSTANTIATE_TEST_SUITE_P(
    Numbers, MofDefault,
    testing::Values(DefaultCase{"Zero", "sint32 P", "0", L"0"}, DefaultCase{"Plus", "sint32 P", "+7", L"7"},
                    DefaultCase{"Minus", "sint32 P", "-7", L"-7"},
                    DefaultCase{"Largest", "uint64 P", "18446744073709551615", L"18446744073709551615"},
                    DefaultCase{"Smallest", "sint64 P", "-9223372036854775808", L"-9223372036854775808"},
                    DefaultCase{"True", "boolean P", "True", L"true"},
                    DefaultCase{"False", "boolean P", "fAlSe", L"false"},
                    DefaultCase{"Null", "uint8 P", "NULL", L"null"}),
    NameOf<DefaultCase>);

INSTANTIATE_TEST_SUITE_P(
    Texts, MofDefault,
    testing::Values(DefaultCase{"Empty", "string P", R"("")", L""},
                    DefaultCase{"Plain", "string P", R"("a b")", L"a b"},
                    DefaultCase{"Concatenated", "string P", "\"a \" /* and */ \"b\"\n// or\n\"c\"", L"a bc"},
                    DefaultCase{"Escapes", "string P", R"("\b\t\n\f\r\"\'\\")", L"\b\t\n\f\r\"'\\"},
                    DefaultCase{"CommentInside", "string P", R"("//no /*comment*/")", L"//no /*comment*/"},
                    DefaultCase{"Utf8", "string P", "\"\xC3\xA4\xE2\x82\xAC\"", L"\x00e4\x20ac"},
                    DefaultCase{"List", "string P[]", R"({"1", "2" "3", ""})", L"1;23;;"},
                    DefaultCase{"EmptyList", "string P[]", "{}", L""}),
    NameOf<DefaultCase>);

TEST_F(Repository, NamesMayBeginLikeKeywords)
{
    Compile("class instanceX {}; class classic : instanceX { refuge reference; uint8 nullable = 1; uint8 "
            "ref; };");
    EXPECT_EQ(Class(L"classic")->FindProperty(L"reference")->Type, CIM_OBJECT);
    EXPECT_EQ(Class(L"classic")->FindProperty(L"ref")->Type, CIM_UINT8);
}

TEST_F(Repository, NothingButCommentsIsNothing)
{
    EXPECT_EQ(Refusal(""), "");
    EXPECT_EQ(Refusal("  /* a \n b */ // c"), "");
}

// Errors

namespace
{
struct ErrorCase
{
    const char* name;
    const char* text;
    const char* refusal;
};

class MofSyntaxError : public Repository, public testing::WithParamInterface<ErrorCase>
{
};
} // namespace

TEST_P(MofSyntaxError, TellsWhere)
{
    EXPECT_EQ(Refusal(GetParam().text), GetParam().refusal);
}

INSTANTIATE_TEST_SUITE_P(
    Places, MofSyntaxError,
    testing::Values(
        ErrorCase{"Garbage", "class A {};\n  what", "(2,3): expected a class, an instance or a #pragma"},
        ErrorCase{"NoSemicolon", "class A\n{\n  uint8 P\n};", "(4,1): expected \";\""},
        ErrorCase{"NoClassName", "class {};", "(1,7): expected a name"},
        ErrorCase{"NoSuperclass", "class A : {};", "(1,11): expected the name of the superclass"},
        ErrorCase{"NoBrace", "class A;", "(1,8): expected \"{\""},
        ErrorCase{"NoEnd", "class A { uint8 P;", "(1,19): expected a name"},
        ErrorCase{"NoValue", "class A { uint8 P = ; };", "(1,21): expected a value"},
        ErrorCase{"NoListItem", "class A { uint8 P[] = {1, }; };", "(1,27): expected a value"},
        ErrorCase{"OpenString", "class A { string P = \"abc\n\"; };",
                  "(1,26): expected the end of the string"},
        ErrorCase{"BadEscape", "class A { string P = \"a\\q\"; };", "(1,24): expected the end of the string"},
        ErrorCase{"OpenComment", "class A {};\n/* abc", "(2,1): a comment without an end"},
        ErrorCase{"OpenQualifier", "[Key(1 class A {};", "(1,8): expected \")\""},
        ErrorCase{"NoQualifier", "[] class A {};", "(1,2): expected a name"},
        ErrorCase{"NoFlavor", "[Key :] class A {};", "(1,7): expected a flavor"},
        ErrorCase{"NoAlias", "class A {}; instance of A as B {};", "(1,30): expected \"$\""},
        ErrorCase{"NoOf", "instance A {};", "(1,10): expected \"of\""},
        ErrorCase{"NoEquals", "class A { [Key] uint8 P; }; instance of A { P 5; };",
                  "(1,47): expected \"=\""},
        ErrorCase{"NumberAndLetters", "class A { uint8 P = 12x; };",
                  "(1,21): not a decimal number of 64 bits"},
        ErrorCase{"NumberTooLong", "class A { uint64 P = 18446744073709551616; };",
                  "(1,22): not a decimal number of 64 bits"},
        ErrorCase{"ParameterWithoutName", "class A { void M(uint8); };", "(1,23): expected a name"},
        ErrorCase{"Directive", "#define X", "(1,2): expected \"pragma\""}),
    NameOf<ErrorCase>);

// Whatever is cut off anywhere is refused or is a shorter text, and never read past its end.
TEST_F(Repository, EveryPrefixEndsWell)
{
    const std::string text = "#pragma namespace(\"\\\\\\\\.\\\\root\")\nclass C {}; class D {}; "
                             "[A{\"x\",\"y\"}: ToInstance] class B : C "
                             "{ [Key] string P = \"\\t\"; uint8 M([In] D ref E); };\n"
                             "instance of B as $F { P = \"a\" \"b\"; }; // end";
    size_t refused = 0;
    for (size_t length = 0; length <= text.size(); ++length)
        refused += Refusal(text.substr(0, length)).empty() ? 0 : 1;
    EXPECT_GT(refused, text.size() / 2);
    EXPECT_EQ(Refusal(text), "");
}
