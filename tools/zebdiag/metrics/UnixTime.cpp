#include "tools/zebdiag/metrics/UnixTime.h"

#include <cwchar>
#include <string>

namespace zebdiag
{
namespace
{
constexpr long long kTicksPerSecond = 10000000;
constexpr long long kTicksUntil1970 = 116444736000000000;

long long SecondsSince1970(const FILETIME& time)
{
    const long long ticks = static_cast<long long>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
    return (ticks - kTicksUntil1970) / kTicksPerSecond;
}
} // namespace

std::optional<long long> UnixTime(std::wstring_view cimTime, const TIME_ZONE_INFORMATION* zone)
{
    SYSTEMTIME local = {};
    if (std::swscanf(std::wstring(cimTime).c_str(), L"%4hu%2hu%2hu%2hu%2hu%2hu", &local.wYear, &local.wMonth,
                     &local.wDay, &local.wHour, &local.wMinute, &local.wSecond) != 6)
        return std::nullopt;
    SYSTEMTIME utc = {};
    FILETIME time = {};
    if (!TzSpecificLocalTimeToSystemTime(zone, &local, &utc) || !SystemTimeToFileTime(&utc, &time))
        return std::nullopt;
    return SecondsSince1970(time);
}

long long UnixNow()
{
    FILETIME now = {};
    GetSystemTimeAsFileTime(&now);
    return SecondsSince1970(now);
}
} // namespace zebdiag
