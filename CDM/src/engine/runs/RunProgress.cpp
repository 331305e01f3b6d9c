#include "CDM/src/engine/runs/RunProgress.h"

#include <algorithm>
#include <limits>

namespace
{
ULONGLONG Total(const CRunTiming& timing, const CRunParameters& parameters) noexcept
{
    return static_cast<ULONGLONG>(parameters.Coverage) * timing.TimeoutSndRsp / 100;
}
} // namespace

bool CRunProgress::IsUsable(const CRunTiming& timing, const CRunParameters& parameters) noexcept
{
    constexpr ULONGLONG kLimit = std::numeric_limits<LONG>::max();
    const ULONGLONG total = Total(timing, parameters);
    if (total == 0 || timing.CheckTime == 0)
        return false;
    if (static_cast<ULONGLONG>(parameters.Coverage) * timing.TimeoutSndRsp > kLimit ||
        static_cast<ULONGLONG>(timing.CheckTime) * 1000 > kLimit)
        return false;
    const ULONGLONG polls = (total + timing.CheckTime - 1) / timing.CheckTime;
    return polls * timing.CheckTime * 100 <= kLimit;
}

CRunProgress::CRunProgress(const CRunTiming& timing, const CRunParameters& parameters) noexcept
    : m_checkTime(static_cast<LONG>(timing.CheckTime)), m_total(static_cast<LONG>(Total(timing, parameters)))
{
}

BYTE StoppedPercentComplete(ULONGLONG elapsedMilliseconds, DWORD plannedSeconds) noexcept
{
    if (plannedSeconds == 0)
        return 0;
    const ULONGLONG percent = elapsedMilliseconds / 1000 * 100 / plannedSeconds;
    return static_cast<BYTE>(std::min<ULONGLONG>(percent, std::numeric_limits<BYTE>::max()));
}
