#include "standin/object/PropertySelection.h"

#include "Common/src/com/WmiStatus.h"
#include "standin/object/CimType.h"
#include "standin/object/SystemProperty.h"

namespace standin
{
namespace
{
constexpr long kUnderstood = WBEM_MASK_PRIMARY_CONDITION | WBEM_FLAG_KEYS_ONLY | WBEM_FLAG_REFS_ONLY |
                             WBEM_MASK_CONDITION_ORIGIN | WBEM_MASK_CLASS_CONDITION;

bool HasOrigin(const CObjectView& object, size_t index, long origin)
{
    switch (origin)
    {
    case WBEM_FLAG_LOCAL_ONLY:
        return object.IsLocal(index);
    case WBEM_FLAG_PROPAGATED_ONLY:
        return !object.IsLocal(index);
    }
    return true;
}

// Of a class: redeclared here though an ancestor has it, or one of those and what the class itself adds.
bool MeetsClassCondition(const CObjectView& object, size_t index, long condition)
{
    if (condition == 0)
        return true;
    const CPropertyDefinition& property = object.Definition.Properties()[index];
    const bool overrides = property.Local && property.Origin != object.Definition.Name;
    return condition == WBEM_FLAG_CLASS_OVERRIDES_ONLY ? overrides : property.Local;
}

bool Meets(const CQualifiers& qualifiers, const CQualifierCondition& condition)
{
    if (condition.Kind == WBEM_FLAG_ALWAYS)
        return true;
    const CQualifier* qualifier = qualifiers.Find(condition.Name);
    switch (condition.Kind)
    {
    case WBEM_FLAG_ONLY_IF_TRUE:
        return qualifier != nullptr;
    case WBEM_FLAG_ONLY_IF_FALSE:
        return !qualifier;
    }
    return qualifier && SameCimValue(qualifier->Value, *condition.Value, false);
}

bool IsReference(CIMTYPE type)
{
    return ElementType(type) == CIM_REFERENCE;
}
} // namespace

std::wstring_view ItemName(const CClassDefinition& definition, uint16_t item) noexcept
{
    if (item & kSystemItem)
        return SystemProperties()[item & ~kSystemItem].Name;
    return definition.Properties()[item].Name;
}

HRESULT SelectProperties(const CObjectView& object, long flags, const CQualifierCondition& condition,
                         std::vector<uint16_t>& selected)
{
    const long origin = flags & WBEM_MASK_CONDITION_ORIGIN;
    const long classCondition = flags & WBEM_MASK_CLASS_CONDITION;
    if ((flags & ~kUnderstood) || (classCondition && !object.IsClass()) ||
        (condition.Kind != WBEM_FLAG_ALWAYS && !condition.Name) ||
        (condition.Kind == WBEM_FLAG_ONLY_IF_IDENTICAL && !condition.Value))
        return wmi::InvalidParameter;
    const bool narrowed = (flags & (WBEM_FLAG_KEYS_ONLY | WBEM_FLAG_REFS_ONLY)) || classCondition ||
                          condition.Kind == WBEM_FLAG_ONLY_IF_TRUE ||
                          condition.Kind == WBEM_FLAG_ONLY_IF_IDENTICAL;
    if (!narrowed && (origin == 0 || origin == WBEM_FLAG_SYSTEM_ONLY))
        for (size_t i = 0; i < SystemProperties().size(); ++i)
            selected.push_back(static_cast<uint16_t>(kSystemItem | i));
    if (origin == WBEM_FLAG_SYSTEM_ONLY)
        return S_OK;
    for (const uint16_t index : *object.Definition.Order())
    {
        const CPropertyDefinition& property = object.Definition.Properties()[index];
        if (((flags & WBEM_FLAG_KEYS_ONLY) && !property.Qualifiers.IsTrue(L"key")) ||
            ((flags & WBEM_FLAG_REFS_ONLY) && !IsReference(property.Type)) ||
            !HasOrigin(object, index, origin) || !MeetsClassCondition(object, index, classCondition) ||
            !Meets(property.Qualifiers, condition))
            continue;
        selected.push_back(index);
    }
    return S_OK;
}
} // namespace standin
