#include "tools/zebdiag/report/Report.h"

#include "tools/zebdiag/Words.h"

#include <cwchar>
#include <limits>

namespace zebdiag
{
namespace
{
constexpr wchar_t kNumberFollows[] = L": ";
// With fewer lines a result tells the reason of a failure, which may end with a number as well.
constexpr size_t kLeastCounters = 3;
constexpr wchar_t kDecimalDigits[] = L"0123456789";

// False for a finding that does not end with a number of 32 bits.
bool ReadCounter(const std::wstring& finding, CCounter& counter)
{
    const size_t mark = finding.rfind(kNumberFollows);
    if (mark == std::wstring::npos)
        return false;
    const std::wstring digits = finding.substr(mark + 2);
    if (digits.empty() || digits.size() > 10 ||
        digits.find_first_not_of(kDecimalDigits) != std::wstring::npos)
        return false;
    const unsigned long long value = std::wcstoull(digits.c_str(), nullptr, 10);
    counter = {finding.substr(0, mark), static_cast<unsigned long>(value)};
    return value <= std::numeric_limits<unsigned long>::max();
}
} // namespace

const CResult* CReport::ResultOf(const CTest& test) const
{
    const auto found = Results.find(test.Key);
    return found == Results.end() ? nullptr : &found->second;
}

const CSettingValues* CReport::SettingOf(const CTest& test) const
{
    const auto found = Settings.find(test.Key);
    return found == Settings.end() || !test.SendsPackets() ? nullptr : &found->second;
}

std::vector<CCounter> CountersOf(const CTest& test, const CResult& result)
{
    std::vector<CCounter> counters;
    if (!test.SendsPackets())
        return counters;
    for (const std::wstring& finding : Findings(result))
    {
        CCounter counter;
        if (!ReadCounter(finding, counter))
            return {};
        counters.push_back(std::move(counter));
    }
    if (counters.size() < kLeastCounters)
        counters.clear();
    return counters;
}
} // namespace zebdiag
