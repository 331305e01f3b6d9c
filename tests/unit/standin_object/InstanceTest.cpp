// Instances: spawning, defaults, system properties, cloning, copying into another definition.
#include "Common/src/com/ComObject.h"
#include "Common/src/com/WmiStatus.h"
#include "tests/unit/standin_object/SampleClass.h"

using namespace standin;
using sample::PutLong;
using sample::PutText;
using sample::Text;

TEST(Instance, HoldsWhatIsPut)
{
    const auto lamp = MakeInstance(sample::Lamp());
    EXPECT_EQ(PutText(*lamp, L"nAME", L"desk"), S_OK);
    EXPECT_EQ(Text(*lamp, L"Name"), L"desk");
    EXPECT_EQ(PutLong(*lamp, L"Watts", 40), S_OK);
    CVariant read;
    CIMTYPE type = 0;
    LONG flavor = -1;
    EXPECT_EQ(lamp->Get(L"Watts", 0, &read, &type, &flavor), S_OK);
    EXPECT_EQ(read.vt, VT_I4);
    EXPECT_EQ(read.lVal, 40);
    EXPECT_EQ(type, CIM_UINT16);
    EXPECT_EQ(flavor, WBEM_FLAVOR_ORIGIN_LOCAL);
}

TEST(Instance, RefusesUnknownPropertiesAndBadArguments)
{
    const auto lamp = MakeInstance(sample::Lamp());
    CVariant value = CVariant::FromLong(1);
    EXPECT_EQ(PutText(*lamp, L"Weight", L"1"), wmi::NotFound);
    EXPECT_EQ(lamp->Get(L"Weight", 0, nullptr, nullptr, nullptr), wmi::NotFound);
    EXPECT_EQ(lamp->Get(nullptr, 0, nullptr, nullptr, nullptr), wmi::InvalidParameter);
    EXPECT_EQ(lamp->Get(L"Watts", 1, nullptr, nullptr, nullptr), wmi::InvalidParameter);
    EXPECT_EQ(lamp->Put(nullptr, 0, &value, 0), wmi::InvalidParameter);
    EXPECT_EQ(lamp->Put(L"Watts", 1, &value, 0), wmi::InvalidParameter);
    EXPECT_EQ(PutText(*lamp, L"__CLASS", L"Other"), static_cast<HRESULT>(WBEM_E_SYSTEM_PROPERTY));
}

TEST(Instance, TakesDefaultsFromItsClass)
{
    const auto lamp = MakeInstance(sample::Lamp());
    LONG flavor = -1;
    EXPECT_EQ(Text(*lamp, L"Status"), L"OK");
    lamp->Get(L"Status", 0, nullptr, nullptr, &flavor);
    EXPECT_EQ(flavor, WBEM_FLAVOR_ORIGIN_PROPAGATED);
    EXPECT_EQ(lamp->Put(L"Status", 0, nullptr, 0), S_OK);
    EXPECT_EQ(Text(*lamp, L"Status"), L"<null>");
}

// System properties

TEST(SystemProperties, OfAnInstance)
{
    const auto lamp = MakeInstance(sample::Lamp());
    EXPECT_EQ(Text(*lamp, L"__CLASS"), L"Lamp");
    EXPECT_EQ(Text(*lamp, L"__SUPERCLASS"), L"Device");
    EXPECT_EQ(Text(*lamp, L"__DYNASTY"), L"Device");
    EXPECT_EQ(Text(*lamp, L"__SERVER"), L"<null>");
    EXPECT_EQ(Text(*lamp, L"__NAMESPACE"), L"<null>");
    EXPECT_EQ(Text(*lamp, L"__RELPATH"), L"<null>");
    CVariant genus;
    CVariant count;
    CVariant derivation;
    LONG flavor = 0;
    CIMTYPE type = 0;
    lamp->Get(L"__genus", 0, &genus, &type, &flavor);
    EXPECT_EQ(genus.lVal, WBEM_GENUS_INSTANCE);
    EXPECT_EQ(type, CIM_SINT32);
    EXPECT_EQ(flavor, WBEM_FLAVOR_ORIGIN_SYSTEM);
    lamp->Get(L"__PROPERTY_COUNT", 0, &count, nullptr, nullptr);
    EXPECT_EQ(count.lVal, 7);
    lamp->Get(L"__DERIVATION", 0, &derivation, nullptr, nullptr);
    EXPECT_EQ(sample::Strings(derivation.parray), (std::vector<std::wstring>{L"Device"}));
}

TEST(SystemProperties, OfAClass)
{
    const auto device = MakeClassObject(sample::Device());
    EXPECT_EQ(Text(*device, L"__CLASS"), L"Device");
    EXPECT_EQ(Text(*device, L"__SUPERCLASS"), L"<null>");
    EXPECT_EQ(Text(*device, L"__DYNASTY"), L"Device");
    EXPECT_EQ(Text(*device, L"__RELPATH"), L"Device");
    EXPECT_EQ(Decorate(device.Get(), L"PC", L"root\\cimv2"), S_OK);
    EXPECT_EQ(Text(*device, L"__PATH"), L"\\\\PC\\root\\cimv2:Device");
}

TEST(SystemProperties, PathsEscapeQuotesAndBackslashes)
{
    const auto lamp = MakeInstance(sample::Lamp());
    PutText(*lamp, L"Name", L"a \"b\" \\c");
    EXPECT_EQ(Text(*lamp, L"__RELPATH"), L"Lamp.Name=\"a \\\"b\\\" \\\\c\"");
    EXPECT_EQ(Text(*lamp, L"__PATH"), L"<null>");
    EXPECT_EQ(Decorate(lamp.Get(), L"PC", L"root\\cimv2"), S_OK);
    EXPECT_EQ(Text(*lamp, L"__PATH"), L"\\\\PC\\root\\cimv2:Lamp.Name=\"a \\\"b\\\" \\\\c\"");
    EXPECT_EQ(Text(*lamp, L"__SERVER"), L"PC");
    EXPECT_EQ(Text(*lamp, L"__NAMESPACE"), L"root\\cimv2");
}

TEST(SystemProperties, KeysAreInOrderOfTheirNamesAndWrittenByType)
{
    using sample::Property;
    const auto many = MakeInstance(
        sample::Class(L"Many", {Property(L"Zeta", CIM_BOOLEAN, true), Property(L"beta", CIM_UINT32, true),
                                Property(L"Alpha", CIM_REFERENCE, true), Property(L"Gamma", CIM_SINT64, true),
                                Property(L"Other", CIM_STRING)}));
    CVariant yes = CVariant::FromBool(true);
    many->Put(L"Zeta", 0, &yes, 0);
    PutLong(*many, L"beta", -1);
    PutText(*many, L"Alpha", L"B.K=\"1\"");
    EXPECT_EQ(Text(*many, L"__RELPATH"), L"<null>");
    PutText(*many, L"Gamma", L"-5");
    EXPECT_EQ(Text(*many, L"__RELPATH"), L"Many.Alpha=\"B.K=\\\"1\\\"\",beta=4294967295,Gamma=-5,Zeta=TRUE");
}

TEST(SystemProperties, AClassWithoutKeysGivesNoPath)
{
    EXPECT_EQ(Text(*MakeInstance(std::make_shared<CClassDefinition>(L"Plain")), L"__RELPATH"), L"<null>");
}

// Copies

TEST(Instance, CloneIsIndependent)
{
    const auto lamp = MakeInstance(sample::Lamp());
    PutText(*lamp, L"Name", L"a");
    Decorate(lamp.Get(), L"PC", L"root");
    ComPtr<IWbemClassObject> copy;
    ASSERT_EQ(lamp->Clone(copy.Put()), S_OK);
    PutText(*copy, L"Name", L"b");
    EXPECT_EQ(Text(*lamp, L"Name"), L"a");
    EXPECT_EQ(Text(*copy, L"Name"), L"b");
    EXPECT_EQ(Text(*copy, L"__SERVER"), L"PC");
}

TEST(Instance, SpawnsAnEmptyOneOfItsClass)
{
    const auto lamp = MakeInstance(sample::Lamp());
    PutText(*lamp, L"Name", L"a");
    ComPtr<IWbemClassObject> fresh;
    ASSERT_EQ(lamp->SpawnInstance(0, fresh.Put()), S_OK);
    EXPECT_EQ(Text(*fresh, L"__CLASS"), L"Lamp");
    EXPECT_EQ(Text(*fresh, L"Name"), L"<null>");
}

TEST(Instance, IsComparedInEverything)
{
    const auto a = MakeInstance(sample::Lamp());
    const auto b = MakeInstance(sample::Lamp());
    EXPECT_EQ(a->CompareTo(0, b.Get()), WBEM_S_SAME);
    PutText(*a, L"Status", L"OK"); // as in the class
    EXPECT_EQ(a->CompareTo(0, b.Get()), WBEM_S_SAME);
    EXPECT_EQ(a->CompareTo(0, MakeClassObject(sample::Lamp()).Get()), WBEM_S_DIFFERENT);
    PutText(*a, L"Name", L"desk");
    EXPECT_EQ(a->CompareTo(0, b.Get()), WBEM_S_DIFFERENT);
    PutText(*b, L"Name", L"desk");
    Decorate(b.Get(), L"PC", L"root");
    EXPECT_EQ(a->CompareTo(0, b.Get()), WBEM_S_DIFFERENT);
    EXPECT_EQ(a->CompareTo(0, nullptr), wmi::InvalidParameter);
    EXPECT_EQ(a->CompareTo(WBEM_FLAG_IGNORE_CASE, b.Get()), wmi::InvalidParameter);
}

TEST(CopyProperties, ChecksAgainstTheTargetsDefinition)
{
    const auto source = MakeInstance(sample::Lamp());
    PutText(*source, L"Name", L"a");
    PutLong(*source, L"Watts", 40);
    const auto same = MakeInstance(sample::Lamp());
    EXPECT_EQ(CopyProperties(source.Get(), same.Get()), S_OK);
    EXPECT_EQ(Text(*same, L"Name"), L"a");
    const auto lacking = MakeInstance(sample::Device());
    EXPECT_EQ(CopyProperties(source.Get(), lacking.Get()), wmi::NotFound);
    const auto other = MakeInstance(sample::Class(
        L"Lamp", {sample::Property(L"Name", CIM_STRING), sample::Property(L"Watts", CIM_STRING)}));
    EXPECT_EQ(CopyProperties(source.Get(), other.Get()), wmi::TypeMismatch);
}

TEST(Instance, LeavesNothingBehind)
{
    const long before = g_liveComObjects;
    {
        const auto lamp = MakeInstance(sample::Lamp());
        ComPtr<IWbemQualifierSet> set;
        lamp->GetPropertyQualifierSet(L"Name", set.Put());
        ComPtr<IWbemClassObject> copy;
        lamp->Clone(copy.Put());
    }
    EXPECT_EQ(g_liveComObjects, before);
}
