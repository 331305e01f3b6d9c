// A VARIANT that is valid from birth and clears itself.
#pragma once

#include "Common/src/com/Bstr.h"

#include <oleauto.h>

class CVariant : public VARIANT
{
  public:
    CVariant() noexcept { VariantInit(this); }
    // Each of these throws std::bad_alloc if it copies a text and memory runs out.
    static CVariant FromText(const wchar_t* text)
    {
        CBstr copy(text ? text : L"");
        return FromBstr(copy.Detach());
    }
    // Takes the BSTR over.
    static CVariant FromBstr(BSTR text) noexcept
    {
        CVariant v;
        v.vt = VT_BSTR;
        v.bstrVal = text;
        return v;
    }
    static CVariant FromLong(LONG value) noexcept
    {
        CVariant v;
        v.vt = VT_I4;
        v.lVal = value;
        return v;
    }
    static CVariant FromBool(bool value) noexcept
    {
        CVariant v;
        v.vt = VT_BOOL;
        v.boolVal = value ? VARIANT_TRUE : VARIANT_FALSE;
        return v;
    }
    static CVariant FromByte(BYTE value) noexcept
    {
        CVariant v;
        v.vt = VT_UI1;
        v.bVal = value;
        return v;
    }
    static CVariant FromError(HRESULT code) noexcept
    {
        CVariant v;
        v.vt = VT_ERROR;
        v.scode = code;
        return v;
    }
    // Takes the array over; `element` is the type of one element.
    static CVariant FromArray(SAFEARRAY* array, VARTYPE element) noexcept
    {
        CVariant v;
        v.vt = static_cast<VARTYPE>(VT_ARRAY | element);
        v.parray = array;
        return v;
    }
    static CVariant Null() noexcept
    {
        CVariant v;
        v.vt = VT_NULL;
        return v;
    }

    CVariant(CVariant&& other) noexcept : VARIANT(other) { other.vt = VT_EMPTY; }
    CVariant& operator=(CVariant&& other) noexcept
    {
        if (this != &other)
        {
            VariantClear(this);
            static_cast<VARIANT&>(*this) = other;
            other.vt = VT_EMPTY;
        }
        return *this;
    }
    CVariant(const CVariant&) = delete;
    CVariant& operator=(const CVariant&) = delete;
    ~CVariant() { VariantClear(this); }

    // A cleared place for an out-parameter.
    VARIANT* Put() noexcept
    {
        VariantClear(this);
        return this;
    }
};
