// Reads class declarations.
#pragma once

#include "standin/mof/MofReader.h"
#include "standin/object/ClassDefinition.h"

#include <functional>

namespace standin
{
// The qualifiers in brackets before a declaration; none where there are no brackets.
CQualifiers ReadQualifiers(CMofReader& reader);

// The class of that name; throws CMofProblem where there is none.
using FindBase = std::function<ClassDefinition(const CMofName& name)>;

// What stands behind the word "class". Throws CMofProblem where the declaration contradicts itself or what it
// inherits.
ClassDefinition ReadClass(CMofReader& reader, const CQualifiers& qualifiers, const FindBase& findBase);
} // namespace standin
