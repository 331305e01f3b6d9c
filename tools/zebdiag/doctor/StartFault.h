// Why the provider of this computer fails, as far as this computer tells.
#pragma once

#include "tools/zebdiag/Failure.h"

namespace zebdiag
{
class IMachine;

// A failure to start the provider together with what registry, files and adapter agent of this computer tell
// about it. That and other failures of the provider whose reason stays hidden, together with where its trace
// is. Everything else stays as it is.
CFailure WithReason(const CFailure& failure, const CTarget& target, const IMachine& machine);
} // namespace zebdiag
