#include "tools/zebdiag/DateTime.h"

#include "tools/zebdiag/Filled.h"
#include "tools/zebdiag/languages/Said.h"

#include <algorithm>

namespace zebdiag
{
namespace
{
constexpr size_t kDigits = 14;
constexpr size_t kDateDigits = 8;

// Empty for what is no time. The places of the pattern are year, month, day, hour, minute, second.
std::wstring Formatted(std::wstring_view time, const std::wstring& pattern)
{
    const auto isDigit = [](wchar_t c) { return c >= L'0' && c <= L'9'; };
    if (time.size() < kDigits || !std::all_of(time.begin(), time.begin() + kDigits, isDigit))
        return {};
    const auto part = [time](size_t at, size_t count) { return std::wstring(time.substr(at, count)); };
    return Filled(pattern, {part(0, 4), part(4, 2), part(6, 2), part(8, 2), part(10, 2), part(12, 2)});
}
} // namespace

std::wstring ReadableTime(std::wstring_view cimTime)
{
    return Formatted(cimTime, Said(L"{1}-{2}-{3} {4}:{5}:{6}"));
}

std::wstring ReadableEnd(std::wstring_view cimTime, std::wstring_view begin)
{
    return cimTime.substr(0, kDateDigits) == begin.substr(0, kDateDigits)
               ? Formatted(cimTime, Said(L"{4}:{5}:{6}"))
               : ReadableTime(cimTime);
}

std::wstring IsoTime(std::wstring_view cimTime)
{
    return Formatted(cimTime, L"{1}-{2}-{3}T{4}:{5}:{6}");
}

std::wstring Duration(unsigned long long seconds)
{
    const std::wstring rest = std::to_wstring(seconds % 60);
    return seconds < 60 ? Said(L"{1} s", {rest})
                        : Said(L"{1} min {2} s", {std::to_wstring(seconds / 60), rest});
}
} // namespace zebdiag
