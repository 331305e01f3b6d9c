// Classes for the tests of the stand-in's objects.
#pragma once

#include "standin/object/ClassDefinition.h"

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

// A class with the given properties; the first one is its key.
inline standin::ClassDefinition Class(const wchar_t* name,
                                      std::initializer_list<standin::CPropertyDefinition> properties)
{
    auto definition = std::make_shared<standin::CClassDefinition>(name);
    for (const auto& property : properties)
        definition->SetProperty(property);
    return definition;
}

inline standin::ClassDefinition Lamp()
{
    return Class(L"Lamp", {Property(L"Name", CIM_STRING, true), Property(L"Watts", CIM_UINT16),
                           Property(L"Lit", CIM_BOOLEAN), Property(L"Colours", CIM_UINT16 | CIM_FLAG_ARRAY)});
}
} // namespace sample
