// What statements mean: inheritance, keys, instances, providers, languages, compiling again.
#include "standin/mof/Repository.h"

#include "Common/src/com/Text.h"
#include "standin/object/ClassDefinition.h"
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
    EXPECT_EQ(floorLamp->FindProperty(L"watts")->Origin, L"Lamp");
    EXPECT_TRUE(floorLamp->FindProperty(L"Name")->Qualifiers.IsTrue(L"key"));
    EXPECT_FALSE(floorLamp->Qualifiers.IsTrue(L"abstract"));
    EXPECT_STREQ(floorLamp->Qualifiers.Text(L"description"), L"d");
}

TEST_F(Repository, MethodsBecomeSignatures)
{
    Compile(kLamps);
    const CMethodDefinition* dim = Class(L"FloorLamp")->FindMethod(L"dim");
    ASSERT_TRUE(dim && dim->In && dim->Out);
    EXPECT_EQ(dim->Origin, L"Lamp");
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
    EXPECT_TRUE(m_repository.GetClass(kCimv2, L"__NAMESPACE"));
}

TEST_F(Repository, DerivedClassesAreFound)
{
    Compile(kLamps);
    const auto names = [&](const wchar_t* base, bool deep)
    {
        std::vector<std::wstring> result;
        for (const ClassDefinition& definition : m_repository.DerivedClasses(kCimv2, base, deep))
            result.push_back(definition->Name);
        return result;
    };
    using Names = std::vector<std::wstring>;
    EXPECT_EQ(names(L"device", false), (Names{L"Lamp"}));
    EXPECT_EQ(names(L"Device", true), (Names{L"FloorLamp", L"Lamp"}));
    EXPECT_EQ(names(L"", false), (Names{L"Device"}));
    EXPECT_EQ(names(L"", true), (Names{L"Device", L"FloorLamp", L"Lamp"}));
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

TEST_F(Repository, CompilingAgainUpdates)
{
    Compile(kLamps);
    Compile(kLamps);
    EXPECT_EQ(m_repository.Instances(kCimv2, L"Device", true).size(), 2u);
    Compile("[Abstract] class Device { [Key] string Name; string Status = \"new\"; uint8 Age; };"
            "instance of Lamp { Name = \"DESK\"; Watts = 1; };");
    EXPECT_STREQ(Class(L"FloorLamp")->FindProperty(L"Status")->Default.bstrVal, L"new");
    EXPECT_TRUE(Class(L"FloorLamp")->FindProperty(L"Age"));
    EXPECT_EQ(Class(L"FloorLamp")->FindProperty(L"Watts")->Default.lVal, 40);
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

TEST_F(Repository, NamespacesAreMade)
{
    Compile("instance of __namespace { Name = \"lab\"; }; #pragma "
            "namespace(\"\\\\\\\\.\\\\root\\\\cimv2\\\\LAB\")\n"
            "class Inside {};");
    EXPECT_TRUE(m_repository.HasNamespace(L"root\\CIMV2\\lab"));
    EXPECT_EQ(m_repository.ChildNamespaces(L"root"), (std::vector<std::wstring>{L"cimv2"}));
    EXPECT_EQ(m_repository.ChildNamespaces(kCimv2), (std::vector<std::wstring>{L"lab"}));
    EXPECT_TRUE(m_repository.GetDefinition(L"root\\cimv2\\lab", L"Inside"));
    EXPECT_FALSE(Class(L"Inside"));
}

TEST_F(Repository, ClassesAndInstancesAreDeleted)
{
    Compile(kLamps);
    Compile("#pragma deleteinstance(\"Lamp.Name=\\\"desk\\\"\", FAIL)\n#pragma deleteclass(\"FloorLamp\", "
            "nofail)\n"
            "#pragma deleteclass(\"FloorLamp\", nofail)");
    EXPECT_FALSE(Class(L"FloorLamp"));
    EXPECT_TRUE(m_repository.Instances(kCimv2, L"Device", true).empty());
    EXPECT_EQ(Refusal("#pragma deleteclass(\"FloorLamp\", fail)"), "(1,21): there is no class \"FloorLamp\"");
    Compile("#pragma deleteclass(\"Device\", nofail)");
    EXPECT_FALSE(Class(L"Lamp"));
}

// Languages

namespace
{
constexpr const char* kGerman = R"(
    instance of __NAMESPACE { Name = "ms_407"; };
    #pragma namespace("\\\\.\\root\\cimv2\\ms_407")
    [AMENDMENT, LOCALE(0x407), Description("Gerät"): Amended ToSubclass] class Device
    { [Key, Description("Wie es heißt"): Amended ToSubclass] string Name; };
    [AMENDMENT, Description("Lampe"): Amended ToSubclass] class Lamp : Device
    { [Values{"hell"}: Amended] uint16 Watts;
      [Description("dimmt"): Amended] uint32 Dim([In, Description("wie weit"): Amended] uint8 Level); };)";
}

TEST_F(Repository, LanguagesAreLaidOver)
{
    Compile(kLamps);
    Compile(kGerman);
    EXPECT_STREQ(Class(L"Lamp")->Qualifiers.Text(L"Description"), L"d");
    const ClassDefinition german = Class(L"Lamp", 0x407);
    EXPECT_STREQ(german->Qualifiers.Text(L"Description"), L"Lampe");
    EXPECT_STREQ(german->FindProperty(L"Name")->Qualifiers.Text(L"Description"), L"Wie es hei\x00dft");
    EXPECT_TRUE(german->FindProperty(L"Watts")->Qualifiers.Find(L"Values"));
    EXPECT_STREQ(german->FindMethod(L"Dim")->Qualifiers.Text(L"Description"), L"dimmt");
    EXPECT_STREQ(german->FindMethod(L"Dim")->In->FindProperty(L"Level")->Qualifiers.Text(L"Description"),
                 L"wie weit");
    EXPECT_EQ(german->FindMethod(L"Dim")->In->Properties().size(), 2u);
    EXPECT_FALSE(german->Qualifiers.Find(L"AMENDMENT"));
    EXPECT_STREQ(Class(L"FloorLamp", 0x407)->Qualifiers.Text(L"Description"), L"Lampe");
    EXPECT_STREQ(Class(L"FloorLamp", 0x409)->Qualifiers.Text(L"Description"), L"d");
}

TEST_F(Repository, AmendedQualifiersAreLeftOutUnlessAskedFor)
{
    Compile("[Description(\"d\"): Amended] class A { [Description(\"p\"): Amended] uint8 P; "
            "void M([In, Description(\"q\"): Amended] uint8 Q); };");
    EXPECT_FALSE(Class(L"A")->Qualifiers.Find(L"Description"));
    EXPECT_FALSE(Class(L"A")->FindProperty(L"P")->Qualifiers.Find(L"Description"));
    EXPECT_FALSE(Class(L"A")->FindMethod(L"M")->In->FindProperty(L"Q")->Qualifiers.Find(L"Description"));
    EXPECT_TRUE(Class(L"A", 0x409)->Qualifiers.Find(L"Description"));
    EXPECT_TRUE(
        Class(L"A", 0x409)->FindMethod(L"M")->In->FindProperty(L"Q")->Qualifiers.Find(L"Description"));
}

// Files and encodings

TEST_F(Repository, TextsComeInSeveralEncodings)
{
    const auto compileDefault = [&](const std::string& text)
    {
        Compile(text);
        return std::wstring(Class(L"A")->FindProperty(L"P")->Default.bstrVal);
    };
    EXPECT_EQ(compileDefault("class A { string P = \"\xC3\xA4\"; };"), L"\x00e4");
    EXPECT_EQ(compileDefault("\xEF\xBB\xBF"
                             "class A { string P = \"\xC3\xB6\"; };"),
              L"\x00f6");
    const std::wstring wide = L"\xFEFF"
                              L"class A { string P = \"\x20ac\"; };";
    EXPECT_EQ(compileDefault({reinterpret_cast<const char*>(wide.data()), wide.size() * sizeof(wchar_t)}),
              L"\x20ac");
    EXPECT_EQ(compileDefault("class A { string P = \"\xFC\"; };"), L"\x00fc"); // the ANSI code page
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

// What objects say of themselves can be compiled

TEST_F(Repository, ObjectTextsAreMof)
{
    Compile(kLamps);
    Compile("class Other { [Key] uint32 Id; sint64 Big = -5; boolean Yes = TRUE; real64 R = 2.5; "
            "datetime D = \"20240229120000.000000+000\"; char16 C = 'x'; string S = \"a\\\\b\\\"c\\n\"; Lamp "
            "ref L; "
            "uint32 U = 4294967295; boolean Bs[] = {TRUE, FALSE}; uint8 Bytes[] = {1, 2}; };"
            "instance of Other { Id = 3; L = \"Lamp.Name=\\\"desk\\\"\"; };");
    CRepository copy(L"PC");
    copy.Compile(kSystem, "system");
    for (const wchar_t* name : {L"Device", L"Lamp", L"FloorLamp", L"Other"})
    {
        CBstr text;
        ASSERT_EQ(m_repository.GetClass(kCimv2, name)->GetObjectText(0, text.Put()), S_OK);
        ASSERT_NO_THROW(copy.Compile(Utf8Text(text.View()), "copy")) << Utf8Text(text.View());
        EXPECT_EQ(m_repository.GetClass(kCimv2, name)->CompareTo(0, copy.GetClass(kCimv2, name).Get()),
                  WBEM_S_SAME)
            << Utf8Text(text.View());
    }
    for (const wchar_t* path : {L"Other.Id=3", L"FloorLamp.Name=\"corner\""})
    {
        CBstr text;
        const auto original = m_repository.GetInstance(kCimv2, path);
        ASSERT_EQ(original->GetObjectText(0, text.Put()), S_OK);
        ASSERT_NO_THROW(copy.Compile(Utf8Text(text.View()), "copy")) << Utf8Text(text.View());
        EXPECT_EQ(original->CompareTo(0, copy.GetInstance(kCimv2, path).Get()), WBEM_S_SAME)
            << Utf8Text(text.View());
    }
}
