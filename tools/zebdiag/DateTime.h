// The provider's times, which are local to its computer and end with an offset that is not to be relied on.
#pragma once

#include <string>
#include <string_view>

namespace zebdiag
{
// "2024-05-01 13:45:10" of "20240501134510.000000+120"; empty for what is no time.
std::wstring ReadableTime(std::wstring_view cimTime);

// The later of two times: without its date where that is the same.
std::wstring ReadableEnd(std::wstring_view cimTime, std::wstring_view begin);

// "2024-05-01T13:45:10".
std::wstring IsoTime(std::wstring_view cimTime);

// Seconds in words: "45 s", "2 min 5 s".
std::wstring Duration(unsigned long long seconds);
} // namespace zebdiag
