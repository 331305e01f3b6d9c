#include "tools/zebdiag/Words.h"

#include <algorithm>
#include <cstdint>
#include <cwchar>
#include <iterator>
#include <limits>

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

// With fewer lines a result holds no counters, but the reason of a failure.
constexpr size_t kLeastCounters = 3;
constexpr wchar_t kDecimalDigits[] = L"0123456789";

std::wstring FindingOf(const std::wstring& line)
{
    const size_t first = line.find(L'|');
    const size_t second = first == std::wstring::npos ? first : line.find(L'|', first + 1);
    return second == std::wstring::npos ? line : line.substr(second + 1);
}

bool EndsWithNumber(const std::wstring& finding)
{
    return finding.find_last_of(kDecimalDigits) + 1 == finding.size() && !finding.empty();
}

void MakeUnsigned(std::wstring& counter)
{
    const size_t sign = counter.find_last_not_of(kDecimalDigits);
    if (sign == std::wstring::npos || counter[sign] != L'-')
        return;
    const long long value = std::wcstoll(counter.c_str() + sign, nullptr, 10);
    if (value >= std::numeric_limits<int32_t>::min())
        counter.replace(sign, std::wstring::npos, std::to_wstring(static_cast<uint32_t>(value)));
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

std::vector<std::wstring> Findings(const CResult& result)
{
    std::vector<std::wstring> findings;
    for (const std::wstring& line : result.Lines)
        findings.push_back(FindingOf(line));
    if (findings.size() >= kLeastCounters && std::ranges::all_of(findings, EndsWithNumber))
        for (std::wstring& finding : findings)
            MakeUnsigned(finding);
    return findings;
}

std::wstring Count(size_t count, const wchar_t* word)
{
    return std::to_wstring(count) + L" " + word + (count == 1 ? L"" : L"s");
}

const wchar_t* OutcomeInWords(ExitCode code) noexcept
{
    switch (code)
    {
    case ExitCode::Passed:
        return L"passed";
    case ExitCode::Failed:
        return L"failed";
    case ExitCode::Stopped:
        return L"stopped";
    case ExitCode::Busy:
        return L"busy";
    default:
        return L"could not run";
    }
}
} // namespace zebdiag
