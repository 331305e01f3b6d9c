// A property's or qualifier's value: a VARIANT in the one form that its CIM type has.
#pragma once

#include "Common/src/com/Variant.h"
#include "standin/object/Bytes.h"

#include <wbemcli.h>

namespace standin
{
// A CVariant that can be copied (std::bad_alloc). An embedded object is shared by the copies, because a
// stored one is never changed: it is cloned on its way in and out.
class CCimValue : public CVariant
{
  public:
    CCimValue() noexcept = default;
    CCimValue(CVariant&& value) noexcept : CVariant(std::move(value)) {}
    CCimValue(const CCimValue& other);
    CCimValue(CCimValue&&) noexcept = default;
    CCimValue& operator=(CCimValue other) noexcept
    {
        CVariant::operator=(std::move(other));
        return *this;
    }
};

// Checks what a caller gives against the CIM type and converts it to the stored form. Integers of any VARIANT
// type are taken where the value fits, 32-bit signed ones also for uint32 (which has no VARIANT form of its
// own), 64-bit values as decimal texts; texts, booleans and objects only as what they are; VT_NULL as "no
// value". Anything else, any array of objects, and a date-time of another form (see IsDateTime, also for
// `anyOffset`) is WBEM_E_TYPE_MISMATCH, and `stored` is unchanged.
HRESULT ToCimValue(const VARIANT& given, CIMTYPE type, CCimValue& stored, bool anyOffset = false) noexcept;

// The copy that a reader gets, in `out`, which need not be initialised.
HRESULT CopyCimValue(const VARIANT& stored, VARIANT* out) noexcept;

// Embedded objects are compared by their values.
bool SameCimValue(const VARIANT& a, const VARIANT& b);

// A stored value in its marshalled form, VT_EMPTY included; whoever has an embedded object writes it himself.
void WriteValue(CByteWriter& out, const VARIANT& value);
CCimValue ReadValue(CByteReader& in);
} // namespace standin
