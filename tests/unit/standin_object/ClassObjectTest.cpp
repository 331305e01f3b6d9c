// Class objects: changing a definition, deriving, methods and their signatures, comparison.
#include "Common/src/com/WmiStatus.h"
#include "tests/unit/standin_object/SampleClass.h"

using namespace standin;
using sample::PutLong;
using sample::PutText;
using sample::Text;

TEST(ClassObject, APutMakesTheDefaultOfLaterInstances)
{
    const auto lamp = MakeClassObject(sample::Lamp());
    ComPtr<IWbemClassObject> before;
    lamp->SpawnInstance(0, before.Put());
    EXPECT_EQ(PutText(*lamp, L"Status", L"dim"), S_OK);
    ComPtr<IWbemClassObject> after;
    lamp->SpawnInstance(0, after.Put());
    EXPECT_EQ(Text(*before, L"Status"), L"OK");
    EXPECT_EQ(Text(*after, L"Status"), L"dim");
    EXPECT_EQ(PutLong(*lamp, L"Status", 1), wmi::TypeMismatch);
}

TEST(ClassObject, IsBuiltFromAnEmptyOne)
{
    const auto made = MakeEmptyClass();
    ComPtr<IWbemClassObject> instance;
    EXPECT_EQ(made->SpawnInstance(0, instance.Put()), static_cast<HRESULT>(WBEM_E_INCOMPLETE_CLASS));
    EXPECT_EQ(PutText(*made, L"__CLASS", L"1Made"), wmi::InvalidParameter);
    EXPECT_EQ(PutText(*made, L"__CLASS", L"Made"), S_OK);
    EXPECT_EQ(made->Put(L"Numbers", 0, nullptr, CIM_UINT16 | CIM_FLAG_ARRAY), S_OK);
    EXPECT_EQ(PutText(*made, L"Name", L""), S_OK);
    EXPECT_EQ(made->Put(L"Typeless", 0, nullptr, 0), wmi::InvalidParameter);
    EXPECT_EQ(PutText(*made, L"__SERVER", L"x"), static_cast<HRESULT>(WBEM_E_SYSTEM_PROPERTY));
    CIMTYPE type = 0;
    made->Get(L"Name", 0, nullptr, &type, nullptr);
    EXPECT_EQ(type, CIM_STRING);
    ComPtr<IWbemQualifierSet> qualifiers;
    ASSERT_EQ(made->GetPropertyQualifierSet(L"Name", qualifiers.Put()), S_OK);
    CVariant key = CVariant::FromBool(true);
    EXPECT_EQ(qualifiers->Put(L"key", &key, 3), S_OK);
    ASSERT_EQ(made->SpawnInstance(0, instance.Put()), S_OK);
    EXPECT_EQ(Text(*instance, L"__RELPATH"), L"Made.Name=\"\"");
    CBstr origin;
    EXPECT_EQ(made->GetPropertyOrigin(L"Name", origin.Put()), S_OK);
    EXPECT_EQ(origin.View(), L"Made");
    EXPECT_EQ(made->Delete(L"Name"), S_OK);
    EXPECT_EQ(made->Delete(L"Name"), wmi::NotFound);
}

TEST(ClassObject, HoldsNoMorePropertiesThanTheServiceWould)
{
    const auto made = MakeEmptyClass();
    for (size_t i = 0; i < CClassDefinition::kMaxProperties; ++i)
        ASSERT_EQ(made->Put((L"P" + std::to_wstring(i)).c_str(), 0, nullptr, CIM_UINT8), S_OK);
    EXPECT_EQ(made->Put(L"OneMore", 0, nullptr, CIM_UINT8), static_cast<HRESULT>(WBEM_E_TOO_MANY_PROPERTIES));
}

TEST(ClassObject, DerivesAndKnowsWhatIsInherited)
{
    const auto device = MakeClassObject(sample::Device());
    ComPtr<IWbemClassObject> derived;
    ASSERT_EQ(device->SpawnDerivedClass(0, derived.Put()), S_OK);
    EXPECT_EQ(PutText(*derived, L"__CLASS", L"Heater"), S_OK);
    EXPECT_EQ(derived->Put(L"Degrees", 0, nullptr, CIM_SINT16), S_OK);
    EXPECT_EQ(Text(*derived, L"__SUPERCLASS"), L"Device");
    CBstr origin;
    derived->GetPropertyOrigin(L"Name", origin.Put());
    EXPECT_EQ(origin.View(), L"Device");
    derived->GetPropertyOrigin(L"Degrees", origin.Put());
    EXPECT_EQ(origin.View(), L"Heater");
    derived->GetPropertyOrigin(L"__PATH", origin.Put());
    EXPECT_EQ(origin.View(), L"___SYSTEM");
    EXPECT_EQ(derived->GetPropertyOrigin(L"Weight", origin.Put()), wmi::NotFound);
    EXPECT_EQ(derived->InheritsFrom(L"DEVICE"), S_OK);
    EXPECT_EQ(derived->InheritsFrom(L"Heater"), S_OK);
    EXPECT_EQ(derived->InheritsFrom(L"Lamp"), S_FALSE);
    EXPECT_EQ(derived->Delete(L"Name"), static_cast<HRESULT>(WBEM_E_PROPAGATED_PROPERTY));
    EXPECT_EQ(device->Get(L"Degrees", 0, nullptr, nullptr, nullptr), wmi::NotFound);
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
    CVariant mode;
    parameters->Get(L"Mode", 0, &mode, nullptr, nullptr);
    EXPECT_EQ(mode.lVal, 2);
}

TEST(Methods, AMissingSignatureIsANullPointer)
{
    const auto lamp = MakeClassObject(sample::Lamp());
    ComPtr<IWbemClassObject> in = MakeEmptyClass();
    ComPtr<IWbemClassObject> out = MakeEmptyClass();
    EXPECT_EQ(lamp->GetMethod(L"Dim", 0, in.Put(), out.Put()), S_OK);
    EXPECT_FALSE(in);
    EXPECT_FALSE(out);
    EXPECT_EQ(lamp->GetMethod(L"Explode", 0, in.Put(), nullptr), wmi::NotFound);
    EXPECT_EQ(lamp->GetMethod(nullptr, 0, in.Put(), nullptr), wmi::InvalidParameter);
}

namespace
{
std::vector<std::wstring> MethodNames(IWbemClassObject& object, long flags)
{
    std::vector<std::wstring> names;
    EXPECT_EQ(object.BeginMethodEnumeration(flags), S_OK);
    CBstr name;
    while (object.NextMethod(0, name.Put(), nullptr, nullptr) == S_OK)
        names.emplace_back(name.View());
    EXPECT_EQ(object.NextMethod(0, nullptr, nullptr, nullptr), WBEM_S_NO_MORE_DATA);
    EXPECT_EQ(object.EndMethodEnumeration(), S_OK);
    return names;
}
} // namespace

TEST(Methods, AreEnumerated)
{
    const auto lamp = MakeClassObject(sample::Lamp());
    using Names = std::vector<std::wstring>;
    EXPECT_EQ(lamp->NextMethod(0, nullptr, nullptr, nullptr), static_cast<HRESULT>(WBEM_E_UNEXPECTED));
    EXPECT_EQ(MethodNames(*lamp, 0), (Names{L"Reset", L"Dim"}));
    EXPECT_EQ(MethodNames(*lamp, WBEM_FLAG_LOCAL_ONLY), (Names{L"Dim"}));
    EXPECT_EQ(MethodNames(*lamp, WBEM_FLAG_PROPAGATED_ONLY), (Names{L"Reset"}));
    EXPECT_EQ(lamp->BeginMethodEnumeration(WBEM_FLAG_KEYS_ONLY), wmi::InvalidParameter);
}

TEST(Methods, TellTheirOriginAndQualifiers)
{
    const auto device = MakeClassObject(sample::Device());
    CBstr origin;
    EXPECT_EQ(device->GetMethodOrigin(L"Reset", origin.Put()), S_OK);
    EXPECT_EQ(origin.View(), L"Device");
    EXPECT_EQ(device->GetMethodOrigin(L"Explode", origin.Put()), wmi::NotFound);
    ComPtr<IWbemQualifierSet> qualifiers;
    ASSERT_EQ(device->GetMethodQualifierSet(L"Reset", qualifiers.Put()), S_OK);
    EXPECT_EQ(qualifiers->Get(L"implemented", 0, nullptr, nullptr), S_OK);
    EXPECT_EQ(device->GetMethodQualifierSet(L"Explode", qualifiers.Put()), wmi::NotFound);
}

TEST(Methods, AreAddedAndRemoved)
{
    const auto lamp = MakeClassObject(sample::Lamp());
    const auto in = MakeClassObject(sample::Class(L"__PARAMETERS", {sample::Property(L"Level", CIM_UINT8)}));
    EXPECT_EQ(lamp->PutMethod(L"Fade", 0, in.Get(), nullptr), S_OK);
    ComPtr<IWbemClassObject> read;
    ASSERT_EQ(lamp->GetMethod(L"Fade", 0, read.Put(), nullptr), S_OK);
    EXPECT_EQ(Text(*read, L"Level"), L"<null>");
    EXPECT_EQ(lamp->DeleteMethod(L"Fade"), S_OK);
    EXPECT_EQ(lamp->DeleteMethod(L"Fade"), wmi::NotFound);
    EXPECT_EQ(lamp->DeleteMethod(L"Reset"), static_cast<HRESULT>(WBEM_E_PROPAGATED_METHOD));
}

// Comparison

TEST(CompareTo, LooksAtClassValuesAndQualifiers)
{
    const auto a = MakeInstance(sample::Lamp());
    const auto b = MakeInstance(sample::Lamp());
    PutText(*a, L"Name", L"desk");
    EXPECT_EQ(a->CompareTo(0, b.Get()), WBEM_S_DIFFERENT);
    PutText(*b, L"Name", L"DESK");
    EXPECT_EQ(a->CompareTo(0, b.Get()), WBEM_S_DIFFERENT);
    EXPECT_EQ(a->CompareTo(WBEM_FLAG_IGNORE_CASE, b.Get()), WBEM_S_SAME);
    PutText(*b, L"Name", L"desk");
    EXPECT_EQ(a->CompareTo(0, b.Get()), WBEM_S_SAME);
    Decorate(b.Get(), L"PC", L"root");
    EXPECT_EQ(a->CompareTo(0, b.Get()), WBEM_S_DIFFERENT);
    EXPECT_EQ(a->CompareTo(WBEM_FLAG_IGNORE_OBJECT_SOURCE, b.Get()), WBEM_S_SAME);
    ComPtr<IWbemQualifierSet> qualifiers;
    a->GetQualifierSet(qualifiers.Put());
    CVariant note = CVariant::FromText(L"x");
    qualifiers->Put(L"note", &note, 0);
    EXPECT_EQ(a->CompareTo(WBEM_FLAG_IGNORE_OBJECT_SOURCE, b.Get()), WBEM_S_DIFFERENT);
    EXPECT_EQ(a->CompareTo(WBEM_FLAG_IGNORE_OBJECT_SOURCE | WBEM_FLAG_IGNORE_QUALIFIERS, b.Get()),
              WBEM_S_SAME);
    EXPECT_EQ(a->CompareTo(0, nullptr), wmi::InvalidParameter);
    EXPECT_EQ(a->CompareTo(0x4000, b.Get()), wmi::InvalidParameter);
}

TEST(CompareTo, ClassesByTheirDefaults)
{
    const auto a = MakeClassObject(sample::Lamp());
    const auto b = MakeClassObject(sample::Lamp());
    EXPECT_EQ(a->CompareTo(0, b.Get()), WBEM_S_SAME);
    EXPECT_EQ(a->CompareTo(0, MakeInstance(sample::Lamp()).Get()), WBEM_S_DIFFERENT);
    PutText(*b, L"Status", L"x");
    EXPECT_EQ(a->CompareTo(0, b.Get()), WBEM_S_DIFFERENT);
    EXPECT_EQ(a->CompareTo(WBEM_FLAG_IGNORE_DEFAULT_VALUES, b.Get()), WBEM_S_SAME);
}
