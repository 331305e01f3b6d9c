#include "CDM/src/ZebValue.h"

#include "Common/src/com/SafeArray.h"
#include "Common/src/com/Text.h"

#include <cstdio>
#include <cstdlib>
#include <wbemcli.h>

namespace
{
constexpr long kAnyCimType = -1;

// Room for the longest of all: a double of 309 digits.
template <class... Args>
std::string Format(const char* format, Args... args)
{
    char text[400] = {};
    _snprintf(text, sizeof(text) - 1, format, args...);
    return text;
}

// 64-bit integers of either sign travel as decimal texts. What is no number gives 0; what exceeds the signed
// range keeps its 64 bits, so that the upper half of the unsigned range is shown right.
long long Parse64(BSTR text) noexcept
{
    return static_cast<long long>(text ? _wcstoui64(text, nullptr, 10) : 0);
}

std::string Quoted(BSTR text)
{
    return "\"" + (text ? NarrowText(text) : std::string()) + "\"";
}

std::string FromI2(SHORT v)
{
    return Format("%hd", v);
}
std::string FromI4(LONG v)
{
    return Format("%d", v);
}
std::string FromSint64(BSTR v)
{
    return Format("%I64d", Parse64(v));
}
std::string FromUint64(BSTR v)
{
    return Format("%I64u", Parse64(v));
}

std::string SignedByte(const VARIANT& v)
{
    const int n = static_cast<signed char>(v.cVal);
    return n < 32 ? Format("%hd (0x%hX)", n, n) : Format("'%c' (%hd, 0x%hX)", n, n, n);
}

std::string UnsignedByte(const VARIANT& v)
{
    const int n = v.bVal;
    return n < 0x20 ? Format("%hu (0x%hX)", n, n) : Format("'%c' (%hu, 0x%hX)", n, n, n);
}

// Empty if the array cannot be read as what its type says.
template <class T, VARTYPE Type, std::string (*FromElement)(T)>
std::string Elements(const VARIANT& v)
{
    const CSafeArrayView<T> view(v.parray, Type);
    if (!view.Valid())
        return {};
    if (view.Items().empty())
        return "<empty array>";
    std::string text;
    for (const T& element : view.Items())
    {
        if (&element != view.Items().data())
            text += ",";
        text += FromElement(element);
    }
    return text;
}

// The first row that fits decides.
struct Row
{
    VARTYPE Type;
    long CimType;
    const char* Label;
    std::string (*Value)(const VARIANT&);
};

constexpr Row kRows[] = {
    {VT_EMPTY, kAnyCimType, "<empty>", [](const VARIANT&) { return std::string(); }},
    {VT_NULL, kAnyCimType, "<null>", [](const VARIANT&) { return std::string(); }},
    {VT_I2, kAnyCimType, "I2 ", [](const VARIANT& v) { return Format("%hd (0x%hX)", v.iVal, v.iVal); }},
    {VT_I4, kAnyCimType, "I4 ", [](const VARIANT& v) { return Format("%d (0x%X)", v.lVal, v.lVal); }},
    {VT_R4, kAnyCimType, "R4 ",
     [](const VARIANT& v) { return Format("%10.4f", static_cast<double>(v.fltVal)); }},
    {VT_R8, kAnyCimType, "R8 ", [](const VARIANT& v) { return Format("%10.4f", v.dblVal); }},
    {VT_BSTR, CIM_SINT64, "BSTR SINT64 ", [](const VARIANT& v) { return FromSint64(v.bstrVal); }},
    {VT_BSTR, CIM_UINT64, "BSTR UINT64 ", [](const VARIANT& v) { return FromUint64(v.bstrVal); }},
    {VT_BSTR, kAnyCimType, "BSTR ", [](const VARIANT& v) { return Quoted(v.bstrVal); }},
    {VT_BOOL, kAnyCimType, "",
     [](const VARIANT& v) { return std::string(v.boolVal == VARIANT_FALSE ? "FALSE" : "TRUE"); }},
    {VT_I1, kAnyCimType, "I2 ", SignedByte}, // sic
    {VT_UI1, kAnyCimType, "UI1 ", UnsignedByte},
    {VT_UI2, kAnyCimType, "UI2 ", [](const VARIANT& v) { return Format("%hu (0x%hX)", v.uiVal, v.uiVal); }},
    {VT_UI4, kAnyCimType, "I4 ", // sic
     [](const VARIANT& v) { return Format("%u (0x%X)", v.ulVal, v.ulVal); }},
    {VT_ARRAY | VT_I2, kAnyCimType, "ARRAY I2 ", Elements<SHORT, VT_I2, FromI2>},
    {VT_ARRAY | VT_I4, kAnyCimType, "ARRAY I4 ", Elements<LONG, VT_I4, FromI4>},
    {VT_ARRAY | VT_BSTR, CIM_FLAG_ARRAY | CIM_SINT64, "ARRAY BSTR SINT64 ",
     Elements<BSTR, VT_BSTR, FromSint64>},
    {VT_ARRAY | VT_BSTR, CIM_FLAG_ARRAY | CIM_UINT64, "ARRAY BSTR UINT64 ",
     Elements<BSTR, VT_BSTR, FromUint64>},
    {VT_ARRAY | VT_BSTR, kAnyCimType, "ARRAY BSTR ", Elements<BSTR, VT_BSTR, Quoted>},
};
} // namespace

std::string ZebValueToString(const VARIANT& value, long cimType)
{
    for (const Row& row : kRows)
        if (row.Type == value.vt && (row.CimType == kAnyCimType || row.CimType == cimType))
            return row.Label + row.Value(value);
    return Format("<ZebValueToString not implemented for type %d>", value.vt);
}
