// How a test stands: with a result its state, without one whether it runs.
#pragma once

#include "tools/zebdiag/report/Html.h"
#include "tools/zebdiag/report/Report.h"

namespace zebdiag
{
// What wants attention comes first.
enum class Standing
{
    Failed,
    Stopped,
    InProgress,
    Passed,
    Other,
    Unknown,
    NoResult
};
inline constexpr Standing kStandings[] = {Standing::Failed,  Standing::Stopped, Standing::InProgress,
                                          Standing::Passed,  Standing::Other,   Standing::Unknown,
                                          Standing::NoResult};

Standing StandingOf(const CReport& report, const CTest& test);
std::wstring StandingInWords(Standing standing);
// The class of the page's style.
const wchar_t* KindOf(Standing standing) noexcept;
// Its sign and words, which may say more than its own.
void AddStanding(CHtml& html, Standing standing, const std::wstring& words);
} // namespace zebdiag
