// The CIM types that the schema has: what they are called and how their values travel in a VARIANT. Real
// numbers and characters are not among them.
#pragma once

#include <cstdint>
#include <string_view>
#include <wbemcli.h>

namespace standin
{
struct CCimType
{
    CIMTYPE Type;
    const wchar_t* Name;
    VARTYPE Variant; // types without a VARIANT form of their own travel in the next larger one, or as texts
    int64_t Low;     // of integers, else 0
    uint64_t High;

    bool IsInteger() const noexcept { return High != 0; }
};

// The type without CIM_FLAG_ARRAY.
constexpr CIMTYPE ElementType(CIMTYPE type)
{
    return type & ~CIM_FLAG_ARRAY;
}
constexpr bool IsArray(CIMTYPE type)
{
    return (type & CIM_FLAG_ARRAY) != 0;
}

// The row of a type or of its elements; null for what is no CIM type.
const CCimType* FindCimType(CIMTYPE type) noexcept;
// By the name that MOF has for it, without regard to case; "ref" and "object" are the types that name a
// class.
const CCimType* FindCimType(std::wstring_view name) noexcept;

// The VARIANT type in which a value of this type is stored and read, VT_ARRAY included; VT_EMPTY for what is
// no CIM type.
VARTYPE VariantTypeOf(CIMTYPE type) noexcept;
// The CIM type of a VARIANT where nobody says which; CIM_ILLEGAL where it has none.
CIMTYPE CimTypeOfVariant(VARTYPE type) noexcept;
} // namespace standin
