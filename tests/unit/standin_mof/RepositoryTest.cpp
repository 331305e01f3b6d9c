// What statements mean: inheritance, keys, instances, providers, compiling again.
#include "standin/mof/Repository.h"

#include "Common/src/com/Text.h"
#include "tests/unit/standin_mof/RepositoryFixture.h"

using namespace standin;

TEST_F(Repository, ClassesInherit)
{
    Compile(kLamps);
    const ClassDefinition floorLamp = Class(L"FLOORLAMP");
    ASSERT_TRUE(floorLamp);
    EXPECT_EQ(floorLamp->Derivation, (std::vector<std::wstring>{L"Lamp", L"Device"}));
    EXPECT_EQ(floorLamp->Properties().size(), 4u);
    EXPECT_EQ(floorLamp->FindProperty(L"watts")->Default.lVal, 40);
    EXPECT_TRUE(floorLamp->FindProperty(L"Name")->Qualifiers.IsTrue(L"key"));
    EXPECT_FALSE(floorLamp->Qualifiers.IsTrue(L"abstract"));
    EXPECT_STREQ(floorLamp->Qualifiers.Text(L"description"), L"d");
}

TEST_F(Repository, MethodsBecomeSignatures)
{
    Compile(kLamps);
    const CMethodDefinition* dim = Class(L"FloorLamp")->FindMethod(L"dim");
    ASSERT_TRUE(dim && dim->In && dim->Out);
    EXPECT_EQ(dim->In->Properties().size(), 2u);
    EXPECT_EQ(dim->Out->Properties().size(), 3u);
    const CPropertyDefinition* where = dim->In->FindProperty(L"Where");
    EXPECT_EQ(where->Type, CIM_REFERENCE);
    EXPECT_STREQ(where->Qualifiers.Text(L"CIMTYPE"), L"ref:Device");
    EXPECT_EQ(where->Qualifiers.Find(L"ID")->Value.lVal, 1);
    EXPECT_EQ(dim->Out->FindProperty(L"Was")->Type, CIM_STRING | CIM_FLAG_ARRAY);
    EXPECT_EQ(dim->Out->FindProperty(L"ReturnValue")->Type, CIM_UINT32);
    EXPECT_TRUE(dim->Out->FindProperty(L"ReturnValue")->Qualifiers.IsTrue(L"out"));
}

TEST_F(Repository, ClassObjectsComeDecorated)
{
    Compile(kLamps);
    const auto lamp = m_repository.GetClass(L"\\\\.\\Root/CIMV2", L"lamp");
    ASSERT_TRUE(lamp);
    EXPECT_EQ(sample::Text(*lamp, L"__PATH"), L"\\\\PC\\root\\cimv2:Lamp");
    EXPECT_FALSE(m_repository.GetClass(kCimv2, L"Nothing"));
    EXPECT_FALSE(m_repository.GetClass(L"root\\nowhere", L"Lamp"));
    EXPECT_TRUE(m_repository.GetClass(kCimv2, L"__Win32Provider"));
}

TEST_F(Repository, DerivedClassesAreFound)
{
    Compile(kLamps);
    const auto names = [&](const wchar_t* base)
    {
        std::vector<std::wstring> result;
        for (const ClassDefinition& definition : m_repository.DerivedClasses(kCimv2, base))
            result.push_back(definition->Name);
        return result;
    };
    using Names = std::vector<std::wstring>;
    EXPECT_EQ(names(L"device"), (Names{L"FloorLamp", L"Lamp"}));
    EXPECT_EQ(names(L"lamp"), (Names{L"FloorLamp"}));
    EXPECT_EQ(names(L"FloorLamp"), Names());
    EXPECT_EQ(names(L""), (Names{L"Device", L"FloorLamp", L"Lamp"}));
}

TEST_F(Repository, InstancesAreStored)
{
    Compile(kLamps);
    EXPECT_EQ(m_repository.Instances(kCimv2, L"Lamp", false).size(), 1u);
    EXPECT_EQ(m_repository.Instances(kCimv2, L"Device", true).size(), 2u);
    const auto corner = m_repository.GetInstance(kCimv2, L"floorlamp.name=\"CORNER\"");
    ASSERT_TRUE(corner);
    EXPECT_EQ(sample::Text(*corner, L"__PATH"), L"\\\\PC\\root\\cimv2:FloorLamp.Name=\"corner\"");
    EXPECT_EQ(sample::Text(*corner, L"Status"), L"OK");
    CVariant watts;
    corner->Get(L"Watts", 0, &watts, nullptr, nullptr);
    EXPECT_EQ(watts.lVal, 100);
    sample::PutText(*corner, L"Status", L"changed");
    EXPECT_EQ(sample::Text(*m_repository.GetInstance(kCimv2, L"FloorLamp.Name=\"corner\""), L"Status"),
              L"OK");
}

TEST_F(Repository, CompilingAgainChangesNothing)
{
    Compile(kLamps);
    Compile(kLamps);
    EXPECT_EQ(m_repository.Instances(kCimv2, L"Device", true).size(), 2u);
    EXPECT_EQ(m_repository.DerivedClasses(kCimv2, L"Device").size(), 2u);
    Compile("instance of Lamp { Name = \"DESK\"; Watts = 1; };");
    EXPECT_EQ(m_repository.Instances(kCimv2, L"Lamp", false).size(), 1u);
}

TEST_F(Repository, ARefusedTextChangesNothing)
{
    Compile(kLamps);
    EXPECT_NE(Refusal("class Extra {}; class Lamp {}; class Wrong : Missing {};"), "");
    EXPECT_FALSE(Class(L"Extra"));
    EXPECT_TRUE(Class(L"Lamp")->FindProperty(L"Watts"));
}

TEST_F(Repository, ProvidersAreFoundByName)
{
    Compile(R"(instance of __Win32Provider as $P { Name = "PROV"; CLSID = "{1}"; HostingModel = "SelfHost"; };
               instance of __InstanceProviderRegistration { provider = $P; SupportsGet = TRUE; };)");
    auto provider = m_repository.FindProvider(kCimv2, L"prov");
    ASSERT_TRUE(provider);
    EXPECT_EQ(provider->Clsid, L"{1}");
    EXPECT_EQ(provider->HostingModel, L"SelfHost");
    EXPECT_TRUE(provider->ServesInstances && provider->SupportsGet);
    EXPECT_FALSE(provider->SupportsPut || provider->SupportsEnumeration || provider->ServesMethods);
    Compile("instance of __MethodProviderRegistration { provider = "
            "\"\\\\\\\\.\\\\root\\\\cimv2:__Win32Provider.Name=\\\"PROV\\\"\"; };");
    EXPECT_TRUE(m_repository.FindProvider(kCimv2, L"PROV")->ServesMethods);
    EXPECT_FALSE(m_repository.FindProvider(kCimv2, L"OTHER"));
    EXPECT_FALSE(m_repository.FindProvider(L"root", L"PROV"));
}

TEST_F(Repository, NamespacesAreRootDefaultAndCimv2)
{
    Compile("#pragma namespace(\"//./Root\") class Inside {};");
    EXPECT_TRUE(m_repository.HasNamespace(L"ROOT\\CIMV2"));
    EXPECT_TRUE(m_repository.HasNamespace(L"root\\default"));
    EXPECT_FALSE(m_repository.HasNamespace(L"root\\other"));
    EXPECT_TRUE(m_repository.GetDefinition(L"root", L"Inside"));
    EXPECT_FALSE(Class(L"Inside"));
}

// As the management service's own compiler does: a text that forgets to say where it belongs is not found
// there.
TEST_F(Repository, WhatNamesNoNamespaceGoesToDefault)
{
    m_repository.Compile("class Astray {};", "t");
    EXPECT_TRUE(m_repository.GetDefinition(L"root\\default", L"Astray"));
    EXPECT_FALSE(Class(L"Astray"));
}

TEST_F(Repository, ClassesAndInstancesCanBeRemoved)
{
    Compile(kLamps);
    EXPECT_FALSE(m_repository.Compile("#pragma deleteclass(\"Missing\", NOFAIL)", "t", kCimv2));
    EXPECT_TRUE(m_repository.Compile("#pragma deleteinstance(\"lamp.Name=\\\"DESK\\\"\", FAIL)"
                                     "#pragma deleteclass(\"floorlamp\", FAIL)",
                                     "t", kCimv2));
    EXPECT_FALSE(Class(L"FloorLamp"));
    EXPECT_TRUE(Class(L"Lamp"));
    EXPECT_TRUE(m_repository.Instances(kCimv2, L"Lamp", false).empty());
    EXPECT_EQ(Refusal("#pragma deleteclass(\"FloorLamp\", FAIL)"), "(1,21): there is no \"FloorLamp\"");
}

// Whatever zebdiag.mof adds, zebdiag-remove.mof removes.
TEST(RemovingTheProduct, LeavesWhatTheSystemHad)
{
    CRepository repository(L"PC");
    const auto compile = [&](const char* file)
    { return repository.CompileFile(WidenUtf8(std::string(ZEB_SOURCE_DIR "/") + file)); };
    const auto names = [&]
    {
        std::vector<std::wstring> result;
        for (const ClassDefinition& definition : repository.DerivedClasses(kCimv2, L""))
            result.push_back(definition->Name);
        return result;
    };
    compile("standin/mof/system.mof");
    compile("resources/mof/cimv2.mof");
    const std::vector<std::wstring> before = names();
    EXPECT_FALSE(compile("resources/mof/zebdiag.mof"));
    EXPECT_NE(before, names());
    EXPECT_TRUE(repository.FindProvider(kCimv2, L"DREVOK_PROVIDER"));
    EXPECT_TRUE(compile("resources/mof/zebdiag-remove.mof"));
    EXPECT_EQ(before, names());
    for (const wchar_t* stored :
         {L"__Win32Provider", L"__InstanceProviderRegistration", L"__MethodProviderRegistration"})
        EXPECT_TRUE(repository.Instances(kCimv2, stored, true).empty()) << stored;
    // Nothing is left to remove, and that is no failure.
    EXPECT_FALSE(compile("resources/mof/zebdiag-remove.mof"));
}

TEST_F(Repository, AFileThatIsNotThereIsAnError)
{
    try
    {
        m_repository.CompileFile(L"C:\\not\\there.mof");
        FAIL() << "was read";
    }
    catch (const CMofError& error)
    {
        EXPECT_STREQ(error.what(), "C:\\not\\there.mof(0,0): the file cannot be opened");
    }
}
