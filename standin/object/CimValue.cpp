#include "standin/object/CimValue.h"

#include "Common/src/com/ComBoundary.h"
#include "Common/src/com/SafeArray.h"
#include "Common/src/com/Text.h"
#include "Common/src/com/WmiStatus.h"
#include "standin/object/CimInteger.h"
#include "standin/object/CimType.h"
#include "standin/object/Embedded.h"

#include <optional>

namespace standin
{
namespace
{
std::optional<double> ReadReal(const VARIANT& v)
{
    if (v.vt == VT_R4)
        return v.fltVal;
    if (v.vt == VT_R8)
        return v.dblVal;
    if (const auto integer = ReadInteger(v))
        return integer->Negative ? static_cast<double>(static_cast<int64_t>(integer->Bits))
                                 : static_cast<double>(integer->Bits);
    return std::nullopt;
}

HRESULT StoreScalar(const VARIANT& given, CIMTYPE type, CVariant& stored)
{
    switch (type)
    {
    case CIM_STRING:
    case CIM_DATETIME:
    case CIM_REFERENCE:
        if (given.vt != VT_BSTR)
            return wmi::TypeMismatch;
        stored = CVariant::FromBstr(
            CBstr(std::wstring_view(given.bstrVal ? given.bstrVal : L"", SysStringLen(given.bstrVal)))
                .Detach());
        return S_OK;
    case CIM_BOOLEAN:
        if (given.vt != VT_BOOL)
            return wmi::TypeMismatch;
        stored = CVariant::FromBool(given.boolVal != VARIANT_FALSE);
        return S_OK;
    case CIM_REAL32:
    case CIM_REAL64:
    {
        const auto real = ReadReal(given);
        if (!real)
            return wmi::TypeMismatch;
        stored.Put();
        stored.vt = VariantTypeOf(type);
        if (type == CIM_REAL32)
            stored.fltVal = static_cast<float>(*real);
        else
            stored.dblVal = *real;
        return S_OK;
    }
    case CIM_OBJECT:
        return StoreEmbedded(given, stored);
    }
    return ToCimInteger(given, type, stored);
}

// The elements of an array as bytes, locked for as long as this lives.
class CElements
{
  public:
    explicit CElements(SAFEARRAY* array) noexcept
    {
        LONG lower = 0;
        LONG upper = -1;
        void* data = nullptr;
        if (!array || SafeArrayGetDim(array) != 1 || FAILED(SafeArrayGetVartype(array, &m_type)) ||
            FAILED(SafeArrayGetLBound(array, 1, &lower)) || FAILED(SafeArrayGetUBound(array, 1, &upper)) ||
            FAILED(SafeArrayAccessData(array, &data)))
            return;
        m_array = array;
        m_data = static_cast<BYTE*>(data);
        m_count = static_cast<ULONG>(upper - lower + 1);
        m_size = SafeArrayGetElemsize(array);
    }
    CElements(const CElements&) = delete;
    CElements& operator=(const CElements&) = delete;
    ~CElements()
    {
        if (m_array)
            SafeArrayUnaccessData(m_array);
    }

    bool Valid() const noexcept { return m_array != nullptr; }
    VARTYPE Type() const noexcept { return m_type; }
    ULONG Count() const noexcept { return m_count; }
    ULONG Size() const noexcept { return m_size; }
    BYTE* At(ULONG index) const noexcept { return m_data + static_cast<size_t>(index) * m_size; }

  private:
    SAFEARRAY* m_array = nullptr;
    BYTE* m_data = nullptr;
    VARTYPE m_type = VT_EMPTY;
    ULONG m_count = 0;
    ULONG m_size = 0;
};

HRESULT StoreArray(SAFEARRAY* given, CIMTYPE elementType, CVariant& stored)
{
    const CElements source(given);
    // Elements larger than a pointer, such as records, are nothing that a property holds.
    if (!source.Valid() || (source.Type() != VT_VARIANT && source.Size() > sizeof(LONGLONG)))
        return wmi::TypeMismatch;
    const VARTYPE storedType = VariantTypeOf(elementType);
    CSafeArray array(SafeArrayCreateVector(storedType, 0, source.Count()));
    if (!array)
        return wmi::OutOfMemory;
    const CElements target(array.Get());
    for (ULONG i = 0; i < source.Count(); ++i)
    {
        // A view, not an owner: what it points to stays the source's.
        VARIANT element = {};
        if (source.Type() == VT_VARIANT)
            memcpy(&element, source.At(i), sizeof element);
        else
        {
            element.vt = source.Type();
            memcpy(&element.llVal, source.At(i), source.Size());
        }
        CVariant converted;
        const HRESULT hr = StoreScalar(element, elementType, converted);
        if (FAILED(hr))
            return hr;
        memcpy(target.At(i), &converted.llVal, target.Size());
        converted.vt = VT_EMPTY; // the array owns the text or object now
    }
    stored = CVariant::FromArray(array.Detach(), storedType);
    return S_OK;
}

bool SameText(BSTR a, BSTR b, bool ignoreCase)
{
    const std::wstring_view left(a ? a : L"", SysStringLen(a));
    const std::wstring_view right(b ? b : L"", SysStringLen(b));
    if (ignoreCase)
        return CompareStringOrdinal(left.data(), static_cast<int>(left.size()), right.data(),
                                    static_cast<int>(right.size()), TRUE) == CSTR_EQUAL;
    return left == right;
}

ULONG ScalarSize(VARTYPE type)
{
    switch (type)
    {
    case VT_UI1:
        return 1;
    case VT_I2:
    case VT_BOOL:
        return 2;
    case VT_I4:
    case VT_R4:
        return 4;
    }
    return 8;
}

bool SameScalar(VARTYPE type, ULONG size, const void* a, const void* b, bool ignoreCase)
{
    if (type == VT_BSTR)
        return SameText(*static_cast<const BSTR*>(a), *static_cast<const BSTR*>(b), ignoreCase);
    if (type == VT_UNKNOWN)
        return SameEmbedded(*static_cast<IUnknown* const*>(a), *static_cast<IUnknown* const*>(b));
    return memcmp(a, b, size) == 0;
}
} // namespace

CCimValue::CCimValue(const CCimValue& other) : CVariant()
{
    const HRESULT hr = VariantCopy(this, const_cast<VARIANT*>(static_cast<const VARIANT*>(&other)));
    if (FAILED(hr))
        throw std::bad_alloc();
}

HRESULT ToCimValue(const VARIANT& given, CIMTYPE type, CCimValue& stored) noexcept
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (given.vt & VT_BYREF)
            {
                CCimValue direct;
                if (FAILED(VariantCopyInd(&direct, const_cast<VARIANT*>(&given))))
                    return wmi::TypeMismatch;
                return ToCimValue(direct, type, stored);
            }
            CVariant converted;
            HRESULT hr = wmi::TypeMismatch;
            if (given.vt == VT_NULL)
            {
                converted = CVariant::Null();
                hr = S_OK;
            }
            else if (!IsArray(type))
                hr = StoreScalar(given, type, converted);
            else if (given.vt & VT_ARRAY)
                hr = StoreArray(given.parray, ElementType(type), converted);
            if (SUCCEEDED(hr))
                stored = CCimValue(std::move(converted));
            return hr;
        });
}

HRESULT CopyCimValue(const VARIANT& stored, VARIANT* out) noexcept
{
    VariantInit(out);
    if (stored.vt == VT_UNKNOWN || stored.vt == (VT_ARRAY | VT_UNKNOWN))
        return CopyEmbedded(stored, out);
    return FAILED(VariantCopy(out, const_cast<VARIANT*>(&stored))) ? wmi::OutOfMemory : S_OK;
}

bool SameCimValue(const VARIANT& a, const VARIANT& b, bool ignoreCase) noexcept
{
    if (a.vt != b.vt)
        return false;
    if (a.vt == VT_NULL || a.vt == VT_EMPTY)
        return true;
    if (!(a.vt & VT_ARRAY))
        return SameScalar(a.vt, ScalarSize(a.vt), &a.llVal, &b.llVal, ignoreCase);
    const CElements left(a.parray);
    const CElements right(b.parray);
    if (!left.Valid() || !right.Valid() || left.Count() != right.Count())
        return false;
    for (ULONG i = 0; i < left.Count(); ++i)
        if (!SameScalar(left.Type(), left.Size(), left.At(i), right.At(i), ignoreCase))
            return false;
    return true;
}
} // namespace standin
