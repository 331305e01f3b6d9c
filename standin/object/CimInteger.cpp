#include "standin/object/CimInteger.h"

#include "Common/src/com/WmiStatus.h"
#include "standin/object/CimType.h"

#include <charconv>

namespace standin
{
namespace
{
// A whole decimal text, with a sign where it is signed.
std::optional<CInteger> ReadDecimal(const VARIANT& v)
{
    if (v.vt != VT_BSTR)
        return std::nullopt;
    char digits[24];
    const UINT length = SysStringLen(v.bstrVal);
    if (length == 0 || length >= sizeof digits)
        return std::nullopt;
    for (UINT i = 0; i < length; ++i)
        digits[i] = v.bstrVal[i] < 0x80 ? static_cast<char>(v.bstrVal[i]) : '?';
    const bool plus = digits[0] == '+' && digits[1] != '-';
    const char* first = digits + (plus ? 1 : 0);
    const char* last = digits + length;
    int64_t negative = 0;
    uint64_t positive = 0;
    const auto result =
        *first == '-' ? std::from_chars(first, last, negative) : std::from_chars(first, last, positive);
    if (result.ec != std::errc() || result.ptr != last)
        return std::nullopt;
    return *first == '-' ? CInteger::Signed(negative) : CInteger{false, positive};
}

struct CRange
{
    int64_t Low;
    uint64_t High;
};

constexpr CRange RangeOf(CIMTYPE type)
{
    switch (type)
    {
    case CIM_SINT8:
        return {INT8_MIN, INT8_MAX};
    case CIM_UINT8:
        return {0, UINT8_MAX};
    case CIM_SINT16:
        return {INT16_MIN, INT16_MAX};
    case CIM_UINT16:
        return {0, UINT16_MAX};
    case CIM_SINT32:
        return {INT32_MIN, INT32_MAX};
    case CIM_UINT32:
        return {0, UINT32_MAX};
    case CIM_SINT64:
        return {INT64_MIN, INT64_MAX};
    case CIM_UINT64:
        return {0, UINT64_MAX};
    case CIM_CHAR16: // both ways of looking at 16 bits
        return {INT16_MIN, UINT16_MAX};
    }
    return {0, 0};
}

bool Fits(const CInteger& value, const CRange& range)
{
    return value.Negative ? static_cast<int64_t>(value.Bits) >= range.Low : value.Bits <= range.High;
}

HRESULT StoreInteger(CInteger value, CIMTYPE type, CVariant& stored)
{
    if (!Fits(value, RangeOf(type)))
        return wmi::TypeMismatch;
    stored.Put();
    switch (VariantTypeOf(type))
    {
    case VT_UI1:
        stored.bVal = static_cast<BYTE>(value.Bits);
        break;
    case VT_I2:
        stored.iVal = static_cast<SHORT>(value.Bits);
        break;
    case VT_I4:
        stored.lVal = static_cast<LONG>(value.Bits);
        break;
    default:
    {
        const std::wstring digits =
            value.Negative ? std::to_wstring(static_cast<int64_t>(value.Bits)) : std::to_wstring(value.Bits);
        stored.bstrVal = CBstr(digits).Detach();
    }
    }
    stored.vt = VariantTypeOf(type);
    return S_OK;
}

// A uint32 arrives as VT_I4 with the same bits.
CInteger AsUnsigned32(const VARIANT& given, CInteger value)
{
    if ((given.vt == VT_I4 || given.vt == VT_INT) && value.Negative)
        return {false, static_cast<uint32_t>(value.Bits)};
    return value;
}
} // namespace

std::optional<CInteger> ReadInteger(const VARIANT& v)
{
    switch (v.vt)
    {
    case VT_I1:
        return CInteger::Signed(v.cVal);
    case VT_UI1:
        return CInteger{false, v.bVal};
    case VT_I2:
        return CInteger::Signed(v.iVal);
    case VT_UI2:
        return CInteger{false, v.uiVal};
    case VT_I4:
    case VT_INT:
        return CInteger::Signed(v.lVal);
    case VT_UI4:
    case VT_UINT:
        return CInteger{false, v.ulVal};
    case VT_I8:
        return CInteger::Signed(v.llVal);
    case VT_UI8:
        return CInteger{false, v.ullVal};
    }
    return std::nullopt;
}

HRESULT ToCimInteger(const VARIANT& given, CIMTYPE type, CVariant& stored)
{
    auto integer = ReadInteger(given);
    if (!integer && VariantTypeOf(type) == VT_BSTR)
        integer = ReadDecimal(given);
    if (!integer)
        return wmi::TypeMismatch;
    return StoreInteger(type == CIM_UINT32 ? AsUnsigned32(given, *integer) : *integer, type, stored);
}
} // namespace standin
