#include "standin/object/DateTimeForm.h"

#include <algorithm>

namespace standin
{
namespace
{
struct CField
{
    size_t First;
    size_t Length;
    int Low;
    int High;
};

constexpr CField kMoment[] = {{0, 4, 0, 9999}, {4, 2, 1, 12},  {6, 2, 1, 31},     {8, 2, 0, 23},
                              {10, 2, 0, 59},  {12, 2, 0, 59}, {15, 6, 0, 999999}};
constexpr CField kInterval[] = {{0, 8, 0, 99999999}, {8, 2, 0, 23},      {10, 2, 0, 59},
                                {12, 2, 0, 59},      {15, 6, 0, 999999}, {22, 3, 0, 0}};
constexpr size_t kPoint = 14;
constexpr size_t kSign = 21;
constexpr size_t kLength = 25;

bool AreDigits(std::wstring_view text) noexcept
{
    return !text.empty() && text.find_first_not_of(L"0123456789") == text.npos;
}

template <size_t Count>
bool Hold(std::wstring_view text, const CField (&fields)[Count]) noexcept
{
    return std::ranges::all_of(fields,
                               [&](const CField& field)
                               {
                                   const auto digits = text.substr(field.First, field.Length);
                                   int number = 0;
                                   for (const wchar_t digit : digits)
                                       number = number * 10 + (digit - L'0');
                                   return AreDigits(digits) && number >= field.Low && number <= field.High;
                               });
}
} // namespace

bool IsDateTime(std::wstring_view text, bool anyOffset) noexcept
{
    if (text.size() <= kSign || text[kPoint] != L'.' || (text.size() != kLength && !anyOffset))
        return false;
    if (text[kSign] == L':')
        return text.size() == kLength && Hold(text, kInterval);
    std::wstring_view offset = text.substr(kSign + 1);
    if (anyOffset && offset.starts_with(L'-'))
        offset.remove_prefix(1);
    return (text[kSign] == L'+' || text[kSign] == L'-') && AreDigits(offset) && Hold(text, kMoment);
}
} // namespace standin
