#include "tools/zebdiag/RunRows.h"

#include <algorithm>

namespace zebdiag
{
namespace
{
// A first percentage says too little about the rest.
constexpr long kTellingPercent = 5;

std::optional<unsigned long long> UsualSeconds(const std::vector<CRunRow>& rows)
{
    unsigned long long sum = 0;
    unsigned long long count = 0;
    for (const CRunRow& row : rows)
        if (row.Phase == RunPhase::Ended && row.HasRun && !row.Choice.Test->SendsPackets())
        {
            sum += row.Seconds;
            ++count;
        }
    if (count == 0)
        return std::nullopt;
    return std::max((sum + count / 2) / count, 1ULL);
}

std::optional<unsigned long long> LeftOf(const CRunRow& row, std::optional<unsigned long long> usual)
{
    if (row.Phase == RunPhase::Ended || row.Phase == RunPhase::LeftOut)
        return 0;
    if (row.Percent && *row.Percent >= kTellingPercent)
        return row.Seconds * static_cast<unsigned long long>(100 - *row.Percent) /
               static_cast<unsigned long long>(*row.Percent);
    const auto expected = row.Choice.Test->SendsPackets() ? row.MostSeconds : usual;
    if (!expected)
        return std::nullopt;
    return *expected > row.Seconds ? *expected - row.Seconds : 0;
}
} // namespace

unsigned PercentDone(const std::vector<CRunRow>& rows)
{
    unsigned long long done = 0;
    for (const CRunRow& row : rows)
        done += row.Phase == RunPhase::Ended ? 100 : static_cast<unsigned long long>(row.Percent.value_or(0));
    return rows.empty() ? 0 : static_cast<unsigned>(done / rows.size());
}

std::optional<unsigned long long> SecondsLeft(const std::vector<CRunRow>& rows, Order order)
{
    std::vector<CTestChoice> tests;
    for (const CRunRow& row : rows)
        tests.push_back(row.Choice);
    const auto usual = UsualSeconds(rows);
    unsigned long long longest = 0;
    for (const std::vector<size_t>& lane : LanesOf(tests, order))
    {
        unsigned long long left = 0;
        for (const size_t index : lane)
        {
            const auto one = LeftOf(rows[index], usual);
            if (!one)
                return std::nullopt;
            left += *one;
        }
        longest = std::max(longest, left);
    }
    return longest;
}
} // namespace zebdiag
