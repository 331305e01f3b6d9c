#include "standin/object/CimType.h"

#include "Common/src/com/Text.h"

namespace standin
{
namespace
{
struct CRow
{
    CIMTYPE Type;
    const wchar_t* Name;
    VARTYPE Variant;
};

// Types without a VARIANT form of their own travel in the next larger signed one, 64-bit integers as texts.
constexpr CRow kTypes[] = {
    {CIM_SINT8, L"sint8", VT_I2},         {CIM_UINT8, L"uint8", VT_UI1},
    {CIM_SINT16, L"sint16", VT_I2},       {CIM_UINT16, L"uint16", VT_I4},
    {CIM_SINT32, L"sint32", VT_I4},       {CIM_UINT32, L"uint32", VT_I4},
    {CIM_SINT64, L"sint64", VT_BSTR},     {CIM_UINT64, L"uint64", VT_BSTR},
    {CIM_REAL32, L"real32", VT_R4},       {CIM_REAL64, L"real64", VT_R8},
    {CIM_BOOLEAN, L"boolean", VT_BOOL},   {CIM_STRING, L"string", VT_BSTR},
    {CIM_DATETIME, L"datetime", VT_BSTR}, {CIM_REFERENCE, L"ref", VT_BSTR},
    {CIM_CHAR16, L"char16", VT_I2},       {CIM_OBJECT, L"object", VT_UNKNOWN},
};

const CRow* Find(CIMTYPE elementType) noexcept
{
    for (const CRow& row : kTypes)
        if (row.Type == elementType)
            return &row;
    return nullptr;
}
} // namespace

const wchar_t* CimTypeName(CIMTYPE elementType) noexcept
{
    const CRow* row = Find(elementType);
    return row ? row->Name : nullptr;
}

CIMTYPE CimTypeFromName(std::wstring_view name) noexcept
{
    for (const CRow& row : kTypes)
        if (EqualNoCaseAscii(row.Name, name))
            return row.Type;
    return CIM_ILLEGAL;
}

VARTYPE VariantTypeOf(CIMTYPE type) noexcept
{
    const CRow* row = Find(ElementType(type));
    if (!row)
        return VT_EMPTY;
    return static_cast<VARTYPE>(IsArray(type) ? VT_ARRAY | row->Variant : row->Variant);
}

CIMTYPE CimTypeOfVariant(VARTYPE type) noexcept
{
    const CIMTYPE array = type & VT_ARRAY ? CIM_FLAG_ARRAY : 0;
    switch (type & ~VT_ARRAY)
    {
    case VT_I1:
        return CIM_SINT8 | array;
    case VT_UI1:
        return CIM_UINT8 | array;
    case VT_I2:
        return CIM_SINT16 | array;
    case VT_UI2:
        return CIM_UINT16 | array;
    case VT_I4:
    case VT_INT:
        return CIM_SINT32 | array;
    case VT_UI4:
    case VT_UINT:
        return CIM_UINT32 | array;
    case VT_R4:
        return CIM_REAL32 | array;
    case VT_R8:
        return CIM_REAL64 | array;
    case VT_BOOL:
        return CIM_BOOLEAN | array;
    case VT_BSTR:
        return CIM_STRING | array;
    case VT_UNKNOWN:
    case VT_DISPATCH:
        return CIM_OBJECT | array;
    }
    return CIM_ILLEGAL;
}
} // namespace standin
