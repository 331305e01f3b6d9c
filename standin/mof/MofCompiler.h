// Carries out the statements of a MOF text: classes, instances and directives.
#pragma once

#include "standin/mof/RepositoryState.h"

#include <string_view>

namespace standin
{
// Begins in a namespace that there is. Says whether something was removed. Throws CMofProblem; the state is
// then half done and to be dropped.
bool CompileMof(std::string_view text, CRepositoryState& state, std::wstring_view nameSpace);
} // namespace standin
