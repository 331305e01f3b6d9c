#include "CDM/src/ZebValue.h"

#include "Common/src/com/SafeArray.h"
#include "Common/src/com/Variant.h"
#include "tests/support/CaseName.h"

#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <wbemcli.h>

namespace
{
constexpr long kSint64Array = 0x2014;
constexpr long kUint64Array = 0x2015;

template <class T>
CVariant Of(VARTYPE type, T value)
{
    CVariant v;
    static_assert(sizeof(T) <= sizeof(v.llVal));
    std::memcpy(&v.llVal, &value, sizeof(value));
    v.vt = type;
    return v;
}

CVariant Text(const wchar_t* text)
{
    return CVariant::FromBstr(SysAllocString(text));
}

template <class T>
CVariant ArrayOf(VARTYPE element, const std::vector<T>& items, LONG lower = 0)
{
    SAFEARRAYBOUND bound = {static_cast<ULONG>(items.size()), lower};
    SAFEARRAY* array = SafeArrayCreate(element, 1, &bound);
    for (LONG i = 0; i < static_cast<LONG>(items.size()); ++i)
    {
        LONG index = lower + i;
        T item = items[static_cast<size_t>(i)];
        SafeArrayPutElement(array, &index, &item);
    }
    return CVariant::FromArray(array, element);
}

// A descriptor that came damaged from somewhere: its elements do not exist.
CVariant ArrayWithoutData(ULONG elements, LONG lower)
{
    SAFEARRAY* array = nullptr;
    if (FAILED(SafeArrayAllocDescriptorEx(VT_I4, 1, &array)))
        return {};
    array->cbElements = sizeof(LONG);
    array->rgsabound[0] = {elements, lower};
    return CVariant::FromArray(array, VT_I4);
}

// A null pointer gives a null element.
CVariant TextArray(const std::vector<const wchar_t*>& texts)
{
    SAFEARRAY* array = SafeArrayCreateVector(VT_BSTR, 0, static_cast<ULONG>(texts.size()));
    for (LONG i = 0; i < static_cast<LONG>(texts.size()); ++i)
        if (texts[static_cast<size_t>(i)])
        {
            const CBstr text(texts[static_cast<size_t>(i)]);
            SafeArrayPutElement(array, &i, text.Get());
        }
    return CVariant::FromArray(array, VT_BSTR);
}

struct Case
{
    const char* name;
    std::function<CVariant()> value;
    long cimType;
    const char* text;
};

class ValueTest : public testing::TestWithParam<Case>
{
};

TEST_P(ValueTest, HasItsText)
{
    EXPECT_EQ(GetParam().text, ZebValueToString(GetParam().value(), GetParam().cimType));
}

INSTANTIATE_TEST_SUITE_P(
    Scalars, ValueTest,
    testing::Values(
        Case{"Empty", [] { return Of(VT_EMPTY, 0); }, 0, "<empty>"},
        Case{"Null", [] { return CVariant::Null(); }, CIM_STRING, "<null>"},
        Case{"I2Negative", [] { return Of<SHORT>(VT_I2, -1); }, CIM_SINT16, "I2 -1 (0xFFFF)"},
        Case{"I2", [] { return Of<SHORT>(VT_I2, 300); }, CIM_SINT16, "I2 300 (0x12C)"},
        Case{"I4Negative", [] { return Of<LONG>(VT_I4, -1); }, CIM_SINT32, "I4 -1 (0xFFFFFFFF)"},
        Case{"I4", [] { return Of<LONG>(VT_I4, 255); }, CIM_UINT32, "I4 255 (0xFF)"},
        Case{"R4", [] { return Of<float>(VT_R4, 0.5f); }, CIM_REAL32, "R4     0.5000"},
        Case{"R8", [] { return Of<double>(VT_R8, 2.5); }, CIM_REAL64, "R8     2.5000"},
        Case{"R8Negative", [] { return Of<double>(VT_R8, -123456.78901); }, CIM_REAL64, "R8 -123456.7890"},
        Case{"BoolFalse", [] { return CVariant::FromBool(false); }, CIM_BOOLEAN, "FALSE"},
        Case{"BoolTrue", [] { return CVariant::FromBool(true); }, CIM_BOOLEAN, "TRUE"},
        Case{"BoolOne", [] { return Of<SHORT>(VT_BOOL, 1); }, CIM_BOOLEAN, "TRUE"},
        Case{"I1Small", [] { return Of<char>(VT_I1, 31); }, CIM_SINT8, "I2 31 (0x1F)"},
        Case{"I1Negative", [] { return Of<signed char>(VT_I1, -1); }, CIM_SINT8, "I2 -1 (0xFFFF)"},
        Case{"I1Printable", [] { return Of<char>(VT_I1, 65); }, CIM_SINT8, "I2 'A' (65, 0x41)"},
        Case{"I1Blank", [] { return Of<char>(VT_I1, 32); }, CIM_SINT8, "I2 ' ' (32, 0x20)"},
        Case{"UI1Small", [] { return Of<BYTE>(VT_UI1, 10); }, CIM_UINT8, "UI1 10 (0xA)"},
        Case{"UI1Zero", [] { return Of<BYTE>(VT_UI1, 0); }, CIM_UINT8, "UI1 0 (0x0)"},
        Case{"UI1Printable", [] { return Of<BYTE>(VT_UI1, 65); }, CIM_UINT8, "UI1 'A' (65, 0x41)"},
        Case{"UI1Largest", [] { return Of<BYTE>(VT_UI1, 255); }, CIM_UINT8, "UI1 '\xFF' (255, 0xFF)"},
        Case{"UI2", [] { return Of<USHORT>(VT_UI2, 65535); }, CIM_UINT16, "UI2 65535 (0xFFFF)"},
        Case{"UI4", [] { return Of<ULONG>(VT_UI4, 0xFFFFFFFF); }, CIM_UINT32, "I4 4294967295 (0xFFFFFFFF)"},
        Case{"Date", [] { return Of<double>(VT_DATE, 1.0); }, 0,
             "<ZebValueToString not implemented for type 7>"},
        Case{"Object", [] { return Of<void*>(VT_UNKNOWN, nullptr); }, CIM_OBJECT,
             "<ZebValueToString not implemented for type 13>"},
        Case{"ArrayOfAnotherType", [] { return ArrayOf<BYTE>(VT_UI1, {1}); }, 0x2011,
             "<ZebValueToString not implemented for type 8209>"}),
    NameOf<Case>);

INSTANTIATE_TEST_SUITE_P(
    Texts, ValueTest,
    testing::Values(Case{"Text", [] { return Text(L"a \"b\" \u00FC"); }, CIM_STRING, "BSTR \"a \"b\" \xFC\""},
                    Case{"OutsideTheCodePage", [] { return Text(L"\u4E2D"); }, CIM_STRING, "BSTR \"?\""},
                    Case{"EmptyText", [] { return Text(L""); }, CIM_STRING, "BSTR \"\""},
                    Case{"NullText", [] { return CVariant::FromBstr(nullptr); }, CIM_STRING, "BSTR \"\""},
                    Case{"DateTime", [] { return Text(L"20260102"); }, CIM_DATETIME, "BSTR \"20260102\""},
                    Case{"Sint64", [] { return Text(L"-98765"); }, CIM_SINT64, "BSTR SINT64 -98765"},
                    Case{"Sint64Least", [] { return Text(L"-9223372036854775808"); }, CIM_SINT64,
                         "BSTR SINT64 -9223372036854775808"},
                    Case{"Uint64", [] { return Text(L"98765"); }, CIM_UINT64, "BSTR UINT64 98765"},
                    Case{"Uint64Largest", [] { return Text(L"18446744073709551615"); }, CIM_UINT64,
                         "BSTR UINT64 18446744073709551615"},
                    Case{"Uint64NoNumber", [] { return Text(L"abc"); }, CIM_UINT64, "BSTR UINT64 0"},
                    Case{"Uint64Null", [] { return CVariant::FromBstr(nullptr); }, CIM_UINT64,
                         "BSTR UINT64 0"}),
    NameOf<Case>);

INSTANTIATE_TEST_SUITE_P(
    Arrays, ValueTest,
    testing::Values(
        Case{"I2",
             [] {
                 return ArrayOf<SHORT>(VT_I2, {1, -2});
             },
             0x2002, "ARRAY I2 1,-2"},
        Case{"I2Empty", [] { return ArrayOf<SHORT>(VT_I2, {}); }, 0x2002, "ARRAY I2 <empty array>"},
        Case{"I4",
             [] {
                 return ArrayOf<LONG>(VT_I4, {1, 2, 3});
             },
             0x2003, "ARRAY I4 1,2,3"},
        Case{"I4One", [] { return ArrayOf<LONG>(VT_I4, {-1}); }, 0x2003, "ARRAY I4 -1"},
        Case{"I4Empty", [] { return ArrayOf<LONG>(VT_I4, {}); }, 0x2003, "ARRAY I4 <empty array>"},
        Case{"I4FromFive",
             [] {
                 return ArrayOf<LONG>(VT_I4, {7, 8}, 5);
             },
             0x2003, "ARRAY I4 7,8"},
        Case{"I4EmptyFromFive", [] { return ArrayOf<LONG>(VT_I4, {}, 5); }, 0x2003, "ARRAY I4 <empty array>"},
        Case{"Sint64",
             [] {
                 return TextArray({L"1", L"-2"});
             },
             kSint64Array, "ARRAY BSTR SINT64 1,-2"},
        Case{"Uint64",
             [] {
                 return TextArray({L"1", L"18446744073709551615", nullptr});
             },
             kUint64Array, "ARRAY BSTR UINT64 1,18446744073709551615,0"},
        Case{"Sint64Empty", [] { return TextArray({}); }, kSint64Array, "ARRAY BSTR SINT64 <empty array>"},
        Case{"Uint64Empty", [] { return TextArray({}); }, kUint64Array, "ARRAY BSTR UINT64 <empty array>"},
        Case{"Text",
             [] {
                 return TextArray({L"a", L"b", L"c"});
             },
             0x2008, "ARRAY BSTR \"a\",\"b\",\"c\""},
        Case{"TextOne", [] { return TextArray({L"a"}); }, 0x2008, "ARRAY BSTR \"a\""},
        Case{"TextNull",
             [] {
                 return TextArray({L"a", nullptr, L"c"});
             },
             0x2008, "ARRAY BSTR \"a\",\"\",\"c\""},
        Case{"TextEmpty", [] { return TextArray({}); }, 0x2008, "ARRAY BSTR <empty array>"},
        Case{"TextOfScalarCimType", [] { return TextArray({L"1"}); }, CIM_SINT64, "ARRAY BSTR \"1\""},
        Case{"Missing", [] { return CVariant::FromArray(nullptr, VT_I4); }, 0x2003, "ARRAY I4 "},
        Case{"UpperBoundFarBelowTheLower", [] { return ArrayWithoutData(0xFFFFFFFB, 0); }, 0x2003,
             "ARRAY I4 "},
        Case{"UpperBoundTwoBelowTheLower", [] { return ArrayWithoutData(0xFFFFFFFF, 7); }, 0x2003,
             "ARRAY I4 "},
        Case{"BoundsThatSpanMoreThanANumber", [] { return ArrayWithoutData(0xFFFFFFFF, LONG_MIN); }, 0x2003,
             "ARRAY I4 "},
        Case{"ElementsThatAreNotThere", [] { return ArrayWithoutData(3, 0); }, 0x2003, "ARRAY I4 "},
        Case{"OfAnotherElementType",
             []
             {
                 CVariant v = ArrayOf<BYTE>(VT_UI1, {1, 2});
                 v.vt = VT_ARRAY | VT_BSTR;
                 return v;
             },
             0x2008, "ARRAY BSTR "},
        Case{"OfTwoDimensions",
             []
             {
                 SAFEARRAYBOUND bounds[2] = {{2, 0}, {2, 0}};
                 return CVariant::FromArray(SafeArrayCreate(VT_I4, 2, bounds), VT_I4);
             },
             0x2003, "ARRAY I4 "}),
    NameOf<Case>);
} // namespace
