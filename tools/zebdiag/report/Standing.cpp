#include "tools/zebdiag/report/Standing.h"

#include "tools/zebdiag/Words.h"
#include "tools/zebdiag/languages/Said.h"

#include <algorithm>

namespace zebdiag
{
namespace
{
struct CStandingRow
{
    TestState State; // of the last row: none
    const wchar_t* Kind;
    const wchar_t* Sign; // the path of a drawing that is 16 by 16
};
// In the order of Standing.
constexpr CStandingRow kRows[] = {
    {TestState::Failed, L"failed", L"M3 3 L13 13 M13 3 L3 13"},
    {TestState::Stopped, L"stopped", L"M4 4 H12 V12 H4 Z"},
    {TestState::InProgress, L"running", L"M4 2.5 L13 8 L4 13.5 Z"},
    {TestState::Passed, L"passed", L"M2 8.5 L6 12.5 L14 3.5"},
    {TestState::Other, L"none", L"M3 8 H13"},
    {TestState::Unknown, L"none", L"M3 8 H13"},
    {TestState::Unknown, L"none", L"M3 8 H13"},
};

const CStandingRow& RowOf(Standing standing) noexcept
{
    return kRows[static_cast<size_t>(standing)];
}
} // namespace

Standing StandingOf(const CReport& report, const CTest& test)
{
    const CResult* result = report.ResultOf(test);
    if (!result)
        return test.InUse ? Standing::InProgress : Standing::NoResult;
    const auto row = std::ranges::find(kRows, result->State, &CStandingRow::State);
    return row == std::end(kRows) ? Standing::Unknown : static_cast<Standing>(row - std::begin(kRows));
}

std::wstring StandingInWords(Standing standing)
{
    return standing == Standing::NoResult ? Said(L"No result") : StateInWords(RowOf(standing).State);
}

const wchar_t* KindOf(Standing standing) noexcept
{
    return RowOf(standing).Kind;
}

void AddStanding(CHtml& html, Standing standing, const std::wstring& words)
{
    {
        const auto svg = html.Element(
            L"svg", {{L"class", L"sign"}, {L"viewBox", L"0 0 16 16"}, {L"aria-hidden", L"true"}});
        html.Add(L"path", L"", {{L"d", RowOf(standing).Sign}});
    }
    html.Add(L"span", words);
}
} // namespace zebdiag
