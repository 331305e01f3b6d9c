// Qualifiers of properties, and how far they reach.
#include "Common/src/com/WmiStatus.h"
#include "tests/unit/standin_object/SampleClass.h"

using namespace standin;

namespace
{
using Names = std::vector<std::wstring>;

Names NamesOf(const CQualifiers& qualifiers)
{
    Names names;
    for (const CQualifier& qualifier : qualifiers.All())
        names.push_back(qualifier.Name);
    return names;
}
} // namespace

TEST(Qualifiers, ReachAsFarAsTheirFlavorSays)
{
    EXPECT_EQ(NamesOf(sample::Device()->Qualifiers), (Names{L"mine", L"down", L"everywhere"}));
    const ClassDefinition derived = sample::Lamp();
    EXPECT_EQ(NamesOf(derived->Qualifiers), (Names{L"down", L"everywhere"}));
    EXPECT_EQ(NamesOf(derived->FindProperty(L"Name")->Qualifiers),
              (Names{L"key", L"down", L"everywhere", L"CIMTYPE"}));
    const ClassDefinition instances = derived->ForInstances();
    EXPECT_EQ(NamesOf(instances->Qualifiers), (Names{L"everywhere"}));
    EXPECT_EQ(NamesOf(instances->FindProperty(L"Name")->Qualifiers),
              (Names{L"key", L"everywhere", L"CIMTYPE"}));
}

TEST(Qualifiers, TellTypeAndOrigin)
{
    const auto instance = MakeInstance(sample::Lamp());
    ComPtr<IWbemQualifierSet> set;
    ASSERT_EQ(instance->GetPropertyQualifierSet(L"watts", set.Put()), S_OK);
    CVariant value;
    LONG flavor = 0;
    ASSERT_EQ(set->Get(L"cimtype", 0, &value, &flavor), S_OK);
    EXPECT_STREQ(value.bstrVal, L"uint16");
    EXPECT_EQ(flavor & WBEM_FLAVOR_MASK_ORIGIN, WBEM_FLAVOR_ORIGIN_PROPAGATED);
    EXPECT_EQ(set->Get(L"key", 0, nullptr, nullptr), wmi::NotFound);
    EXPECT_EQ(set->Get(nullptr, 0, nullptr, nullptr), wmi::InvalidParameter);
    EXPECT_EQ(set->Get(L"key", 1, nullptr, nullptr), wmi::InvalidParameter);
}

TEST(Qualifiers, OfTheClassAreThoseThatReachTheObject)
{
    ComPtr<IWbemQualifierSet> set;
    ASSERT_EQ(MakeClassObject(sample::Device())->GetQualifierSet(set.Put()), S_OK);
    EXPECT_EQ(set->Get(L"mine", 0, nullptr, nullptr), S_OK);
    ASSERT_EQ(MakeInstance(sample::Lamp())->GetQualifierSet(set.Put()), S_OK);
    EXPECT_EQ(set->Get(L"everywhere", 0, nullptr, nullptr), S_OK);
    EXPECT_EQ(set->Get(L"down", 0, nullptr, nullptr), wmi::NotFound);
    EXPECT_EQ(MakeInstance(sample::Lamp())->GetQualifierSet(nullptr), wmi::InvalidParameter);
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

TEST(Qualifiers, OutliveTheObject)
{
    auto lamp = MakeInstance(sample::Lamp());
    ComPtr<IWbemQualifierSet> set;
    ASSERT_EQ(lamp->GetPropertyQualifierSet(L"Name", set.Put()), S_OK);
    lamp.Reset();
    EXPECT_EQ(set->Get(L"key", 0, nullptr, nullptr), S_OK);
}
