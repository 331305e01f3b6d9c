#include "bench/Figures.h"
#include "bench/InProcessProvider.h"
#include "bench/Measure.h"
#include "bench/Must.h"
#include "bench/RunRequest.h"

#include "CDM/src/engine/naming/DiagKeys.h"
#include "Common/src/com/Variant.h"

namespace
{
// The agent's call takes next to no time here, so that a ratio to it says little. The call by which a
// client's request comes into the provider's process takes about this long by itself.
constexpr double kGoalMicroseconds = 500;
constexpr CFigureTexts kTexts = {
    .Letter = 'c',
    .Title = "Running a test that ends at once",
    .Measured = "RunTest on the provider object: checks, locks, the run, its times and its result",
    .Against = "the agent's call alone, which does nothing here",
    .Goal = "at most 500 us on top, about what one call between two processes takes",
    .FirstColumn = "test",
};

constexpr CEffort kEffort = {31, 1.0};

enum class Setting
{
    None,
    Own
};

void MeasureOne(CReport& report, const char* name, CInProcessProvider& provider, ULONG testId,
                Setting setting)
{
    CRunRequest request = std::move(RunRequests(CBenchAgent::kTestsPerAdapter).at(testId - 1));
    if (setting == Setting::Own)
    {
        const CBstr key = MakeTestKey(testId, request.AdapterKey.Get());
        CVariant reference = CVariant::FromBstr(CreateSettingReference(key.View()).Detach());
        Must(request.InParameters->Put(L"Setting", 0, &reference, 0), "Put");
    }
    const ComPtr<CCountingSink> sink = MakeCom<CCountingSink>();
    const CComparison found = Compare(
        kEffort,
        [&]
        {
            request.Send(provider.Services(), provider.Context(), *sink.Get());
            Must(sink->TakeCount() == 1 && sink->Result() == S_OK, "RunTest");
        },
        [&] { (void)provider.Agent().RunDiagTest(request.AdapterKey.Get(), request.TestID); });
    const double overhead = (found.MeasuredSeconds - found.BareSeconds) * 1e6;
    report.Line(name,
                {Fixed(found.MeasuredSeconds * 1e6, 2), Fixed(found.BareSeconds * 1e6, 3), Fixed(overhead, 2),
                 Fixed(found.Ratio, 0)},
                overhead <= kGoalMicroseconds);
}
} // namespace

void MeasureRun(CReport& report)
{
    report.Begin(kTexts, {"RunTest, us", "agent, us", "on top, us", "ratio"});
    CInProcessProvider provider(CBenchAgent::kTestsPerAdapter);
    MeasureOne(report, "passes", provider, 1, Setting::None);
    MeasureOne(report, "passes, run with its setting", provider, 1, Setting::Own);
    MeasureOne(report, "fails", provider, CBenchAgent::kFailingTest, Setting::None);
}
