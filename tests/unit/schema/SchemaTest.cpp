// The shipped schema: what the provider sets must find a property of the right type, what clients and the
// management service look for must be there.
#include "Common/src/com/SafeArray.h"
#include "Common/src/com/Text.h"
#include "Common/src/com/Variant.h"
#include "standin/object/Objects.h"
#include "tests/support/CaseName.h"
#include "tests/support/ServedSchema.h"
#include "tests/unit/schema/WrittenProperties.h"

#include <gtest/gtest.h>
#include <set>

namespace
{
using standin::ClassDefinition;

ClassDefinition Definition(const wchar_t* name)
{
    return ServedSchema().GetDefinition(kServedNamespace, name);
}

std::set<std::wstring> KeysOf(const ClassDefinition& definition)
{
    std::set<std::wstring> keys;
    for (const auto& property : definition->Properties())
        if (property.Qualifiers.IsTrue(L"key"))
            keys.insert(property.Name);
    return keys;
}

struct ClassCase
{
    const char* name;
    const wchar_t* className;
    const wchar_t* base;
    std::set<std::wstring> keys;
    bool served;
    bool association;
};

class ServedClassTest : public testing::TestWithParam<ClassCase>
{
};

TEST_P(ServedClassTest, HasBaseKeysAndProvider)
{
    const ClassCase& given = GetParam();
    const ClassDefinition definition = Definition(given.className);
    ASSERT_TRUE(definition);
    EXPECT_TRUE(definition->InheritsFrom(given.base));
    EXPECT_EQ(KeysOf(definition), given.keys);
    EXPECT_FALSE(definition->Qualifiers.IsTrue(L"abstract"));
    EXPECT_EQ(definition->Qualifiers.IsTrue(L"dynamic"), given.served);
    const wchar_t* provider = definition->Qualifiers.Text(L"provider");
    EXPECT_EQ(std::wstring(provider ? provider : L""), given.served ? L"DREVOK_PROVIDER" : L"");
    EXPECT_EQ(definition->Qualifiers.IsTrue(L"association"), given.association);
}

const ClassCase kClasses[] = {
    {"Test", L"Tolva_DiagTest", L"CIM_DiagnosticTest", {L"Name"}, true, false},
    {"Result",
     L"Tolva_DiagResult",
     L"CIM_DiagnosticResult",
     {L"DiagnosticName", L"DiagnosticCreationClassName", L"ExecutionID"},
     true,
     false},
    {"Setting", L"Tolva_DiagSetting", L"CIM_DiagnosticSetting", {L"SettingID"}, true, false},
    {"ResultForMSE",
     L"Tolva_DiagResultForMSE",
     L"CIM_DiagnosticResultForMSE",
     {L"Result", L"SystemElement"},
     true,
     true},
    {"ResultForTest",
     L"Tolva_DiagResultForTest",
     L"CIM_DiagnosticResultForTest",
     {L"DiagnosticResult", L"DiagnosticTest"},
     true,
     true},
    {"SettingForTest",
     L"Tolva_DiagSettingForTest",
     L"CIM_DiagnosticSettingForTest",
     {L"Element", L"Setting"},
     true,
     true},
    {"TestForMSE",
     L"Tolva_DiagTestForMSE",
     L"CIM_DiagnosticTestForMSE",
     {L"Antecedent", L"Dependent"},
     true,
     true},
    {"Adapter", L"Tolva_EthernetAdapter", L"CIM_NetworkAdapter", {L"DeviceID"}, false, false},
    {"ExtendedStatus", L"Tolva_ExtendedStatus", L"__ExtendedStatus", {}, false, false}};

INSTANTIATE_TEST_SUITE_P(Classes, ServedClassTest, testing::ValuesIn(kClasses), NameOf<ClassCase>);

class WrittenPropertyTest : public testing::TestWithParam<PropertyCase>
{
};

TEST_P(WrittenPropertyTest, TakesWhatTheProviderWrites)
{
    const ClassDefinition definition = Definition(GetParam().className);
    ASSERT_TRUE(definition);
    const ComPtr<IWbemClassObject> instance = standin::MakeInstance(definition);
    CVariant value = Sample(GetParam().kind);
    EXPECT_EQ(instance->Put(GetParam().property, 0, &value, 0), WBEM_S_NO_ERROR);
    CVariant null = CVariant::Null();
    EXPECT_EQ(instance->Put(GetParam().property, 0, &null, 0), WBEM_S_NO_ERROR);
}

INSTANTIATE_TEST_SUITE_P(Properties, WrittenPropertyTest, testing::ValuesIn(kWritten), NameOf<PropertyCase>);

// Every property and method of ours tells clients what it is.
TEST(SchemaTest, EverythingThatIsDeclaredIsDescribed)
{
    for (const ClassCase& row : kClasses)
    {
        const ClassDefinition definition = Definition(row.className);
        ASSERT_TRUE(definition);
        EXPECT_TRUE(definition->Qualifiers.Text(L"Description")) << row.name;
        for (const auto& property : definition->Properties())
            EXPECT_TRUE(!property.Local || property.Qualifiers.Text(L"Description"))
                << row.name << " " << NarrowText(property.Name);
        for (const auto& method : definition->Methods())
            EXPECT_TRUE(!method.Local || method.Qualifiers.Text(L"Description"))
                << row.name << " " << NarrowText(method.Name);
    }
}

struct MapCase
{
    const char* name;
    const wchar_t* className;
    const wchar_t* property;
    std::vector<std::wstring> values;
};

class ValueMapTest : public testing::TestWithParam<MapCase>
{
};

std::vector<std::wstring> Texts(const standin::CQualifier* qualifier)
{
    std::vector<std::wstring> texts;
    if (!qualifier || qualifier->Value.vt != (VT_ARRAY | VT_BSTR))
        return texts;
    const CSafeArrayView<BSTR> view(qualifier->Value.parray, VT_BSTR);
    for (const BSTR text : view.Items())
        texts.emplace_back(text, SysStringLen(text));
    return texts;
}

TEST_P(ValueMapTest, NamesEveryNumberFromZero)
{
    const auto* property = Definition(GetParam().className)->FindProperty(GetParam().property);
    ASSERT_TRUE(property);
    EXPECT_EQ(Texts(property->Qualifiers.Find(L"Values")), GetParam().values);
    std::vector<std::wstring> numbers;
    for (size_t i = 0; i < GetParam().values.size(); ++i)
        numbers.push_back(std::to_wstring(i));
    EXPECT_EQ(Texts(property->Qualifiers.Find(L"ValueMap")), numbers);
}

const std::vector<std::wstring> kWarningLevels = {L"No Warnings", L"Missing Resources", L"Testing Impacts",
                                                  L"All Warnings"};

INSTANTIATE_TEST_SUITE_P(
    Maps, ValueMapTest,
    testing::Values(
        MapCase{"TestState",
                L"Tolva_DiagResult",
                L"TestState",
                {L"Unknown", L"Other", L"Passed", L"Failed", L"In Progress", L"Stopped"}},
        MapCase{"Characteristics",
                L"Tolva_DiagTest",
                L"Characteristics",
                {L"Unknown", L"Other", L"Is Exclusive", L"Is Interactive", L"Is Destructive", L"Is Risky",
                 L"Is Package", L"Supports PercentOfTestCoverage"}},
        MapCase{"WarningLevelOfSetting", L"Tolva_DiagSetting", L"TestWarningLevel", kWarningLevels},
        MapCase{"WarningLevelOfResult", L"Tolva_DiagResult", L"TestWarningLevel", kWarningLevels}),
    NameOf<MapCase>);

struct MethodCase
{
    const char* name;
    const wchar_t* method;
    std::vector<std::wstring> in;
    std::vector<std::wstring> out;
};

class MethodTest : public testing::TestWithParam<MethodCase>
{
};

std::vector<std::wstring> NamesOf(const ClassDefinition& parameters)
{
    std::vector<std::wstring> names;
    if (parameters)
        for (const auto& property : parameters->Properties())
            names.push_back(property.Name);
    return names;
}

// The parameters are those of the base class, because the management service takes no other signature for an
// inherited method.
TEST_P(MethodTest, IsImplementedWithTheParametersOfTheBase)
{
    const auto* method = Definition(L"Tolva_DiagTest")->FindMethod(GetParam().method);
    ASSERT_TRUE(method);
    EXPECT_TRUE(method->Local);
    EXPECT_TRUE(method->Qualifiers.IsTrue(L"implemented"));
    EXPECT_EQ(NamesOf(method->In), GetParam().in);
    EXPECT_EQ(NamesOf(method->Out), GetParam().out);
    const auto* inherited = Definition(L"CIM_DiagnosticTest")->FindMethod(GetParam().method);
    ASSERT_TRUE(inherited);
    EXPECT_EQ(NamesOf(method->In), NamesOf(inherited->In));
    EXPECT_EQ(NamesOf(method->Out), NamesOf(inherited->Out));
}

INSTANTIATE_TEST_SUITE_P(
    Methods, MethodTest,
    testing::Values(
        MethodCase{"RunTest", L"RunTest", {L"SystemElement", L"Setting"}, {L"Result", L"ReturnValue"}},
        MethodCase{"ClearResults", L"ClearResults", {L"SystemElement"}, {L"ReturnValue"}},
        MethodCase{"DiscontinueTest",
                   L"DiscontinueTest",
                   {L"SystemElement", L"Result"},
                   {L"TestingStopped", L"ReturnValue"}}),
    NameOf<MethodCase>);

TEST(SchemaTest, ProviderIsRegisteredAsAProgramOfItsOwn)
{
    const auto provider = ServedSchema().FindProvider(kServedNamespace, L"DREVOK_PROVIDER");
    ASSERT_TRUE(provider);
    EXPECT_EQ(provider->HostingModel, L"SelfHost");
    EXPECT_EQ(provider->Clsid, L"{6C1F0A52-3B7E-4E1B-9A55-0D6B7A3C8E20}");
    EXPECT_TRUE(provider->ServesInstances && provider->ServesMethods);
    EXPECT_TRUE(provider->SupportsGet && provider->SupportsPut && provider->SupportsEnumeration);
    EXPECT_FALSE(provider->SupportsDelete);
}

TEST(SchemaTest, HasTheVersionOfTheProduct)
{
    const wchar_t* version = Definition(L"Tolva_DiagTest")->Qualifiers.Text(L"Version");
    ASSERT_TRUE(version);
    EXPECT_STREQ(version, L"" ZEB_VERSION);
}

TEST(SchemaTest, CompilingItAgainChangesNothing)
{
    standin::CRepository repository(L"WS42");
    const auto compile = [&](const char* file)
    { repository.CompileFile(WidenUtf8(std::string(ZEB_SOURCE_DIR) + "/" + file)); };
    compile("standin/mof/system.mof");
    compile("resources/mof/cimv2.mof");
    compile("resources/mof/zebdiag.mof");
    const auto instances = [&](const wchar_t* name)
    { return repository.Instances(kServedNamespace, name, false).size(); };
    const size_t derived = repository.DerivedClasses(kServedNamespace, L"").size();
    ASSERT_NO_THROW(compile("resources/mof/zebdiag.mof"));
    EXPECT_EQ(repository.DerivedClasses(kServedNamespace, L"").size(), derived);
    EXPECT_EQ(instances(L"__Win32Provider"), 1u);
    EXPECT_EQ(instances(L"__InstanceProviderRegistration"), 1u);
    EXPECT_EQ(instances(L"__MethodProviderRegistration"), 1u);
}
} // namespace
