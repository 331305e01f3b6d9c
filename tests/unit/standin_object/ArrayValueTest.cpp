// Arrays and embedded objects as values of properties.
#include "Common/src/com/WmiStatus.h"
#include "tests/unit/standin_object/SampleClass.h"

using namespace standin;

namespace
{
template <class T>
CVariant ArrayOf(VARTYPE type, std::initializer_list<T> values, LONG lower = 0)
{
    SAFEARRAYBOUND bound{static_cast<ULONG>(values.size()), lower};
    CSafeArray array(SafeArrayCreate(type, 1, &bound));
    {
        const CSafeArrayView<T> items(array.Get(), type);
        std::copy(values.begin(), values.end(), items.Items().begin());
    }
    return CVariant::FromArray(array.Detach(), type);
}

ComPtr<IWbemClassObject> WithArray(CIMTYPE element)
{
    return MakeInstance(sample::Class(L"C", {sample::Property(L"P", element | CIM_FLAG_ARRAY)}));
}
} // namespace

TEST(PutArray, Uint16TravelsAsI4)
{
    const auto object = WithArray(CIM_UINT16);
    CVariant given = ArrayOf<LONG>(VT_I4, {1, 65535, 0});
    ASSERT_EQ(object->Put(L"P", 0, &given, 0), S_OK);
    CVariant read;
    ASSERT_EQ(object->Get(L"P", 0, &read, nullptr, nullptr), S_OK);
    EXPECT_EQ(read.vt, VT_ARRAY | VT_I4);
    const CSafeArrayView<LONG> items(read.parray, VT_I4);
    EXPECT_EQ(std::vector<LONG>(items.Items().begin(), items.Items().end()),
              (std::vector<LONG>{1, 65535, 0}));
}

TEST(PutArray, OneElementOutOfRangeRefusesAll)
{
    const auto object = WithArray(CIM_UINT16);
    CVariant given = ArrayOf<LONG>(VT_I4, {1, 65536});
    EXPECT_EQ(object->Put(L"P", 0, &given, 0), wmi::TypeMismatch);
    EXPECT_EQ(sample::Text(*object, L"P"), L"<null>");
}

TEST(PutArray, EmptyStaysEmptyAndIsNotNull)
{
    const auto object = WithArray(CIM_STRING);
    CVariant given = ArrayOf<BSTR>(VT_BSTR, {});
    ASSERT_EQ(object->Put(L"P", 0, &given, 0), S_OK);
    CVariant read;
    ASSERT_EQ(object->Get(L"P", 0, &read, nullptr, nullptr), S_OK);
    EXPECT_EQ(read.vt, VT_ARRAY | VT_BSTR);
    EXPECT_TRUE(sample::Strings(read.parray).empty());
}

TEST(PutArray, BoundsBeginAtZeroAfterwards)
{
    const auto object = WithArray(CIM_UINT8);
    CVariant given = ArrayOf<LONG>(VT_I4, {7, 8}, 5);
    ASSERT_EQ(object->Put(L"P", 0, &given, 0), S_OK);
    CVariant read;
    ASSERT_EQ(object->Get(L"P", 0, &read, nullptr, nullptr), S_OK);
    EXPECT_EQ(read.vt, VT_ARRAY | VT_UI1);
    LONG lower = -1;
    SafeArrayGetLBound(read.parray, 1, &lower);
    EXPECT_EQ(lower, 0);
    EXPECT_EQ(CSafeArrayView<BYTE>(read.parray, VT_UI1).Items()[1], 8);
}

TEST(PutArray, ScriptsBringArraysOfVariants)
{
    const auto object = WithArray(CIM_STRING);
    CSafeArray array(SafeArrayCreateVector(VT_VARIANT, 0, 2));
    {
        const CSafeArrayView<VARIANT> items(array.Get(), VT_VARIANT);
        items.Items()[0].bstrVal = CBstr(L"a").Detach();
        items.Items()[0].vt = VT_BSTR;
        items.Items()[1].bstrVal = CBstr(L"b").Detach();
        items.Items()[1].vt = VT_BSTR;
    }
    CVariant given = CVariant::FromArray(array.Detach(), VT_VARIANT);
    ASSERT_EQ(object->Put(L"P", 0, &given, 0), S_OK);
    CVariant read;
    ASSERT_EQ(object->Get(L"P", 0, &read, nullptr, nullptr), S_OK);
    EXPECT_EQ(sample::Strings(read.parray), (std::vector<std::wstring>{L"a", L"b"}));
}

TEST(PutArray, OtherElementsAreRefused)
{
    const auto numbers = WithArray(CIM_UINT16);
    CVariant texts = ArrayOf<BSTR>(VT_BSTR, {nullptr});
    EXPECT_EQ(numbers->Put(L"P", 0, &texts, 0), wmi::TypeMismatch);
    const auto strings = WithArray(CIM_STRING);
    CVariant longs = ArrayOf<LONG>(VT_I4, {1});
    EXPECT_EQ(strings->Put(L"P", 0, &longs, 0), wmi::TypeMismatch);
}

TEST(PutArray, ElementsOfForeignSizeAreRefused)
{
    for (const VARTYPE type : {VT_DECIMAL, VT_CY, VT_DATE})
    {
        CVariant given = CVariant::FromArray(SafeArrayCreateVector(type, 0, 3), type);
        EXPECT_EQ(WithArray(CIM_UINT16)->Put(L"P", 0, &given, 0), wmi::TypeMismatch) << type;
    }
}

TEST(PutArray, TwoDimensionsAreRefused)
{
    SAFEARRAYBOUND bounds[] = {{2, 0}, {2, 0}};
    CVariant given = CVariant::FromArray(SafeArrayCreate(VT_I4, 2, bounds), VT_I4);
    EXPECT_EQ(WithArray(CIM_UINT16)->Put(L"P", 0, &given, 0), wmi::TypeMismatch);
}

TEST(PutArray, AScalarPropertyTakesNone)
{
    const auto object = MakeInstance(sample::Lamp());
    CVariant given = ArrayOf<LONG>(VT_I4, {1});
    EXPECT_EQ(object->Put(L"Watts", 0, &given, 0), wmi::TypeMismatch);
}

// Embedded objects

TEST(EmbeddedObject, IsCopiedInAndOut)
{
    const auto object = MakeInstance(sample::Lamp());
    const auto inner = MakeInstance(sample::Device());
    sample::PutText(*inner, L"Name", L"before");
    CVariant given;
    given.vt = VT_UNKNOWN;
    given.punkVal = inner.Copy();
    ASSERT_EQ(object->Put(L"Inner", 0, &given, 0), S_OK);
    sample::PutText(*inner, L"Name", L"after");
    CVariant read;
    ASSERT_EQ(object->Get(L"Inner", 0, &read, nullptr, nullptr), S_OK);
    ASSERT_EQ(read.vt, VT_UNKNOWN);
    ComPtr<IWbemClassObject> copy;
    ASSERT_EQ(read.punkVal->QueryInterface(IID_IWbemClassObject, copy.PutVoid()), S_OK);
    EXPECT_EQ(sample::Text(*copy, L"Name"), L"before");
    sample::PutText(*copy, L"Name", L"changed");
    ComPtr<IWbemClassObject> other;
    ASSERT_EQ(object->Clone(other.Put()), S_OK);
    EXPECT_EQ(object->CompareTo(0, other.Get()), WBEM_S_SAME);
    other->Put(L"Inner", 0, &read, 0);
    EXPECT_EQ(object->CompareTo(0, other.Get()), WBEM_S_DIFFERENT);
    CVariant again;
    object->Get(L"Inner", 0, &again, nullptr, nullptr);
    ComPtr<IWbemClassObject> second;
    again.punkVal->QueryInterface(IID_IWbemClassObject, second.PutVoid());
    EXPECT_EQ(sample::Text(*second, L"Name"), L"before");
}

TEST(EmbeddedObject, OtherInterfacesAreRefused)
{
    const auto object = MakeInstance(sample::Lamp());
    CVariant given;
    given.vt = VT_UNKNOWN;
    given.punkVal = MakeContext().Detach();
    EXPECT_EQ(object->Put(L"Inner", 0, &given, 0), wmi::TypeMismatch);
}

TEST(EmbeddedObject, MayBeTheObjectItself)
{
    for (const auto& object : {MakeInstance(sample::Lamp()), MakeClassObject(sample::Lamp())})
    {
        CVariant given;
        given.vt = VT_UNKNOWN;
        given.punkVal = object.Copy();
        EXPECT_EQ(object->Put(L"Inner", 0, &given, 0), S_OK);
        EXPECT_EQ(object->Put(L"Inner", 0, &given, 0), S_OK);
        CVariant read;
        EXPECT_EQ(object->Get(L"Inner", 0, &read, nullptr, nullptr), S_OK);
        EXPECT_NE(read.punkVal, given.punkVal);
    }
}
