// Classes and values for the tests of the stand-in's objects.
#pragma once

#include "Common/src/com/SafeArray.h"
#include "standin/object/Objects.h"

#include <gtest/gtest.h>

namespace sample
{
inline standin::CPropertyDefinition Property(const wchar_t* name, CIMTYPE type, bool key = false)
{
    standin::CPropertyDefinition property;
    property.Name = name;
    property.Type = type;
    if (key)
        property.Qualifiers.Set(standin::MakeQualifier(L"key", CVariant::FromBool(true)));
    return property;
}

inline standin::ClassDefinition Class(const wchar_t* name,
                                      std::initializer_list<standin::CPropertyDefinition> properties)
{
    auto definition = std::make_shared<standin::CClassDefinition>(name);
    for (const auto& property : properties)
        definition->SetProperty(property);
    return definition;
}

// A base with a method and qualifiers of every reach: "mine" stays, "down" reaches derived classes, "out"
// reaches instances as well.
inline standin::ClassDefinition Device()
{
    const auto qualifier = [](const wchar_t* name, long flavor) {
        return standin::CQualifier{name, standin::CCimValue(CVariant::FromText(name)), flavor};
    };
    auto definition = std::make_shared<standin::CClassDefinition>(L"Device");
    auto name = Property(L"Name", CIM_STRING, true);
    for (auto* qualifiers : {&definition->Qualifiers, &name.Qualifiers})
    {
        qualifiers->Set(qualifier(L"mine", 0));
        qualifiers->Set(qualifier(L"down", WBEM_FLAVOR_FLAG_PROPAGATE_TO_DERIVED_CLASS));
        qualifiers->Set(qualifier(L"everywhere", WBEM_FLAVOR_FLAG_PROPAGATE_TO_DERIVED_CLASS |
                                                     WBEM_FLAVOR_FLAG_PROPAGATE_TO_INSTANCE));
    }
    definition->SetProperty(name);
    auto status = Property(L"Status", CIM_STRING);
    status.Default = standin::CCimValue(CVariant::FromText(L"OK"));
    definition->SetProperty(status);
    standin::CMethodDefinition reset;
    reset.Name = L"Reset";
    reset.In = Class(L"__PARAMETERS", {Property(L"Mode", CIM_UINT16)});
    reset.Out = Class(L"__PARAMETERS", {Property(L"ReturnValue", CIM_UINT32)});
    reset.Qualifiers.Set(standin::MakeQualifier(L"Implemented", CVariant::FromBool(true)));
    definition->SetMethod(reset);
    return definition;
}

// Derived from Device, which gives it its key.
inline standin::ClassDefinition Lamp()
{
    auto definition = std::make_shared<standin::CClassDefinition>(L"Lamp", *Device());
    definition->SetProperty(Property(L"Watts", CIM_UINT16));
    definition->SetProperty(Property(L"Lit", CIM_BOOLEAN));
    definition->SetProperty(Property(L"Colours", CIM_UINT16 | CIM_FLAG_ARRAY));
    definition->SetProperty(Property(L"Socket", CIM_REFERENCE));
    definition->SetProperty(Property(L"Inner", CIM_OBJECT));
    standin::CMethodDefinition dim;
    dim.Name = L"Dim";
    definition->SetMethod(dim);
    return definition;
}

// A class without a name and without anything else.
inline ComPtr<IWbemClassObject> EmptyClass()
{
    return standin::MakeClassObject(std::make_shared<standin::CClassDefinition>(L""));
}

inline HRESULT PutText(IWbemClassObject& object, const wchar_t* name, const wchar_t* text)
{
    CVariant value = CVariant::FromText(text);
    return object.Put(name, 0, &value, 0);
}

inline HRESULT PutLong(IWbemClassObject& object, const wchar_t* name, LONG number)
{
    CVariant value = CVariant::FromLong(number);
    return object.Put(name, 0, &value, 0);
}

// A property that must be there, as text: "<null>" without a value.
inline std::wstring Text(IWbemClassObject& object, const wchar_t* name)
{
    CVariant value;
    EXPECT_EQ(object.Get(name, 0, &value, nullptr, nullptr), S_OK);
    if (value.vt == VT_NULL)
        return L"<null>";
    EXPECT_EQ(value.vt, VT_BSTR);
    return value.vt == VT_BSTR ? value.bstrVal : L"<other type>";
}

inline std::vector<std::wstring> Strings(SAFEARRAY* array)
{
    std::vector<std::wstring> result;
    for (const BSTR text : CSafeArrayView<BSTR>(array, VT_BSTR).Items())
        result.emplace_back(text ? text : L"");
    return result;
}

inline std::vector<std::wstring> Names(IWbemClassObject& object, long flags)
{
    CSafeArray names;
    EXPECT_EQ(object.GetNames(nullptr, flags, nullptr, names.Put()), S_OK);
    return Strings(names.Get());
}
} // namespace sample
