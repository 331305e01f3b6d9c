#include "tools/zebdiag/DateTime.h"

#include <algorithm>

namespace zebdiag
{
namespace
{
constexpr size_t kDigits = 14;
constexpr size_t kDateDigits = 8;

std::wstring Formatted(std::wstring_view time, wchar_t between)
{
    const auto isDigit = [](wchar_t c) { return c >= L'0' && c <= L'9'; };
    if (time.size() < kDigits || !std::all_of(time.begin(), time.begin() + kDigits, isDigit))
        return {};
    const auto part = [time](size_t at, size_t count) { return std::wstring(time.substr(at, count)); };
    return part(0, 4) + L"-" + part(4, 2) + L"-" + part(6, 2) + between + part(8, 2) + L":" + part(10, 2) +
           L":" + part(12, 2);
}
} // namespace

std::wstring ReadableTime(std::wstring_view cimTime)
{
    return Formatted(cimTime, L' ');
}

std::wstring ReadableEnd(std::wstring_view cimTime, std::wstring_view begin)
{
    const std::wstring whole = ReadableTime(cimTime);
    return whole.empty() || cimTime.substr(0, kDateDigits) != begin.substr(0, kDateDigits)
               ? whole
               : whole.substr(whole.find(L' ') + 1);
}

std::wstring IsoTime(std::wstring_view cimTime)
{
    return Formatted(cimTime, L'T');
}

std::wstring Duration(unsigned long long seconds)
{
    const std::wstring rest = std::to_wstring(seconds % 60) + L" s";
    return seconds < 60 ? rest : std::to_wstring(seconds / 60) + L" min " + rest;
}
} // namespace zebdiag
