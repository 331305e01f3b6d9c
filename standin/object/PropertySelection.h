// Which properties an enumeration visits: the flags of GetNames and BeginEnumeration.
#pragma once

#include "standin/object/ObjectView.h"

#include <vector>

namespace standin
{
// A property in an enumeration: an index into the definition, or into the system properties with this bit.
constexpr uint16_t kSystemItem = 0x8000;

std::wstring_view ItemName(const CClassDefinition& definition, uint16_t item) noexcept;

// A condition on a qualifier, of GetNames.
struct CQualifierCondition
{
    long Kind = WBEM_FLAG_ALWAYS; // WBEM_MASK_PRIMARY_CONDITION
    const wchar_t* Name = nullptr;
    const VARIANT* Value = nullptr; // for WBEM_FLAG_ONLY_IF_IDENTICAL
};

// WBEM_E_INVALID_PARAMETER for flags that do not go together. System properties come first.
HRESULT SelectProperties(const CObjectView& object, long flags, const CQualifierCondition& condition,
                         std::vector<uint16_t>& selected);
} // namespace standin
