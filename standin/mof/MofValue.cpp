#include "standin/mof/MofValue.h"

#include "Common/src/com/SafeArray.h"
#include "Common/src/com/Text.h"
#include "standin/mof/RepositoryState.h"
#include "standin/object/CimType.h"

namespace standin
{
namespace
{
CVariant FromInteger(const CMofValue& value)
{
    CVariant result;
    if (value.Negative && value.Number <= static_cast<uint64_t>(INT64_MAX) + 1)
    {
        result.vt = VT_I8;
        result.llVal = static_cast<LONGLONG>(0 - value.Number);
    }
    else if (value.Negative)
        throw CMofProblem{value.Place, "a number of more than 64 bits"};
    else
    {
        result.vt = VT_UI8;
        result.ullVal = value.Number;
    }
    return result;
}

CVariant FromReal(double value)
{
    CVariant result;
    result.vt = VT_R8;
    result.dblVal = value;
    return result;
}

CVariant FromAlias(const CMofValue& value, const CMofAliases& aliases)
{
    const auto found = aliases.find(FoldName(value.Characters));
    if (found == aliases.end())
        throw CMofProblem{value.Place, "no instance has the alias $" + Utf8Text(value.Characters)};
    return CVariant::FromText(found->second.c_str());
}

CVariant FromScalar(const CMofValue& value, const CMofAliases& aliases)
{
    switch (value.Kind)
    {
    case CMofValue::Boolean:
        return CVariant::FromBool(value.Number != 0);
    case CMofValue::Integer:
        return FromInteger(value);
    case CMofValue::Real:
        return FromReal(value.Fraction);
    case CMofValue::Character:
    {
        CMofValue number = value;
        number.Kind = CMofValue::Integer;
        return FromInteger(number);
    }
    case CMofValue::Text:
        return CVariant::FromBstr(CBstr(std::wstring_view(value.Characters)).Detach());
    case CMofValue::Alias:
        return FromAlias(value, aliases);
    default:
        return CVariant::Null();
    }
}

std::string TypeWord(CIMTYPE type)
{
    return Utf8Text(CimTypeName(ElementType(type))) + (IsArray(type) ? "[]" : "");
}

// The one VARIANT type that a qualifier's items have.
VARTYPE QualifierType(const CMofValue& value)
{
    switch (value.Kind)
    {
    case CMofValue::Boolean:
        return VT_BOOL;
    case CMofValue::Integer:
    case CMofValue::Character:
        return VT_I4;
    case CMofValue::Real:
        return VT_R8;
    case CMofValue::Text:
        return VT_BSTR;
    default:
        throw CMofProblem{value.Place, "a qualifier cannot have this value"};
    }
}

CSafeArray ArrayOf(const CMofValue& list, const CMofAliases& aliases)
{
    CSafeArray array(SafeArrayCreateVector(VT_VARIANT, 0, static_cast<ULONG>(list.Items.size())));
    if (!array)
        throw std::bad_alloc();
    const CSafeArrayView<VARIANT> items(array.Get(), VT_VARIANT);
    for (size_t i = 0; i < list.Items.size(); ++i)
    {
        CVariant item = FromScalar(list.Items[i], aliases);
        items.Items()[i] = item;
        item.vt = VT_EMPTY; // the array's now
    }
    return array;
}
} // namespace

CCimValue ToCimValue(const CMofValue& value, CIMTYPE type, const CMofAliases& aliases)
{
    CVariant given;
    if (value.Kind == CMofValue::List)
        given = CVariant::FromArray(ArrayOf(value, aliases).Detach(), VT_VARIANT);
    else
        given = FromScalar(value, aliases);
    CCimValue stored;
    if (FAILED(ToCimValue(given, type, stored)))
        throw CMofProblem{value.Place, "the value does not fit the type " + TypeWord(type)};
    return stored;
}

CVariant ToQualifierValue(const std::optional<CMofValue>& value)
{
    if (!value)
        return CVariant::FromBool(true);
    const bool list = value->Kind == CMofValue::List;
    if (list && value->Items.empty())
        throw CMofProblem{value->Place, "a qualifier cannot have an empty list"};
    const CIMTYPE element = CimTypeOfVariant(QualifierType(list ? value->Items.front() : *value));
    return ToCimValue(*value, list ? element | CIM_FLAG_ARRAY : element, {});
}
} // namespace standin
