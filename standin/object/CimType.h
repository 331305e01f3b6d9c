// What CIM types are called and how their values travel in a VARIANT.
#pragma once

#include <string_view>
#include <wbemcli.h>

namespace standin
{
// The type without CIM_FLAG_ARRAY.
constexpr CIMTYPE ElementType(CIMTYPE type)
{
    return type & ~CIM_FLAG_ARRAY;
}
constexpr bool IsArray(CIMTYPE type)
{
    return (type & CIM_FLAG_ARRAY) != 0;
}

// "uint16" and the like for an element type; "ref" and "object" for the types that name a class. Null for
// what is no CIM type.
const wchar_t* CimTypeName(CIMTYPE elementType) noexcept;
// The reverse, without regard to case; CIM_ILLEGAL for what is no type's name.
CIMTYPE CimTypeFromName(std::wstring_view name) noexcept;

// The VARIANT type in which a value of this CIM type is stored and read, VT_ARRAY included; VT_EMPTY for
// what is no CIM type.
VARTYPE VariantTypeOf(CIMTYPE type) noexcept;
// The CIM type that a VARIANT type has where nobody says which; CIM_ILLEGAL where it has none.
CIMTYPE CimTypeOfVariant(VARTYPE type) noexcept;
} // namespace standin
