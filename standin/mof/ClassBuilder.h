// Makes class definitions out of class declarations.
#pragma once

#include "standin/mof/MofSyntax.h"
#include "standin/object/ClassDefinition.h"

namespace standin
{
// `base` is null for a class without a superclass. Throws CMofProblem where the declaration contradicts
// itself or what it inherits.
ClassDefinition BuildClass(const CMofClass& declaration, const CClassDefinition* base);
} // namespace standin
