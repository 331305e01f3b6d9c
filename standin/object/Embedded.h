// Objects as values of properties of type "object". They are copied on their way in and out, so that nobody
// changes what another object holds.
#pragma once

#include "Common/src/com/Variant.h"

namespace standin
{
// Takes VT_UNKNOWN or VT_DISPATCH with one of our objects; WBEM_E_TYPE_MISMATCH for anything else.
HRESULT StoreEmbedded(const VARIANT& given, CVariant& stored);
// Of a stored VT_UNKNOWN or an array of them; `out` is initialised.
HRESULT CopyEmbedded(const VARIANT& stored, VARIANT* out) noexcept;
bool SameEmbedded(IUnknown* a, IUnknown* b) noexcept;
} // namespace standin
