// Localised schema: qualifiers with the flavor "Amended" live apart from the rest of a class, one namespace
// per language (ms_409), and are laid over the class where a client asks for them.
#pragma once

#include "standin/mof/RepositoryState.h"

namespace standin
{
// The class without any amended qualifiers; the same definition where it has none.
ClassDefinition WithoutAmended(const ClassDefinition& definition);
// The class with the qualifiers that the classes of the same names in the namespace of a language have.
ClassDefinition Amended(const ClassDefinition& definition, const CNamespace& language);
} // namespace standin
