// Values in a MOF text.
#pragma once

#include "standin/mof/MofReader.h"
#include "standin/object/CimValue.h"

#include <map>
#include <vector>

namespace standin
{
// Paths of the instances that have an alias, by the alias in folded form.
using CMofAliases = std::map<std::wstring, std::wstring>;

struct CMofValue
{
    CMofPlace Place;
    bool List = false;
    std::vector<CCimValue> Items; // one where it is no list
};

// The form in which names are looked up.
std::wstring FoldName(std::wstring_view name);

CMofValue ReadMofValue(CMofReader& reader, const CMofAliases& aliases);
// A list in braces.
CMofValue ReadMofList(CMofReader& reader, const CMofAliases& aliases);

// In the stored form of the type.
CCimValue ToCimValue(const CMofValue& value, CIMTYPE type);
// A qualifier's value, whose type follows from what is written.
CCimValue ToQualifierValue(const CMofValue& value);
} // namespace standin
