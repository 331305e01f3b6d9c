// What there is to know of a class object or an instance.
#pragma once

#include "standin/object/ClassDefinition.h"

namespace standin
{
// Where an object came from.
struct CDecoration
{
    std::wstring Server;
    std::wstring Namespace;
};

struct CObjectState
{
    ClassDefinition Definition;    // of an instance in the form for instances
    bool IsClass = false;          // a class, or the signature of a method
    std::vector<CCimValue> Values; // what was put, one per property; VT_EMPTY where the class's value holds
    std::shared_ptr<const CDecoration> Decoration; // may be null

    CObjectState(ClassDefinition definition, bool isClass)
        : Definition(std::move(definition)), IsClass(isClass), Values(Definition->Properties().size())
    {
    }

    const CCimValue& Value(size_t index) const noexcept
    {
        return Values[index].vt != VT_EMPTY ? Values[index] : Definition->Properties()[index].Default;
    }
    bool IsLocal(size_t index) const noexcept { return Values[index].vt != VT_EMPTY; }
};

// Whether a name is that of a property that every object has, such as "__CLASS".
bool IsSystemProperty(std::wstring_view name) noexcept;

// The out-parameters of IWbemClassObject::Get, each of which may be null.
HRESULT ReadProperty(const CObjectState& object, std::wstring_view name, VARIANT* value, CIMTYPE* type,
                     LONG* flavor);

// The names that an enumeration visits, system properties first. Of the flags of GetNames only the condition
// on the origin is understood: WBEM_E_INVALID_PARAMETER for others.
HRESULT SelectNames(const CObjectState& object, long flags, std::vector<std::wstring>& names);
} // namespace standin
