#include "tools/zebdiag/Words.h"

#include <iterator>

namespace zebdiag
{
namespace
{
struct CStateRow
{
    const wchar_t* Words;
    const char* Name;
};
constexpr CStateRow kStates[] = {{L"Unknown", "unknown"},         {L"Other", "other"},
                                 {L"Passed", "passed"},           {L"Failed", "failed"},
                                 {L"In progress", "in_progress"}, {L"Stopped", "stopped"}};

const CStateRow& RowOf(TestState state) noexcept
{
    const auto number = static_cast<size_t>(state);
    return kStates[number < std::size(kStates) ? number : 0];
}
} // namespace

const wchar_t* StateInWords(TestState state) noexcept
{
    return RowOf(state).Words;
}

const char* StateName(TestState state) noexcept
{
    return RowOf(state).Name;
}

std::wstring Finding(const std::wstring& line)
{
    const size_t first = line.find(L'|');
    const size_t second = first == std::wstring::npos ? first : line.find(L'|', first + 1);
    return second == std::wstring::npos ? line : line.substr(second + 1);
}

std::wstring Count(size_t count, const wchar_t* word)
{
    return std::to_wstring(count) + L" " + word + (count == 1 ? L"" : L"s");
}
} // namespace zebdiag
