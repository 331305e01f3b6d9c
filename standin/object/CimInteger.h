// Integers of every VARIANT type, checked against the range of a CIM type.
#pragma once

#include "Common/src/com/Variant.h"

#include <cstdint>
#include <optional>
#include <wbemcli.h>

namespace standin
{
// A value from the whole of int64 and uint64.
struct CInteger
{
    bool Negative = false;
    uint64_t Bits = 0; // two's complement where Negative

    static CInteger Signed(int64_t value) noexcept { return {value < 0, static_cast<uint64_t>(value)}; }
};

// Nothing where the VARIANT holds no integer.
std::optional<CInteger> ReadInteger(const VARIANT& v);

// The stored form of an integer type. WBEM_E_TYPE_MISMATCH for what is no integer and for what does not fit.
HRESULT ToCimInteger(const VARIANT& given, CIMTYPE type, CVariant& stored);
} // namespace standin
