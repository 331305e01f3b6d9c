// Asks the provider for everything that a report shows.
#pragma once

#include "tools/zebdiag/report/Report.h"

namespace zebdiag
{
struct CCommandContext;

// The report on the adapters that the options name. Throws CFailure, also where there is no test to report
// on.
CReport GatherReport(const CCommandContext& context);
} // namespace zebdiag
