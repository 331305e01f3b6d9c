// What there is to read of a class object or an instance, for the functions that render it.
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

struct CObjectView
{
    const CClassDefinition& Definition;
    const CDecoration* Decoration; // may be null
    const CCimValue* Values;       // of an instance, one per property; null for a class

    bool IsClass() const noexcept { return !Values; }
    // False where the instance has only the value that its class gives it. Of a class: declared by itself.
    bool IsLocal(size_t index) const noexcept
    {
        return Values ? Values[index].vt != VT_EMPTY : Definition.Properties()[index].Local;
    }
    const CCimValue& Value(size_t index) const noexcept
    {
        return Values && Values[index].vt != VT_EMPTY ? Values[index]
                                                      : Definition.Properties()[index].Default;
    }
    long Flavor(size_t index) const noexcept
    {
        return IsLocal(index) ? WBEM_FLAVOR_ORIGIN_LOCAL : WBEM_FLAVOR_ORIGIN_PROPAGATED;
    }
};
} // namespace standin
