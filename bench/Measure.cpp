#include "bench/Measure.h"

#include <algorithm>
#include <cmath>
#include <windows.h>

namespace
{
// Far above what reading the clock costs.
constexpr double kShortestSample = 0.003;
constexpr int kMostRounds = 401;

double Now()
{
    LARGE_INTEGER frequency;
    LARGE_INTEGER ticks;
    QueryPerformanceFrequency(&frequency);
    QueryPerformanceCounter(&ticks);
    return static_cast<double>(ticks.QuadPart) / static_cast<double>(frequency.QuadPart);
}

double SecondsPerCall(const Work& work, int calls)
{
    const double start = Now();
    for (int i = 0; i < calls; ++i)
        work();
    return (Now() - start) / calls;
}

// How many calls make a sample, by the slower of the two.
int SampleSize(const Work& measured, const Work& bare)
{
    measured();
    bare();
    const double once = std::max({SecondsOf(measured), SecondsOf(bare), 1e-8});
    return std::max(1, static_cast<int>(std::ceil(kShortestSample / once)));
}
} // namespace

double SecondsOf(const Work& work)
{
    return SecondsPerCall(work, 1);
}

double Median(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

CComparison Compare(const CEffort& effort, const Work& measured, const Work& bare)
{
    const int calls = SampleSize(measured, bare);
    std::vector<double> ratios;
    std::vector<double> measuredTimes;
    std::vector<double> bareTimes;
    const double end = Now() + effort.Seconds;
    for (int round = 0; round < kMostRounds && (round < effort.Rounds || Now() < end); ++round)
    {
        // Who comes second may find the caches warm or the memory used: they take turns.
        const bool measuredFirst = round % 2 == 0;
        const double first = SecondsPerCall(measuredFirst ? measured : bare, calls);
        const double second = SecondsPerCall(measuredFirst ? bare : measured, calls);
        measuredTimes.push_back(measuredFirst ? first : second);
        bareTimes.push_back(measuredFirst ? second : first);
        ratios.push_back(measuredTimes.back() / bareTimes.back());
    }
    return {Median(ratios), Median(measuredTimes), Median(bareTimes)};
}
