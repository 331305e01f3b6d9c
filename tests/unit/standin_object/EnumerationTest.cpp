// GetNames and the enumeration of properties: flags, order, values.
#include "Common/src/com/WmiStatus.h"
#include "tests/support/CaseName.h"
#include "tests/unit/standin_object/SampleClass.h"

using namespace standin;

namespace
{
using Names = std::vector<std::wstring>;

struct NamesCase
{
    const char* name;
    bool ofClass;
    long flags;
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
    EXPECT_EQ(sample::Names(*object, GetParam().flags), GetParam().expected);
    EXPECT_EQ(Enumerate(*object, GetParam().flags), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Flags, PropertyNames,
    testing::Values(NamesCase{"All", false, 0, All()}, NamesCase{"AllOfClass", true, 0, All()},
                    NamesCase{"System", false, WBEM_FLAG_SYSTEM_ONLY, kSystem},
                    NamesCase{"NonSystem", false, WBEM_FLAG_NONSYSTEM_ONLY, kOwn},
                    NamesCase{"Local", false, WBEM_FLAG_LOCAL_ONLY, {L"Name"}},
                    NamesCase{"Propagated",
                              false,
                              WBEM_FLAG_PROPAGATED_ONLY,
                              {L"Colours", L"Inner", L"Lit", L"Socket", L"Status", L"Watts"}}),
    NameOf<NamesCase>);

TEST(GetNames, RefusesWhatItDoesNotUnderstand)
{
    const auto lamp = MakeInstance(sample::Lamp());
    CSafeArray names;
    EXPECT_EQ(lamp->GetNames(nullptr, 0, nullptr, nullptr), wmi::InvalidParameter);
    EXPECT_EQ(lamp->GetNames(L"key", WBEM_FLAG_ONLY_IF_TRUE, nullptr, names.Put()), wmi::InvalidParameter);
    EXPECT_EQ(lamp->GetNames(nullptr, WBEM_FLAG_KEYS_ONLY, nullptr, names.Put()), wmi::InvalidParameter);
}

TEST(Enumeration, GivesValuesTypesAndFlavors)
{
    const auto lamp = Sample(false);
    ASSERT_EQ(lamp->BeginEnumeration(WBEM_FLAG_LOCAL_ONLY), S_OK);
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
