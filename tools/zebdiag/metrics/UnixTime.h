// The provider's times as points in time.
#pragma once

#include <optional>
#include <string_view>
#include <windows.h>

namespace zebdiag
{
// Seconds since 1970 in UTC; absent for what is no time. The text is local time, whose own offset is not to
// be relied on; `zone` is where its computer stands, null for this one's zone.
std::optional<long long> UnixTime(std::wstring_view cimTime, const TIME_ZONE_INFORMATION* zone = nullptr);

long long UnixNow();
} // namespace zebdiag
