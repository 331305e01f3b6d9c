// The schema that the stand-in starts with: what the product's classes and its provider rely on in it.
#include "Common/src/com/Text.h"
#include "tests/support/CaseName.h"
#include "tests/support/ServedSchema.h"

#include <gtest/gtest.h>

using namespace standin;

namespace
{
struct BaseCase
{
    const char* name;
    const wchar_t* className;
    const wchar_t* superclass;
    std::vector<const wchar_t*> modelKeys; // bear "CIM_Key"
};
} // namespace

class BaseClass : public testing::TestWithParam<BaseCase>
{
};

// The keys of the model do not bear "key": that is what lets derived classes choose theirs, and what a
// provider that looks for "key" finds.
TEST_P(BaseClass, LeavesTheChoiceOfKeysToDerivedClasses)
{
    const ClassDefinition definition = ServedSchema().GetDefinition(kServedNamespace, GetParam().className);
    ASSERT_TRUE(definition);
    EXPECT_EQ(definition->Derivation.empty() ? L"" : definition->Derivation.front(), GetParam().superclass);
    EXPECT_TRUE(definition->Qualifiers.IsTrue(L"abstract"));
    EXPECT_TRUE(definition->Keys().empty());
    for (const wchar_t* key : GetParam().modelKeys)
    {
        const CPropertyDefinition* property = definition->FindProperty(key);
        ASSERT_TRUE(property);
        EXPECT_TRUE(property->Qualifiers.IsTrue(L"CIM_Key"));
        EXPECT_FALSE(property->Qualifiers.Find(L"key"));
    }
}

INSTANTIATE_TEST_SUITE_P(
    Model, BaseClass,
    testing::Values(
        BaseCase{"Service",
                 L"CIM_Service",
                 L"CIM_LogicalElement",
                 {L"SystemCreationClassName", L"SystemName", L"CreationClassName", L"Name"}},
        BaseCase{"Test",
                 L"CIM_DiagnosticTest",
                 L"CIM_Service",
                 {L"SystemCreationClassName", L"SystemName", L"CreationClassName", L"Name"}},
        BaseCase{"Result",
                 L"CIM_DiagnosticResult",
                 L"",
                 {L"DiagSystemCreationClassName", L"DiagSystemName", L"DiagnosticCreationClassName",
                  L"DiagnosticName", L"ExecutionID"}},
        BaseCase{"Setting", L"CIM_DiagnosticSetting", L"CIM_Setting", {L"SettingID"}},
        BaseCase{"Adapter",
                 L"CIM_NetworkAdapter",
                 L"CIM_LogicalDevice",
                 {L"SystemCreationClassName", L"SystemName", L"CreationClassName", L"DeviceID"}},
        BaseCase{"TestForElement",
                 L"CIM_DiagnosticTestForMSE",
                 L"CIM_ProvidesServiceToElement",
                 {L"Antecedent", L"Dependent"}},
        BaseCase{"SettingForTest",
                 L"CIM_DiagnosticSettingForTest",
                 L"CIM_ElementSetting",
                 {L"Element", L"Setting"}},
        BaseCase{"ResultForElement", L"CIM_DiagnosticResultForMSE", L"", {L"Result", L"SystemElement"}},
        BaseCase{
            "ResultForTest", L"CIM_DiagnosticResultForTest", L"", {L"DiagnosticResult", L"DiagnosticTest"}}),
    NameOf<BaseCase>);

TEST(Schema, SystemClassesAreSeenFromEverywhere)
{
    for (const wchar_t* nameSpace : {L"root", kServedNamespace})
        for (const wchar_t* name : {L"__ExtendedStatus", L"__Win32Provider", L"__MethodProviderRegistration"})
            EXPECT_TRUE(ServedSchema().GetDefinition(nameSpace, name)) << NarrowText(name);
    EXPECT_FALSE(ServedSchema().GetDefinition(L"root", L"CIM_Service"));
}
