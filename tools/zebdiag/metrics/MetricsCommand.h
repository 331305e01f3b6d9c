// The command that writes the metrics of this computer. It begins without a session, because a provider that
// does not answer is told in the document as well.
#pragma once

#include "tools/zebdiag/AdapterNames.h"
#include "tools/zebdiag/Console.h"
#include "tools/zebdiag/ExitCode.h"
#include "tools/zebdiag/WmiSession.h"
#include "tools/zebdiag/metrics/UnixTime.h"

#include <functional>

namespace zebdiag
{
struct CMetricsSources
{
    std::function<CWmiSession(const CTarget&, const std::wstring& password)> Connect;
    std::function<AdapterNames(const CWmiSession&)> Names;
    std::function<unsigned long long()> Milliseconds; // of a clock that is never set
    std::function<long long()> Now = UnixNow;
};

// Writes to the file that the options name, or to the console. Throws the CFailure that it has told.
ExitCode WriteMetrics(const COptions& options, const CMetricsSources& sources, IConsole& console);
} // namespace zebdiag
