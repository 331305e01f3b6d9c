// Which values a property of which type takes, and how they come back.
#include "Common/src/com/WmiStatus.h"
#include "standin/object/CimType.h"
#include "tests/support/CaseName.h"
#include "tests/unit/standin_object/SampleClass.h"

using namespace standin;

namespace
{
CVariant Of(VARTYPE type, LONGLONG bits)
{
    CVariant v;
    v.vt = type;
    v.llVal = bits;
    return v;
}

// Every kind of value that a caller may come with. Texts are marked with a leading quote.
struct CGiven
{
    VARTYPE Type;
    double Number;
    const wchar_t* Text;
};

CVariant Make(const CGiven& given)
{
    switch (given.Type)
    {
    case VT_BSTR:
        return CVariant::FromText(given.Text);
    case VT_BOOL:
        return CVariant::FromBool(given.Number != 0);
    case VT_R8:
    case VT_DATE:
    {
        CVariant v;
        v.vt = given.Type;
        v.dblVal = given.Number;
        return v;
    }
    }
    return Of(given.Type, static_cast<LONGLONG>(given.Number));
}

// How a stored value reads, with its VARIANT type.
std::wstring Show(const VARIANT& v)
{
    switch (v.vt)
    {
    case VT_NULL:
        return L"null";
    case VT_BSTR:
        return L"BSTR " + std::wstring(v.bstrVal);
    case VT_BOOL:
        return v.boolVal == VARIANT_TRUE    ? L"BOOL TRUE"
               : v.boolVal == VARIANT_FALSE ? L"BOOL FALSE"
                                            : L"BOOL ?";
    case VT_UI1:
        return L"UI1 " + std::to_wstring(v.bVal);
    case VT_I2:
        return L"I2 " + std::to_wstring(v.iVal);
    case VT_I4:
        return L"I4 " + std::to_wstring(v.lVal);
    }
    return L"type " + std::to_wstring(v.vt);
}

struct ValueCase
{
    const char* name;
    CIMTYPE type;
    CGiven given;
    const wchar_t* stored; // null: refused
};
} // namespace

class PutValue : public testing::TestWithParam<ValueCase>
{
};

TEST_P(PutValue, IsTakenOrRefused)
{
    const ValueCase& c = GetParam();
    const auto object = MakeInstance(sample::Class(L"C", {sample::Property(L"P", c.type)}));
    CVariant given = Make(c.given);
    const HRESULT hr = object->Put(L"P", 0, &given, 0);
    CVariant read;
    CIMTYPE type = 0;
    ASSERT_EQ(object->Get(L"P", 0, &read, &type, nullptr), S_OK);
    EXPECT_EQ(type, c.type);
    EXPECT_EQ(hr, c.stored ? S_OK : wmi::TypeMismatch);
    EXPECT_EQ(Show(read), c.stored ? c.stored : L"null");
}

INSTANTIATE_TEST_SUITE_P(
    Sint8, PutValue,
    testing::Values(ValueCase{"Sint8FromI2", CIM_SINT8, {VT_I2, -128, nullptr}, L"I2 -128"},
                    ValueCase{"Sint8FromI1", CIM_SINT8, {VT_I1, -1, nullptr}, nullptr},
                    ValueCase{"Sint8FromUi1", CIM_SINT8, {VT_UI1, 127, nullptr}, L"I2 127"},
                    ValueCase{"Sint8FromI4", CIM_SINT8, {VT_I4, 5, nullptr}, L"I2 5"},
                    ValueCase{"Sint8TooLarge", CIM_SINT8, {VT_I2, 128, nullptr}, nullptr},
                    ValueCase{"Sint8TooSmall", CIM_SINT8, {VT_I2, -129, nullptr}, nullptr},
                    ValueCase{"Sint8FromText", CIM_SINT8, {VT_BSTR, 0, L"1"}, nullptr}),
    NameOf<ValueCase>);

INSTANTIATE_TEST_SUITE_P(
    Uint8, PutValue,
    testing::Values(ValueCase{"Uint8FromUi1", CIM_UINT8, {VT_UI1, 255, nullptr}, L"UI1 255"},
                    ValueCase{"Uint8FromI2", CIM_UINT8, {VT_I2, 50, nullptr}, L"UI1 50"},
                    ValueCase{"Uint8FromI4", CIM_UINT8, {VT_I4, 0, nullptr}, L"UI1 0"},
                    ValueCase{"Uint8TooLarge", CIM_UINT8, {VT_I4, 256, nullptr}, nullptr},
                    ValueCase{"Uint8Negative", CIM_UINT8, {VT_I2, -1, nullptr}, nullptr},
                    ValueCase{"Uint8FromBool", CIM_UINT8, {VT_BOOL, 1, nullptr}, nullptr},
                    ValueCase{"Uint8FromReal", CIM_UINT8, {VT_R8, 1, nullptr}, nullptr},
                    ValueCase{"Uint8FromText", CIM_UINT8, {VT_BSTR, 0, L"1"}, nullptr}),
    NameOf<ValueCase>);

INSTANTIATE_TEST_SUITE_P(
    Int16, PutValue,
    testing::Values(ValueCase{"Sint16FromI2", CIM_SINT16, {VT_I2, -32768, nullptr}, L"I2 -32768"},
                    ValueCase{"Sint16FromI4", CIM_SINT16, {VT_I4, 32767, nullptr}, L"I2 32767"},
                    ValueCase{"Sint16TooLarge", CIM_SINT16, {VT_I4, 32768, nullptr}, nullptr},
                    ValueCase{"Uint16FromI4", CIM_UINT16, {VT_I4, 65535, nullptr}, L"I4 65535"},
                    ValueCase{"Uint16FromI2", CIM_UINT16, {VT_I2, 7, nullptr}, L"I4 7"},
                    ValueCase{"Uint16FromUi2", CIM_UINT16, {VT_UI2, 65535, nullptr}, nullptr},
                    ValueCase{"Uint16FromUi1", CIM_UINT16, {VT_UI1, 3, nullptr}, L"I4 3"},
                    ValueCase{"Uint16TooLarge", CIM_UINT16, {VT_I4, 65536, nullptr}, nullptr},
                    ValueCase{"Uint16Negative", CIM_UINT16, {VT_I4, -1, nullptr}, nullptr},
                    ValueCase{"Uint16FromText", CIM_UINT16, {VT_BSTR, 0, L"1"}, nullptr}),
    NameOf<ValueCase>);

INSTANTIATE_TEST_SUITE_P(
    Int32, PutValue,
    testing::Values(ValueCase{"Sint32FromI4", CIM_SINT32, {VT_I4, -5, nullptr}, L"I4 -5"},
                    ValueCase{"Sint32FromUi4", CIM_SINT32, {VT_UI4, 5, nullptr}, nullptr},
                    ValueCase{"Sint32FromInt", CIM_SINT32, {VT_INT, 5, nullptr}, nullptr},
                    ValueCase{"Uint32FromI4", CIM_UINT32, {VT_I4, 5, nullptr}, L"I4 5"},
                    ValueCase{"Uint32BitsOfI4", CIM_UINT32, {VT_I4, -1, nullptr}, L"I4 -1"},
                    ValueCase{"Uint32FromUi4", CIM_UINT32, {VT_UI4, 4294967295.0, nullptr}, nullptr},
                    ValueCase{"Uint32NegativeI2", CIM_UINT32, {VT_I2, -1, nullptr}, nullptr},
                    ValueCase{"Uint32FromI8", CIM_UINT32, {VT_I8, 5, nullptr}, nullptr},
                    ValueCase{"Uint32FromUi8", CIM_UINT32, {VT_UI8, 5, nullptr}, nullptr},
                    ValueCase{"Uint32FromText", CIM_UINT32, {VT_BSTR, 0, L"5"}, nullptr},
                    ValueCase{"Uint32FromBool", CIM_UINT32, {VT_BOOL, 1, nullptr}, nullptr},
                    ValueCase{"Uint32FromDate", CIM_UINT32, {VT_DATE, 1, nullptr}, nullptr}),
    NameOf<ValueCase>);

INSTANTIATE_TEST_SUITE_P(
    Int64, PutValue,
    testing::Values(
        ValueCase{"Sint64FromText",
                  CIM_SINT64,
                  {VT_BSTR, 0, L"-9223372036854775808"},
                  L"BSTR -9223372036854775808"},
        ValueCase{"Sint64FromI4", CIM_SINT64, {VT_I4, -3, nullptr}, L"BSTR -3"},
        ValueCase{"Sint64TextTooLarge", CIM_SINT64, {VT_BSTR, 0, L"9223372036854775808"}, nullptr},
        ValueCase{"Uint64FromText",
                  CIM_UINT64,
                  {VT_BSTR, 0, L"18446744073709551615"},
                  L"BSTR 18446744073709551615"},
        ValueCase{"Uint64LeadingZeros", CIM_UINT64, {VT_BSTR, 0, L"007"}, L"BSTR 7"},
        ValueCase{"Uint64FromI4", CIM_UINT64, {VT_I4, 9, nullptr}, L"BSTR 9"},
        ValueCase{"Uint64Plus", CIM_UINT64, {VT_BSTR, 0, L"+5"}, L"BSTR 5"},
        ValueCase{"Sint64PlusMinus", CIM_SINT64, {VT_BSTR, 0, L"+-5"}, nullptr},
        ValueCase{"Uint64Negative", CIM_UINT64, {VT_BSTR, 0, L"-1"}, nullptr},
        ValueCase{"Uint64TextTooLarge", CIM_UINT64, {VT_BSTR, 0, L"18446744073709551616"}, nullptr},
        ValueCase{"Uint64NoNumber", CIM_UINT64, {VT_BSTR, 0, L"many"}, nullptr},
        ValueCase{"Uint64HalfANumber", CIM_UINT64, {VT_BSTR, 0, L"12 apples"}, nullptr},
        ValueCase{"Uint64OtherDigits", CIM_UINT64, {VT_BSTR, 0, L"\x0661"}, nullptr},
        ValueCase{"Uint64EmptyText", CIM_UINT64, {VT_BSTR, 0, L""}, nullptr},
        ValueCase{"Sint64FromI8", CIM_SINT64, {VT_I8, 5, nullptr}, nullptr},
        ValueCase{"Uint64FromUi8", CIM_UINT64, {VT_UI8, 5, nullptr}, nullptr},
        ValueCase{"Uint64FromReal", CIM_UINT64, {VT_R8, 1, nullptr}, nullptr}),
    NameOf<ValueCase>);

INSTANTIATE_TEST_SUITE_P(
    Others, PutValue,
    testing::Values(ValueCase{"BooleanTrue", CIM_BOOLEAN, {VT_BOOL, 1, nullptr}, L"BOOL TRUE"},
                    ValueCase{"BooleanFalse", CIM_BOOLEAN, {VT_BOOL, 0, nullptr}, L"BOOL FALSE"},
                    ValueCase{"BooleanFromI4", CIM_BOOLEAN, {VT_I4, 1, nullptr}, nullptr},
                    ValueCase{"BooleanFromText", CIM_BOOLEAN, {VT_BSTR, 0, L"TRUE"}, nullptr},
                    ValueCase{"String", CIM_STRING, {VT_BSTR, 0, L"a\"b"}, L"BSTR a\"b"},
                    ValueCase{"StringEmpty", CIM_STRING, {VT_BSTR, 0, L""}, L"BSTR "},
                    ValueCase{"StringFromI4", CIM_STRING, {VT_I4, 1, nullptr}, nullptr},
                    ValueCase{"StringFromBool", CIM_STRING, {VT_BOOL, 1, nullptr}, nullptr},
                    ValueCase{"StringFromError", CIM_STRING, {VT_ERROR, 1, nullptr}, nullptr},
                    ValueCase{"Datetime",
                              CIM_DATETIME,
                              {VT_BSTR, 0, L"20240101000000.000000-300"},
                              L"BSTR 20240101000000.000000-300"},
                    ValueCase{"DatetimeFromDate", CIM_DATETIME, {VT_DATE, 1, nullptr}, nullptr},
                    ValueCase{"Reference", CIM_REFERENCE, {VT_BSTR, 0, L"A.B=\"c\""}, L"BSTR A.B=\"c\""},
                    ValueCase{"ReferenceFromI4", CIM_REFERENCE, {VT_I4, 1, nullptr}, nullptr},
                    ValueCase{"ObjectFromText", CIM_OBJECT, {VT_BSTR, 0, L"A"}, nullptr},
                    ValueCase{"Null", CIM_UINT16, {VT_NULL, 0, nullptr}, L"null"},
                    ValueCase{"Empty", CIM_UINT16, {VT_EMPTY, 0, nullptr}, nullptr},
                    ValueCase{"ArrayFromScalar", CIM_UINT16 | CIM_FLAG_ARRAY, {VT_I4, 1, nullptr}, nullptr},
                    ValueCase{"ArrayFromNull", CIM_STRING | CIM_FLAG_ARRAY, {VT_NULL, 0, nullptr}, L"null"}),
    NameOf<ValueCase>);

// Forms of a VARIANT

TEST(PutForms, ByReferenceIsFollowed)
{
    const auto object = MakeInstance(sample::Lamp());
    LONG number = 12;
    CVariant given;
    given.vt = VT_BYREF | VT_I4;
    given.plVal = &number;
    EXPECT_EQ(object->Put(L"Watts", 0, &given, 0), S_OK);
    CVariant read;
    object->Get(L"Watts", 0, &read, nullptr, nullptr);
    EXPECT_EQ(read.lVal, 12);
}

TEST(PutForms, ANullBstrIsAnEmptyText)
{
    const auto object = MakeInstance(sample::Lamp());
    CVariant given = CVariant::FromBstr(nullptr);
    EXPECT_EQ(object->Put(L"Name", 0, &given, 0), S_OK);
    EXPECT_EQ(sample::Text(*object, L"Name"), L"");
}

TEST(PutForms, ATextKeepsInnerTerminators)
{
    const auto object = MakeInstance(sample::Lamp());
    CVariant given = CVariant::FromBstr(SysAllocStringLen(L"a\0b", 3));
    EXPECT_EQ(object->Put(L"Name", 0, &given, 0), S_OK);
    CVariant read;
    object->Get(L"Name", 0, &read, nullptr, nullptr);
    EXPECT_EQ(SysStringLen(read.bstrVal), 3u);
}

TEST(PutForms, TheTypeMustBeThePropertysOwn)
{
    const auto object = MakeInstance(sample::Lamp());
    CVariant given = CVariant::FromLong(1);
    EXPECT_EQ(object->Put(L"Watts", 0, &given, CIM_UINT16), S_OK);
    EXPECT_EQ(object->Put(L"Watts", 0, &given, CIM_UINT32), wmi::TypeMismatch);
}
