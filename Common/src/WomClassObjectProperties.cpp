// Typed property access of CWomClassObject.
#include "Common/src/WomClassObject.h"
#include "Common/src/com/SafeArray.h"

namespace
{
// If memory runs out, the value is that error, and the management service refuses it.
CVariant TextOrError(const wchar_t* text) noexcept
{
    const BSTR copy = SysAllocString(text ? text : L"");
    return copy ? CVariant::FromBstr(copy) : CVariant::FromError(E_OUTOFMEMORY);
}

// What SafeArrayPutElement expects: a text as it is, a number by its address.
void* Element(const CBstr& text) noexcept
{
    return text.Get();
}
void* Element(const long& value) noexcept
{
    return const_cast<long*>(&value);
}
} // namespace

constexpr CWomClassObject::Lines CWomClassObject::kLongArrayLines{
    .noObject = 938, .call = 994, .arrayCreate = 954, .arrayElement = 973};

HRESULT CWomClassObject::Put(const wchar_t* name, const VARIANT& value, const Lines& lines)
{
    if (const HRESULT hr = CheckObject(name, lines.noObject); hr != S_OK)
        return hr;
    const HRESULT hr = m_object->Put(name, 0, const_cast<VARIANT*>(&value), 0);
    Reimpersonate();
    return SUCCEEDED(hr) ? S_OK : RaiseMember(0x80040901, name, hr, lines.call);
}

template <class Item>
HRESULT CWomClassObject::MakeArray(const wchar_t* name, const std::vector<Item>& values, VARTYPE element,
                                   const Lines& lines, CVariant& array)
{
    if (const HRESULT hr = CheckObject(name, lines.noObject); hr != S_OK)
        return hr;
    SAFEARRAYBOUND bounds{static_cast<ULONG>(values.size()), 0};
    CSafeArray made(SafeArrayCreate(element, 1, &bounds));
    if (!made)
        return RaiseMember(0x80040905, name, E_FAIL, lines.arrayCreate);
    LONG index = 0;
    for (const Item& value : values)
    {
        if (FAILED(SafeArrayPutElement(made.Get(), &index, Element(value))))
            return RaiseMember(0x80040906, name, E_FAIL, lines.arrayElement);
        ++index;
    }
    array = CVariant::FromArray(made.Detach(), element);
    return S_OK;
}

// On S_OK `value` has the expected type or is VT_NULL.
HRESULT CWomClassObject::Get(const wchar_t* name, VARTYPE expected, CVariant& value, bool* isNull,
                             CIMTYPE* type, const Lines& lines)
{
    if (const HRESULT hr = CheckObject(name, lines.noObject); hr != S_OK)
        return hr;
    const HRESULT hr = m_object->Get(name, 0, value.Put(), type, nullptr);
    Reimpersonate();
    if (FAILED(hr))
        return RaiseMember(0x80040908, name, hr, lines.call);
    if (value.vt != VT_NULL && value.vt != expected)
        return RaiseMember(0x80040909, name, E_FAIL, lines.type);
    if (isNull)
        *isNull = value.vt == VT_NULL;
    return S_OK;
}

HRESULT CWomClassObject::SetProperty(const wchar_t* name, const wchar_t* value)
{
    CVariant variant = TextOrError(value);
    return Put(name, variant, {639, 657});
}

HRESULT CWomClassObject::SetProperty(const wchar_t* name, const CBstr& value)
{
    if (!value)
        return SetProperty(name, L"");
    VARIANT variant;
    variant.vt = VT_BSTR;
    variant.bstrVal = value.Get(); // stays the caller's
    return Put(name, variant, {639, 657});
}

HRESULT CWomClassObject::SetProperty(const wchar_t* name, long value)
{
    CVariant variant = CVariant::FromLong(value);
    return Put(name, variant, {696, 711});
}

HRESULT CWomClassObject::SetProperty(const wchar_t* name, const std::vector<CBstr>& values)
{
    constexpr Lines kLines{.noObject = 754, .call = 807, .arrayCreate = 770, .arrayElement = 786};
    CVariant array;
    const HRESULT hr = MakeArray(name, values, VT_BSTR, kLines, array);
    return hr == S_OK ? Put(name, array, kLines) : hr;
}

HRESULT CWomClassObject::SetProperty(const wchar_t* name, const std::vector<long>& values)
{
    CVariant array;
    const HRESULT hr = MakeArray(name, values, array);
    return hr == S_OK ? SetPropertyArray(name, array) : hr;
}

HRESULT CWomClassObject::MakeArray(const wchar_t* name, const std::vector<long>& values, CVariant& array)
{
    return MakeArray(name, values, VT_I4, kLongArrayLines, array);
}

HRESULT CWomClassObject::SetPropertyArray(const wchar_t* name, const CVariant& array)
{
    return Put(name, array, kLongArrayLines);
}

HRESULT CWomClassObject::SetProperty(const wchar_t* name, unsigned short value)
{
    CVariant variant = CVariant::FromLong(value);
    return Put(name, variant, {1593, 1608});
}

HRESULT CWomClassObject::SetProperty(const wchar_t* name, unsigned char value)
{
    CVariant variant = CVariant::FromByte(value);
    return Put(name, variant, {1646, 1661});
}

HRESULT CWomClassObject::SetPropertyBool(const wchar_t* name, BOOL value)
{
    CVariant variant = CVariant::FromBool(value != FALSE);
    return Put(name, variant, {1540, 1555});
}

HRESULT CWomClassObject::SetPropertyNull(const wchar_t* name)
{
    CVariant variant = CVariant::Null();
    return Put(name, variant, {2775, 2790});
}

HRESULT CWomClassObject::GetProperty(const wchar_t* name, CBstr& value, bool* isNull, CIMTYPE* type)
{
    CVariant found;
    const HRESULT hr = Get(name, VT_BSTR, found, isNull, type, {1799, 1813, 1832});
    if (hr == S_OK && found.vt == VT_BSTR)
    {
        value = CBstr::Attach(found.bstrVal);
        found.vt = VT_EMPTY;
    }
    return hr;
}

HRESULT CWomClassObject::GetProperty(const wchar_t* name, DWORD& value, bool* isNull, CIMTYPE* type)
{
    CVariant found;
    const HRESULT hr = Get(name, VT_I4, found, isNull, type, {1466, 1480, 1500});
    if (hr == S_OK && found.vt == VT_I4)
        value = static_cast<DWORD>(found.lVal);
    return hr;
}

HRESULT CWomClassObject::GetProperty(const wchar_t* name, BYTE& value, bool* isNull, CIMTYPE* type)
{
    CVariant found;
    const HRESULT hr = Get(name, VT_UI1, found, isNull, type, {2403, 2417, 2436});
    if (hr == S_OK && found.vt == VT_UI1)
        value = found.bVal;
    return hr;
}

HRESULT CWomClassObject::GetPropertyBool(const wchar_t* name, BOOL& value, bool* isNull, CIMTYPE* type)
{
    CVariant found;
    const HRESULT hr = Get(name, VT_BOOL, found, isNull, type, {1950, 1964, 1983});
    if (hr == S_OK && found.vt == VT_BOOL)
        value = found.boolVal;
    return hr;
}
