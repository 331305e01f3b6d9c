#include "bench/Figures.h"
#include "bench/Measure.h"
#include "bench/Must.h"
#include "bench/Recording.h"

#include "Common/src/com/Text.h"

#include <map>

namespace
{
constexpr CFigureTexts kTexts = {
    .Letter = 'a',
    .Title = "Enumeration in one process",
    .Measured = "an enumeration request to the provider object, per class and number of tests",
    .Against = "the same spawns, puts of ready values and indications to the same sink, alone",
    .Goal = "at most 1.15 at every number of tests, and flat (growth at most 1.10)",
    .FirstColumn = "class",
};

constexpr double kGoal = 1.15;
// How much the ratio may grow from the fewest tests to the most.
constexpr double kGrowthGoal = 1.10;
constexpr size_t kSizes[] = {10, 100, 1000, 10000};
constexpr CEffort kEffort = {11, 0.6};

CComparison CompareClass(CInProcessProvider& provider, const wchar_t* className)
{
    std::vector<CRecordedInstance> instances = RecordInstances(provider, className);
    Must(instances.size() == provider.Tests(), "recording the instances");
    const ComPtr<IWbemClassObject> definition = ClassNamed(className);
    const ComPtr<CCountingSink> sink = MakeCom<CCountingSink>();
    const auto expectAll = [&]
    { Must(sink->TakeCount() == static_cast<long>(provider.Tests()), "delivering every instance"); };
    return Compare(
        kEffort,
        [&]
        {
            provider.Enumerate(className, *sink.Get());
            expectAll();
        },
        [&]
        {
            DeliverBare(*definition.Get(), instances, *sink.Get());
            expectAll();
        });
}
} // namespace

void MeasureEnumeration(CReport& report)
{
    std::map<std::wstring, std::vector<CComparison>> found;
    for (const size_t size : kSizes)
    {
        CInProcessProvider provider(size);
        provider.RunAll();
        for (const wchar_t* className : kServedClasses)
            found[className].push_back(CompareClass(provider, className));
    }

    report.Begin(kTexts, {"10 tests", "100", "1,000", "10,000", "growth", "us each"});
    for (const wchar_t* className : kServedClasses)
    {
        const std::vector<CComparison>& sizes = found[className];
        std::vector<std::string> values;
        bool met = true;
        for (const CComparison& comparison : sizes)
        {
            values.push_back(Fixed(comparison.Ratio, 2));
            met = met && comparison.Ratio <= kGoal;
        }
        const double growth = sizes.back().Ratio / sizes.front().Ratio;
        values.push_back(Fixed(growth, 2));
        values.push_back(Fixed(sizes.back().MeasuredSeconds / static_cast<double>(kSizes[3]) * 1e6, 2));
        report.Line(NarrowText(className), values, met && growth <= kGrowthGoal);
    }
}
