// GetNames and the enumeration of properties: flags, order, changes meanwhile.
#include "Common/src/com/WmiStatus.h"
#include "tests/support/CaseName.h"
#include "tests/unit/standin_object/SampleClass.h"

using namespace standin;

namespace
{
using Names = std::vector<std::wstring>;

// What the name of a property looks like in the cases.
struct NamesCase
{
    const char* name;
    bool ofClass;
    long flags;
    const wchar_t* qualifier;
    Names expected;
};

Names Enumerate(IWbemClassObject& object, long flags)
{
    Names names;
    EXPECT_EQ(object.BeginEnumeration(flags), S_OK);
    CBstr name;
    while (object.Next(0, name.Put(), nullptr, nullptr, nullptr) == S_OK)
        names.emplace_back(name.View());
    EXPECT_EQ(object.Next(0, nullptr, nullptr, nullptr, nullptr), WBEM_S_NO_MORE_DATA);
    EXPECT_EQ(object.EndEnumeration(), S_OK);
    return names;
}

ComPtr<IWbemClassObject> Sample(bool ofClass)
{
    if (ofClass)
        return MakeClassObject(sample::Lamp());
    const auto lamp = MakeInstance(sample::Lamp());
    sample::PutText(*lamp, L"Name", L"desk");
    return lamp;
}

const Names kSystem{L"__GENUS",          L"__CLASS",      L"__SUPERCLASS", L"__DYNASTY",   L"__RELPATH",
                    L"__PROPERTY_COUNT", L"__DERIVATION", L"__SERVER",     L"__NAMESPACE", L"__PATH"};
const Names kOwn{L"Colours", L"Inner", L"Lit", L"Name", L"Socket", L"Status", L"Watts"};

Names All()
{
    Names names = kSystem;
    names.insert(names.end(), kOwn.begin(), kOwn.end());
    return names;
}
} // namespace

class PropertyNames : public testing::TestWithParam<NamesCase>
{
};

TEST_P(PropertyNames, AreThoseOfTheFlags)
{
    const auto object = Sample(GetParam().ofClass);
    EXPECT_EQ(sample::Names(*object, GetParam().flags, GetParam().qualifier), GetParam().expected);
    if (!(GetParam().flags & WBEM_MASK_PRIMARY_CONDITION))
    {
        EXPECT_EQ(Enumerate(*object, GetParam().flags), GetParam().expected);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Flags, PropertyNames,
    testing::Values(NamesCase{"All", false, 0, nullptr, All()},
                    NamesCase{"AllOfClass", true, 0, nullptr, All()},
                    NamesCase{"System", false, WBEM_FLAG_SYSTEM_ONLY, nullptr, kSystem},
                    NamesCase{"NonSystem", false, WBEM_FLAG_NONSYSTEM_ONLY, nullptr, kOwn},
                    NamesCase{"Keys", false, WBEM_FLAG_KEYS_ONLY, nullptr, {L"Name"}},
                    NamesCase{"References", true, WBEM_FLAG_REFS_ONLY, nullptr, {L"Socket"}},
                    NamesCase{"LocalOfInstance", false, WBEM_FLAG_LOCAL_ONLY, nullptr, {L"Name"}},
                    NamesCase{"LocalOfClass",
                              true,
                              WBEM_FLAG_LOCAL_ONLY,
                              nullptr,
                              {L"Colours", L"Inner", L"Lit", L"Socket", L"Watts"}},
                    NamesCase{
                        "PropagatedOfClass", true, WBEM_FLAG_PROPAGATED_ONLY, nullptr, {L"Name", L"Status"}},
                    NamesCase{"WithQualifier", true, WBEM_FLAG_ONLY_IF_TRUE, L"down", {L"Name"}},
                    NamesCase{"WithoutQualifier",
                              true,
                              WBEM_FLAG_ONLY_IF_FALSE | WBEM_FLAG_NONSYSTEM_ONLY,
                              L"KEY",
                              {L"Colours", L"Inner", L"Lit", L"Socket", L"Status", L"Watts"}}),
    NameOf<NamesCase>);

TEST(GetNames, ComparesAQualifiersValue)
{
    const auto lamp = MakeClassObject(sample::Lamp());
    CVariant type = CVariant::FromText(L"boolean");
    EXPECT_EQ(sample::Names(*lamp, WBEM_FLAG_ONLY_IF_IDENTICAL, L"CIMTYPE", &type), (Names{L"Lit"}));
}

TEST(GetNames, RefusesWhatMakesNoSense)
{
    const auto lamp = MakeInstance(sample::Lamp());
    CSafeArray names;
    EXPECT_EQ(lamp->GetNames(nullptr, 0, nullptr, nullptr), wmi::InvalidParameter);
    EXPECT_EQ(lamp->GetNames(nullptr, WBEM_FLAG_ONLY_IF_TRUE, nullptr, names.Put()), wmi::InvalidParameter);
    EXPECT_EQ(lamp->GetNames(L"key", WBEM_FLAG_ONLY_IF_IDENTICAL, nullptr, names.Put()),
              wmi::InvalidParameter);
    EXPECT_EQ(lamp->GetNames(nullptr, 0x1000, nullptr, names.Put()), wmi::InvalidParameter);
    EXPECT_EQ(lamp->GetNames(nullptr, WBEM_FLAG_CLASS_OVERRIDES_ONLY, nullptr, names.Put()),
              wmi::InvalidParameter);
}

TEST(GetNames, KnowsWhatAClassRedeclares)
{
    auto definition = std::make_shared<CClassDefinition>(*sample::Lamp());
    definition->SetProperty(sample::Property(L"Status", CIM_STRING));
    const auto lamp = MakeClassObject(definition);
    EXPECT_EQ(sample::Names(*lamp, WBEM_FLAG_CLASS_OVERRIDES_ONLY), (Names{L"Status"}));
    EXPECT_EQ(sample::Names(*lamp, WBEM_FLAG_CLASS_LOCAL_AND_OVERRIDES),
              (Names{L"Colours", L"Inner", L"Lit", L"Socket", L"Status", L"Watts"}));
}

TEST(Enumeration, GivesValuesTypesAndFlavors)
{
    const auto lamp = Sample(false);
    ASSERT_EQ(lamp->BeginEnumeration(WBEM_FLAG_KEYS_ONLY), S_OK);
    CBstr name;
    CVariant value;
    CIMTYPE type = 0;
    LONG flavor = -1;
    ASSERT_EQ(lamp->Next(0, name.Put(), &value, &type, &flavor), S_OK);
    EXPECT_EQ(name.View(), L"Name");
    EXPECT_STREQ(value.bstrVal, L"desk");
    EXPECT_EQ(type, CIM_STRING);
    EXPECT_EQ(flavor, WBEM_FLAVOR_ORIGIN_LOCAL);
}

TEST(Enumeration, NeedsABeginning)
{
    const auto lamp = Sample(false);
    EXPECT_EQ(lamp->Next(0, nullptr, nullptr, nullptr, nullptr), static_cast<HRESULT>(WBEM_E_UNEXPECTED));
    lamp->BeginEnumeration(0);
    EXPECT_EQ(lamp->Next(1, nullptr, nullptr, nullptr, nullptr), wmi::InvalidParameter);
    lamp->EndEnumeration();
    EXPECT_EQ(lamp->Next(0, nullptr, nullptr, nullptr, nullptr), static_cast<HRESULT>(WBEM_E_UNEXPECTED));
}

TEST(Enumeration, PassesOverAPropertyThatIsGone)
{
    const auto lamp = Sample(true);
    ASSERT_EQ(lamp->BeginEnumeration(WBEM_FLAG_LOCAL_ONLY), S_OK);
    EXPECT_EQ(lamp->Delete(L"Inner"), S_OK);
    Names names;
    CBstr name;
    while (lamp->Next(0, name.Put(), nullptr, nullptr, nullptr) == S_OK)
        names.emplace_back(name.View());
    EXPECT_EQ(names, (Names{L"Colours", L"Lit", L"Socket", L"Watts"}));
}
