// How two ways of doing the same work are compared: both run in turns, a sample of one beside a sample of
// the other, so that whatever else the machine does meets both alike; medians leave out what met only one.
#pragma once

#include <functional>
#include <vector>

using Work = std::function<void()>;

// What is left of many samples.
struct CComparison
{
    double Ratio;           // the median of measured / bare over the pairs
    double MeasuredSeconds; // the median of one call
    double BareSeconds;
};

// How long a comparison goes on: at least `Rounds` pairs of samples, and pairs until `Seconds` have passed.
struct CEffort
{
    int Rounds;
    double Seconds;
};

CComparison Compare(const CEffort& effort, const Work& measured, const Work& bare);

double SecondsOf(const Work& work);
double Median(std::vector<double> values);
