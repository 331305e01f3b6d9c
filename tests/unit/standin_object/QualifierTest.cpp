// Qualifier sets of classes, instances, properties and methods.
#include "Common/src/com/WmiStatus.h"
#include "tests/unit/standin_object/SampleClass.h"

using namespace standin;

namespace
{
using Names = std::vector<std::wstring>;

Names NamesOf(IWbemQualifierSet& set, long flags = 0)
{
    CSafeArray names;
    EXPECT_EQ(set.GetNames(flags, names.Put()), S_OK);
    return sample::Strings(names.Get());
}

ComPtr<IWbemQualifierSet> SetOf(IWbemClassObject& object, const wchar_t* property = nullptr)
{
    ComPtr<IWbemQualifierSet> set;
    EXPECT_EQ(property ? object.GetPropertyQualifierSet(property, set.Put())
                       : object.GetQualifierSet(set.Put()),
              S_OK);
    return set;
}
} // namespace

TEST(Qualifiers, ReachAsFarAsTheirFlavorSays)
{
    const auto base = MakeClassObject(sample::Device());
    EXPECT_EQ(NamesOf(*SetOf(*base)), (Names{L"mine", L"down", L"everywhere"}));
    const auto derived = MakeClassObject(sample::Lamp());
    EXPECT_EQ(NamesOf(*SetOf(*derived)), (Names{L"down", L"everywhere"}));
    EXPECT_EQ(NamesOf(*SetOf(*derived, L"Name")), (Names{L"key", L"down", L"everywhere", L"CIMTYPE"}));
    const auto instance = MakeInstance(sample::Lamp());
    EXPECT_EQ(NamesOf(*SetOf(*instance)), (Names{L"everywhere"}));
    EXPECT_EQ(NamesOf(*SetOf(*instance, L"Name")), (Names{L"key", L"everywhere", L"CIMTYPE"}));
}

TEST(Qualifiers, TellTypeAndOrigin)
{
    const auto instance = MakeInstance(sample::Lamp());
    const auto set = SetOf(*instance, L"watts");
    CVariant value;
    LONG flavor = 0;
    ASSERT_EQ(set->Get(L"cimtype", 0, &value, &flavor), S_OK);
    EXPECT_STREQ(value.bstrVal, L"uint16");
    EXPECT_EQ(flavor & WBEM_FLAVOR_MASK_ORIGIN, WBEM_FLAVOR_ORIGIN_PROPAGATED);
    EXPECT_EQ(set->Get(L"key", 0, nullptr, nullptr), wmi::NotFound);
    EXPECT_EQ(set->Get(nullptr, 0, nullptr, nullptr), wmi::InvalidParameter);
    EXPECT_EQ(set->Get(L"key", 1, nullptr, nullptr), wmi::InvalidParameter);
}

TEST(Qualifiers, NoneOfSystemPropertiesAndUnknownOnes)
{
    const auto lamp = MakeInstance(sample::Lamp());
    ComPtr<IWbemQualifierSet> set;
    EXPECT_EQ(lamp->GetPropertyQualifierSet(L"__CLASS", set.Put()),
              static_cast<HRESULT>(WBEM_E_SYSTEM_PROPERTY));
    EXPECT_EQ(lamp->GetPropertyQualifierSet(L"Weight", set.Put()), wmi::NotFound);
    EXPECT_EQ(lamp->GetPropertyQualifierSet(nullptr, set.Put()), wmi::InvalidParameter);
}

TEST(Qualifiers, AreEnumerated)
{
    const auto derived = MakeClassObject(sample::Lamp());
    const auto set = SetOf(*derived, L"Name");
    CVariant note = CVariant::FromText(L"x");
    ASSERT_EQ(set->Put(L"note", &note, 0), S_OK);
    EXPECT_EQ(NamesOf(*set, WBEM_FLAG_LOCAL_ONLY), (Names{L"note"}));
    EXPECT_EQ(NamesOf(*set, WBEM_FLAG_PROPAGATED_ONLY), (Names{L"key", L"down", L"everywhere", L"CIMTYPE"}));
    EXPECT_EQ(set->Next(0, nullptr, nullptr, nullptr), static_cast<HRESULT>(WBEM_E_UNEXPECTED));
    ASSERT_EQ(set->BeginEnumeration(WBEM_FLAG_LOCAL_ONLY), S_OK);
    CBstr name;
    CVariant value;
    LONG flavor = -1;
    EXPECT_EQ(set->Next(0, name.Put(), &value, &flavor), S_OK);
    EXPECT_EQ(name.View(), L"note");
    EXPECT_STREQ(value.bstrVal, L"x");
    EXPECT_EQ(flavor, 0);
    EXPECT_EQ(set->Next(0, nullptr, nullptr, nullptr), WBEM_S_NO_MORE_DATA);
    EXPECT_EQ(set->EndEnumeration(), S_OK);
    EXPECT_EQ(set->BeginEnumeration(WBEM_FLAG_KEYS_ONLY), wmi::InvalidParameter);
}

TEST(Qualifiers, ChangesGoToTheObject)
{
    const auto made = MakeEmptyClass();
    sample::PutText(*made, L"__CLASS", L"Made");
    made->Put(L"Name", 0, nullptr, CIM_STRING);
    const auto set = SetOf(*made, L"Name");
    CVariant yes = CVariant::FromBool(true);
    EXPECT_EQ(set->Put(L"Key", &yes, WBEM_FLAVOR_FLAG_PROPAGATE_TO_INSTANCE), S_OK);
    EXPECT_EQ(sample::Names(*made, WBEM_FLAG_KEYS_ONLY), (Names{L"Name"}));
    EXPECT_EQ(SetOf(*made, L"Name")->Get(L"key", 0, nullptr, nullptr), S_OK);
    EXPECT_EQ(set->Delete(L"key"), S_OK);
    EXPECT_EQ(set->Delete(L"key"), wmi::NotFound);
    EXPECT_TRUE(sample::Names(*made, WBEM_FLAG_KEYS_ONLY).empty());
}

TEST(Qualifiers, OfAnInstanceChangeOnlyThere)
{
    const auto definition = sample::Lamp();
    const auto one = MakeInstance(definition);
    const auto other = MakeInstance(definition);
    CVariant note = CVariant::FromText(L"x");
    ASSERT_EQ(SetOf(*one)->Put(L"note", &note, 0), S_OK);
    EXPECT_EQ(NamesOf(*SetOf(*one), WBEM_FLAG_LOCAL_ONLY), (Names{L"note"}));
    EXPECT_TRUE(NamesOf(*SetOf(*other), WBEM_FLAG_LOCAL_ONLY).empty());
    EXPECT_EQ(SetOf(*one)->Delete(L"everywhere"), static_cast<HRESULT>(WBEM_E_PROPAGATED_QUALIFIER));
}

TEST(Qualifiers, RefuseWhatTheyCannotBe)
{
    const auto lamp = MakeClassObject(sample::Lamp());
    const auto set = SetOf(*lamp, L"Name");
    CVariant no = CVariant::FromBool(false);
    EXPECT_EQ(set->Put(L"key", &no, 0), static_cast<HRESULT>(WBEM_E_OVERRIDE_NOT_ALLOWED));
    CVariant byte = CVariant::FromByte(1);
    EXPECT_EQ(set->Put(L"note", &byte, 0), static_cast<HRESULT>(WBEM_E_INVALID_QUALIFIER_TYPE));
    EXPECT_EQ(set->Put(L"note", nullptr, 0), wmi::InvalidParameter);
    EXPECT_EQ(set->Put(L"", &no, 0), wmi::InvalidParameter);
    EXPECT_EQ(set->Put(L"note", &no, WBEM_FLAVOR_ORIGIN_PROPAGATED), wmi::InvalidParameter);
}

// A set keeps its object, and notices when its property goes.
TEST(Qualifiers, OutliveTheCallersReference)
{
    auto made = MakeEmptyClass();
    sample::PutText(*made, L"__CLASS", L"Made");
    made->Put(L"Name", 0, nullptr, CIM_STRING);
    const auto set = SetOf(*made, L"Name");
    made->Delete(L"Name");
    made.Reset();
    CVariant yes = CVariant::FromBool(true);
    EXPECT_EQ(set->Get(L"CIMTYPE", 0, nullptr, nullptr), wmi::NotFound);
    EXPECT_EQ(set->Put(L"key", &yes, 0), wmi::NotFound);
    EXPECT_TRUE(NamesOf(*set).empty());
}
