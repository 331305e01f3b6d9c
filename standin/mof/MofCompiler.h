// Carries out the statements of a MOF text: classes, instances and directives.
#pragma once

#include "standin/mof/RepositoryState.h"

#include <string_view>

namespace standin
{
// Begins in the namespace root\cimv2, as the management service's own compiler does not: that one begins in
// root\default, where nothing of ours belongs. Throws CMofProblem; the state is then half done and to be
// dropped.
void CompileMof(std::string_view text, CRepositoryState& state);
} // namespace standin
