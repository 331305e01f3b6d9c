#include "tools/zebdiag/Words.h"
#include "tools/zebdiag/languages/Said.h"

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
constexpr CStateRow kStates[] = {{Marked(L"Unknown"), "unknown"},         {Marked(L"Other"), "other"},
                                 {Marked(L"Passed"), "passed"},           {Marked(L"Failed"), "failed"},
                                 {Marked(L"In progress"), "in_progress"}, {Marked(L"Stopped"), "stopped"}};

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

std::wstring StateInWords(TestState state)
{
    return Said(RowOf(state).Words);
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

std::wstring Tests(size_t count)
{
    return count == 1 ? Said(L"1 test") : Said(L"{1} tests", {std::to_wstring(count)});
}

std::wstring Adapters(size_t count)
{
    return count == 1 ? Said(L"1 adapter") : Said(L"{1} adapters", {std::to_wstring(count)});
}

std::wstring Results(size_t count)
{
    return count == 1 ? Said(L"1 result") : Said(L"{1} results", {std::to_wstring(count)});
}

std::wstring Percent(long value)
{
    return Said(L"{1} %", {std::to_wstring(value)});
}

std::wstring TraceTells()
{
    return L" " + Said(L"Its trace tells why; \"zebdiag doctor\" says where it is.");
}

std::wstring OutcomeInWords(ExitCode code)
{
    switch (code)
    {
    case ExitCode::Passed:
        return Said(L"passed");
    case ExitCode::Failed:
        return Said(L"failed");
    case ExitCode::Stopped:
        return Said(L"stopped");
    case ExitCode::Busy:
        return Said(L"busy");
    default:
        return Said(L"could not run");
    }
}
} // namespace zebdiag
