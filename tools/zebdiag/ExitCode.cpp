#include "tools/zebdiag/ExitCode.h"

#include <algorithm>
#include <iterator>

namespace zebdiag
{
namespace
{
constexpr const char* kNames[] = {"passed",    "failed", "stopped",       "could_not_run",
                                  "not_found", "busy",   "not_reachable", "usage"};

// The least grave first.
constexpr ExitCode kGravity[] = {ExitCode::Passed,   ExitCode::Stopped,     ExitCode::Busy,
                                 ExitCode::NotFound, ExitCode::CouldNotRun, ExitCode::NotReachable,
                                 ExitCode::Failed,   ExitCode::Usage};
} // namespace

const char* ExitCodeName(ExitCode code) noexcept
{
    return kNames[static_cast<int>(code)];
}

ExitCode Graver(ExitCode a, ExitCode b) noexcept
{
    const auto rank = [](ExitCode code) { return std::find(std::begin(kGravity), std::end(kGravity), code); };
    return rank(a) < rank(b) ? b : a;
}
} // namespace zebdiag
