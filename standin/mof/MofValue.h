// Values of a MOF text as VARIANTs.
#pragma once

#include "standin/mof/MofSyntax.h"
#include "standin/object/CimValue.h"

#include <map>

namespace standin
{
// What is wrong with a statement that the grammar takes.
struct CMofProblem
{
    CMofPlace Place;
    std::string Reason; // begins small, has no full stop
};

// Paths of the instances that have an alias, by the alias in folded form.
using CMofAliases = std::map<std::wstring, std::wstring>;

// In the stored form of the type. Throw CMofProblem.
CCimValue ToCimValue(const CMofValue& value, CIMTYPE type, const CMofAliases& aliases);
// A qualifier's value, whose type follows from what is written; TRUE where nothing is.
CVariant ToQualifierValue(const std::optional<CMofValue>& value);
} // namespace standin
