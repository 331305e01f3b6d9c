#include "standin/object/CimType.h"

#include "Common/src/com/Text.h"

#include <algorithm>

namespace standin
{
namespace
{
constexpr CCimType kTypes[] = {
    {CIM_SINT8, L"sint8", VT_I2, INT8_MIN, INT8_MAX},
    {CIM_UINT8, L"uint8", VT_UI1, 0, UINT8_MAX},
    {CIM_SINT16, L"sint16", VT_I2, INT16_MIN, INT16_MAX},
    {CIM_UINT16, L"uint16", VT_I4, 0, UINT16_MAX},
    {CIM_SINT32, L"sint32", VT_I4, INT32_MIN, INT32_MAX},
    {CIM_UINT32, L"uint32", VT_I4, 0, UINT32_MAX},
    {CIM_SINT64, L"sint64", VT_BSTR, INT64_MIN, INT64_MAX},
    {CIM_UINT64, L"uint64", VT_BSTR, 0, UINT64_MAX},
    {CIM_BOOLEAN, L"boolean", VT_BOOL, 0, 0},
    {CIM_STRING, L"string", VT_BSTR, 0, 0},
    {CIM_DATETIME, L"datetime", VT_BSTR, 0, 0},
    {CIM_REFERENCE, L"ref", VT_BSTR, 0, 0},
    {CIM_OBJECT, L"object", VT_UNKNOWN, 0, 0},
};

template <class Is>
const CCimType* Find(Is&& is) noexcept
{
    const auto found = std::ranges::find_if(kTypes, is);
    return found == std::end(kTypes) ? nullptr : found;
}
} // namespace

const CCimType* FindCimType(CIMTYPE type) noexcept
{
    return Find([type](const CCimType& row) { return row.Type == ElementType(type); });
}

const CCimType* FindCimType(std::wstring_view name) noexcept
{
    return Find([name](const CCimType& row) { return EqualNoCaseAscii(row.Name, name); });
}

VARTYPE VariantTypeOf(CIMTYPE type) noexcept
{
    const CCimType* row = FindCimType(type);
    if (!row)
        return VT_EMPTY;
    return static_cast<VARTYPE>(IsArray(type) ? VT_ARRAY | row->Variant : row->Variant);
}

CIMTYPE CimTypeOfVariant(VARTYPE type) noexcept
{
    const CIMTYPE array = type & VT_ARRAY ? CIM_FLAG_ARRAY : 0;
    switch (type & ~VT_ARRAY)
    {
    case VT_UI1:
        return CIM_UINT8 | array;
    case VT_I2:
        return CIM_SINT16 | array;
    case VT_I4:
        return CIM_SINT32 | array;
    case VT_BOOL:
        return CIM_BOOLEAN | array;
    case VT_BSTR:
        return CIM_STRING | array;
    }
    return CIM_ILLEGAL;
}
} // namespace standin
