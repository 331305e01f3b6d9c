// Which options go together. The parser knows each by itself; its own rules would speak in its own words.
#pragma once

#include "tools/zebdiag/Options.h"

#include <string>

namespace zebdiag
{
// What is wrong with options that are right each by itself; empty if nothing is.
std::wstring FaultOf(const COptions& options);
} // namespace zebdiag
