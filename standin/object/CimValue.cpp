#include "standin/object/CimValue.h"

#include "Common/src/com/ComBoundary.h"
#include "Common/src/com/SafeArray.h"
#include "Common/src/com/WmiStatus.h"
#include "standin/object/ByValue.h"
#include "standin/object/CimType.h"
#include "standin/object/DateTimeForm.h"

#include <cerrno>
#include <cwctype>

namespace standin
{
namespace
{
CVariant CopyText(BSTR text)
{
    return CVariant::FromBstr(CBstr(std::wstring_view(text ? text : L"", SysStringLen(text))).Detach());
}

// An integer of 64 bits, signed (VT_I8) or not (VT_UI8). False where the value is none.
bool ReadInteger(const VARIANT& given, CVariant& integer)
{
    switch (given.vt)
    {
    case VT_UI8:
        integer.vt = VT_UI8;
        integer.ullVal = given.ullVal;
        return true;
    case VT_I1:
    case VT_UI1:
    case VT_I2:
    case VT_UI2:
    case VT_I4:
    case VT_UI4:
    case VT_INT:
    case VT_UINT:
    case VT_I8:
        return SUCCEEDED(VariantChangeType(integer.Put(), const_cast<VARIANT*>(&given), 0, VT_I8));
    }
    return false;
}

// A whole decimal text.
bool ReadDecimal(const VARIANT& given, CVariant& integer)
{
    const UINT length = given.vt == VT_BSTR ? SysStringLen(given.bstrVal) : 0;
    if (length == 0 || !iswdigit(given.bstrVal[length - 1]) || iswspace(given.bstrVal[0]))
        return false;
    wchar_t* end = nullptr;
    errno = 0;
    integer.vt = given.bstrVal[0] == L'-' ? VT_I8 : VT_UI8;
    if (integer.vt == VT_I8)
        integer.llVal = wcstoll(given.bstrVal, &end, 10);
    else
        integer.ullVal = wcstoull(given.bstrVal, &end, 10);
    return errno == 0 && end == given.bstrVal + length;
}

HRESULT StoreInteger(const VARIANT& given, const CCimType& type, CVariant& stored)
{
    CVariant integer;
    if (!ReadInteger(given, integer) && (type.Variant != VT_BSTR || !ReadDecimal(given, integer)))
        return wmi::TypeMismatch;
    bool negative = integer.vt == VT_I8 && integer.llVal < 0;
    if (negative && type.Type == CIM_UINT32 && given.vt == VT_I4) // the same bits
    {
        integer.ullVal = given.ulVal;
        negative = false;
    }
    if (negative ? integer.llVal < type.Low : integer.ullVal > type.High)
        return wmi::TypeMismatch;
    if (type.Variant == VT_BSTR)
        stored = CVariant::FromText(
            (negative ? std::to_wstring(integer.llVal) : std::to_wstring(integer.ullVal)).c_str());
    else
    {
        // The low bytes are the smaller number.
        stored = std::move(integer);
        stored.vt = type.Variant;
    }
    return S_OK;
}

// Objects are copied on their way in and out, so that nobody changes what another object holds.
HRESULT CloneObject(const VARIANT& given, VARIANT* copy)
{
    ComPtr<IByValue> ours;
    ComPtr<IWbemClassObject> source;
    ComPtr<IWbemClassObject> clone;
    if (!given.punkVal || FAILED(given.punkVal->QueryInterface(__uuidof(IByValue), ours.PutVoid())) ||
        FAILED(ours.As(source)))
        return wmi::TypeMismatch;
    const HRESULT hr = source->Clone(clone.Put());
    if (FAILED(hr))
        return hr;
    copy->punkVal = clone.Detach();
    copy->vt = VT_UNKNOWN;
    return S_OK;
}

HRESULT StoreScalar(const VARIANT& given, const CCimType& type, bool anyOffset, CVariant& stored)
{
    if (type.IsInteger())
        return StoreInteger(given, type, stored);
    if (type.Type == CIM_OBJECT && given.vt == VT_DISPATCH)
        return CloneObject(given, stored.Put());
    if (given.vt != type.Variant)
        return wmi::TypeMismatch;
    if (type.Type == CIM_OBJECT)
        return CloneObject(given, stored.Put());
    if (type.Type == CIM_DATETIME &&
        !IsDateTime({given.bstrVal ? given.bstrVal : L"", SysStringLen(given.bstrVal)}, anyOffset))
        return wmi::TypeMismatch;
    stored = type.Type == CIM_BOOLEAN ? CVariant::FromBool(given.boolVal != VARIANT_FALSE)
                                      : CopyText(given.bstrVal);
    return S_OK;
}

HRESULT StoreArray(SAFEARRAY* given, const CCimType& type, bool anyOffset, CVariant& stored)
{
    VARTYPE element = VT_EMPTY;
    LONG lower = 0;
    LONG upper = -1;
    if (!given || SafeArrayGetDim(given) != 1 || FAILED(SafeArrayGetVartype(given, &element)) ||
        FAILED(SafeArrayGetLBound(given, 1, &lower)) || FAILED(SafeArrayGetUBound(given, 1, &upper)) ||
        (element != VT_VARIANT && SafeArrayGetElemsize(given) > sizeof(LONGLONG)) || type.Type == CIM_OBJECT)
        return wmi::TypeMismatch;
    const auto count = static_cast<ULONG>(upper - lower + 1);
    CSafeArray array(SafeArrayCreateVector(type.Variant, 0, count));
    if (!array)
        return wmi::OutOfMemory;
    for (LONG i = 0; i < static_cast<LONG>(count); ++i)
    {
        CVariant item;
        CVariant converted;
        LONG from = lower + i;
        void* place = element == VT_VARIANT ? static_cast<void*>(&item) : &item.llVal;
        HRESULT hr = SafeArrayGetElement(given, &from, place);
        if (element != VT_VARIANT)
            item.vt = SUCCEEDED(hr) ? element : VARTYPE{VT_EMPTY};
        if (SUCCEEDED(hr))
            hr = StoreScalar(item, type, anyOffset, converted);
        if (SUCCEEDED(hr))
            hr = SafeArrayPutElement(array.Get(), &i,
                                     converted.vt == VT_BSTR ? static_cast<void*>(converted.bstrVal)
                                                             : &converted.llVal);
        if (FAILED(hr))
            return hr;
    }
    stored = CVariant::FromArray(array.Detach(), type.Variant);
    return S_OK;
}

// Bytes of an element; 0 for texts, and for what is never stored.
size_t PlainSize(VARTYPE type)
{
    switch (type)
    {
    case VT_UI1:
        return 1;
    case VT_I2:
    case VT_BOOL:
        return 2;
    case VT_I4:
        return 4;
    }
    return 0;
}

BSTR ReadText(CByteReader& in)
{
    return CBstr(std::wstring_view(in.Text())).Detach();
}
} // namespace

CCimValue::CCimValue(const CCimValue& other) : CVariant()
{
    if (FAILED(VariantCopy(this, const_cast<VARIANT*>(static_cast<const VARIANT*>(&other)))))
        throw std::bad_alloc();
}

HRESULT ToCimValue(const VARIANT& given, CIMTYPE type, CCimValue& stored, bool anyOffset) noexcept
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            CVariant direct;
            const CCimType* row = FindCimType(type);
            if (!row || FAILED(VariantCopyInd(&direct, const_cast<VARIANT*>(&given))))
                return wmi::TypeMismatch;
            CVariant converted = CVariant::Null();
            HRESULT hr = direct.vt == VT_NULL ? S_OK : wmi::TypeMismatch;
            if (direct.vt != VT_NULL && !IsArray(type))
                hr = StoreScalar(direct, *row, anyOffset, converted);
            else if (direct.vt & VT_ARRAY)
                hr = StoreArray(direct.parray, *row, anyOffset, converted);
            if (SUCCEEDED(hr))
                stored = CCimValue(std::move(converted));
            return hr;
        });
}

HRESULT CopyCimValue(const VARIANT& stored, VARIANT* out) noexcept
{
    VariantInit(out);
    if (stored.vt == VT_UNKNOWN)
        return CloneObject(stored, out);
    return FAILED(VariantCopy(out, const_cast<VARIANT*>(&stored))) ? wmi::OutOfMemory : S_OK;
}

bool SameCimValue(const VARIANT& a, const VARIANT& b)
{
    if (a.vt == VT_UNKNOWN && b.vt == VT_UNKNOWN)
    {
        ComPtr<IWbemClassObject> left;
        ComPtr<IWbemClassObject> right;
        return SUCCEEDED(a.punkVal->QueryInterface(IID_IWbemClassObject, left.PutVoid())) &&
               SUCCEEDED(b.punkVal->QueryInterface(IID_IWbemClassObject, right.PutVoid())) &&
               left->CompareTo(0, right.Get()) == WBEM_S_SAME;
    }
    std::vector<BYTE> left;
    std::vector<BYTE> right;
    CByteWriter leftWriter(left);
    CByteWriter rightWriter(right);
    WriteValue(leftWriter, a);
    WriteValue(rightWriter, b);
    return left == right;
}

void WriteValue(CByteWriter& out, const VARIANT& value)
{
    out.Number(value.vt);
    const size_t size = PlainSize(value.vt & VT_TYPEMASK);
    const auto text = [&](BSTR b) { out.Text({b ? b : L"", SysStringLen(b)}); };
    if (value.vt == VT_BSTR)
        text(value.bstrVal);
    else if (value.vt == (VT_ARRAY | VT_BSTR))
    {
        const CSafeArrayView<BSTR> texts(value.parray, VT_BSTR);
        out.Number(static_cast<uint32_t>(texts.Items().size()));
        for (const BSTR item : texts.Items())
            text(item);
    }
    else if (value.vt & VT_ARRAY)
    {
        const CSafeArrayView<BYTE> items(value.parray, value.vt & VT_TYPEMASK);
        out.Number(static_cast<uint32_t>(items.Items().size()));
        out.Raw(items.Items().data(), items.Items().size() * size);
    }
    else
        out.Raw(&value.llVal, size);
}

CCimValue ReadValue(CByteReader& in)
{
    CVariant value;
    const auto given = in.Number<VARTYPE>();
    const auto type = static_cast<VARTYPE>(given & VT_TYPEMASK);
    const size_t size = PlainSize(type);
    if (given == VT_EMPTY || given == VT_NULL)
        value.vt = given;
    else if ((given != type && given != (VT_ARRAY | type)) || (size == 0 && type != VT_BSTR))
        throw CBadBytes();
    else if (given == VT_BSTR)
        value = CVariant::FromBstr(ReadText(in));
    else if (given == type)
    {
        memcpy(&value.llVal, in.Raw(size).data(), size);
        value.vt = type;
    }
    else
    {
        const uint32_t count = in.Count(size ? size : sizeof(uint32_t));
        CSafeArray array(SafeArrayCreateVector(type, 0, count));
        if (!array)
            throw std::bad_alloc();
        value = CVariant::FromArray(array.Detach(), type);
        if (size)
            memcpy(CSafeArrayView<BYTE>(value.parray, type).Items().data(), in.Raw(size * count).data(),
                   size * count);
        else
            for (BSTR& text : CSafeArrayView<BSTR>(value.parray, VT_BSTR).Items())
                text = ReadText(in);
    }
    return value;
}
} // namespace standin
