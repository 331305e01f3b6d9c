// Class objects: what is put into them, methods and their signatures, qualifiers.
#include "Common/src/com/WmiStatus.h"
#include "tests/unit/standin_object/SampleClass.h"

using namespace standin;
using sample::PutLong;
using sample::PutText;
using sample::Text;

// Scripts fill in the signature itself.
TEST(ClassObject, HoldsWhatIsPut)
{
    const auto lamp = MakeClassObject(sample::Lamp());
    EXPECT_EQ(PutText(*lamp, L"Status", L"dim"), S_OK);
    EXPECT_EQ(Text(*lamp, L"Status"), L"dim");
    EXPECT_EQ(PutLong(*lamp, L"Status", 1), wmi::TypeMismatch);
    EXPECT_EQ(PutText(*lamp, L"Weight", L"1"), wmi::NotFound);
    EXPECT_EQ(sample::Names(*lamp, WBEM_FLAG_LOCAL_ONLY), (std::vector<std::wstring>{L"Status"}));
    ComPtr<IWbemClassObject> spawned;
    ASSERT_EQ(lamp->SpawnInstance(0, spawned.Put()), S_OK);
    EXPECT_EQ(Text(*spawned, L"Status"), L"OK");
}

TEST(ClassObject, SpawnsOnlyWhereItIsComplete)
{
    auto definition = std::make_shared<CClassDefinition>(*sample::Device());
    definition->Qualifiers.Set(MakeQualifier(L"abstract", CVariant::FromBool(true)));
    ComPtr<IWbemClassObject> instance;
    for (const auto& object : {sample::EmptyClass(), MakeClassObject(definition)})
        EXPECT_EQ(object->SpawnInstance(0, instance.Put()), static_cast<HRESULT>(WBEM_E_INCOMPLETE_CLASS));
}

TEST(ClassObject, WhatNobodyAsksForIsNotSupported)
{
    const auto lamp = MakeClassObject(sample::Lamp());
    CBstr text;
    ComPtr<IWbemClassObject> derived;
    EXPECT_EQ(lamp->GetObjectText(0, text.Put()), wmi::NotSupported);
    EXPECT_EQ(lamp->SpawnDerivedClass(0, derived.Put()), wmi::NotSupported);
    EXPECT_EQ(lamp->Delete(L"Status"), wmi::NotSupported);
}

// Methods

TEST(Methods, SignaturesAreCopies)
{
    const auto lamp = MakeClassObject(sample::Lamp());
    ComPtr<IWbemClassObject> in;
    ComPtr<IWbemClassObject> out;
    ASSERT_EQ(lamp->GetMethod(L"reset", 0, in.Put(), out.Put()), S_OK);
    EXPECT_EQ(Text(*in, L"__CLASS"), L"__PARAMETERS");
    EXPECT_EQ(PutLong(*in, L"Mode", 2), S_OK);
    EXPECT_EQ(PutLong(*in, L"Mode", 70000), wmi::TypeMismatch);
    EXPECT_EQ(PutLong(*out, L"ReturnValue", 0), S_OK);
    ComPtr<IWbemClassObject> again;
    ASSERT_EQ(lamp->GetMethod(L"Reset", 0, again.Put(), nullptr), S_OK);
    EXPECT_EQ(Text(*again, L"Mode"), L"<null>");
    ComPtr<IWbemClassObject> parameters;
    ASSERT_EQ(in->SpawnInstance(0, parameters.Put()), S_OK);
    EXPECT_EQ(Text(*parameters, L"Mode"), L"<null>");
}

TEST(Methods, AMissingSignatureIsANullPointer)
{
    const auto lamp = MakeClassObject(sample::Lamp());
    ComPtr<IWbemClassObject> in = sample::EmptyClass();
    ComPtr<IWbemClassObject> out = sample::EmptyClass();
    EXPECT_EQ(lamp->GetMethod(L"Dim", 0, in.Put(), out.Put()), S_OK);
    EXPECT_FALSE(in);
    EXPECT_FALSE(out);
    EXPECT_EQ(lamp->GetMethod(L"Explode", 0, in.Put(), nullptr), wmi::NotFound);
    EXPECT_EQ(lamp->GetMethod(nullptr, 0, in.Put(), nullptr), wmi::InvalidParameter);
}

namespace
{
void EnumerateMethods(IWbemClassObject* lamp)
{
    EXPECT_EQ(lamp->NextMethod(0, nullptr, nullptr, nullptr), static_cast<HRESULT>(WBEM_E_UNEXPECTED));
    ASSERT_EQ(lamp->BeginMethodEnumeration(0), S_OK);
    CBstr name;
    ComPtr<IWbemClassObject> in;
    EXPECT_EQ(lamp->NextMethod(0, name.Put(), in.Put(), nullptr), S_OK);
    EXPECT_EQ(name.View(), L"Reset");
    EXPECT_EQ(Text(*in, L"Mode"), L"<null>");
    EXPECT_EQ(lamp->NextMethod(0, name.Put(), nullptr, nullptr), S_OK);
    EXPECT_EQ(name.View(), L"Dim");
    EXPECT_EQ(lamp->NextMethod(0, nullptr, nullptr, nullptr), WBEM_S_NO_MORE_DATA);
    EXPECT_EQ(lamp->EndMethodEnumeration(), S_OK);
    EXPECT_EQ(lamp->BeginMethodEnumeration(WBEM_FLAG_KEYS_ONLY), wmi::InvalidParameter);
}
} // namespace

TEST(Methods, AreEnumeratedOfClasses)
{
    EnumerateMethods(MakeClassObject(sample::Lamp()).Get());
}

// Instances have them only for those who cannot do without.
TEST(Methods, OfInstancesAreShownToWinesScriptingObjectsOnly)
{
    const auto lamp = MakeInstance(sample::Lamp());
    ComPtr<IWbemClassObject> in;
    EXPECT_EQ(lamp->GetMethod(L"Reset", 0, in.Put(), nullptr),
              static_cast<HRESULT>(WBEM_E_ILLEGAL_OPERATION));
    EXPECT_EQ(lamp->BeginMethodEnumeration(0), static_cast<HRESULT>(WBEM_E_ILLEGAL_OPERATION));
    const HMODULE scripting = LoadLibraryW(L"wbemdisp.dll");
    ASSERT_TRUE(scripting);
    EXPECT_EQ(lamp->GetMethod(L"Reset", 0, in.Put(), nullptr), S_OK);
    EnumerateMethods(lamp.Get());
    FreeLibrary(scripting);
    EXPECT_EQ(lamp->BeginMethodEnumeration(0), static_cast<HRESULT>(WBEM_E_ILLEGAL_OPERATION));
}
