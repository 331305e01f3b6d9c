// The commands that show and change settings.
#include "tools/zebdiag/Commands.h"
#include "tools/zebdiag/Inventory.h"
#include "tools/zebdiag/TextReport.h"
#include "tools/zebdiag/languages/Said.h"

namespace zebdiag
{
namespace
{
ExitCode Show(const CCommandContext& context, const CInventory& inventory,
              const std::vector<CTestChoice>& tests)
{
    const auto settings = LoadSettings(context.Session);
    context.Console.Out(context.Options.Json ? JsonSettings(context.JsonHead(inventory), tests, settings)
                                             : RenderSettings(tests, settings, context.Console.Width()));
    return ExitCode::Passed;
}
} // namespace

ExitCode ShowSettings(const CCommandContext& context)
{
    const CInventory inventory = context.Inventory();
    return Show(context, inventory, context.ChosenTests(inventory));
}

ExitCode ChangeSettings(const CCommandContext& context)
{
    const CInventory inventory = context.Inventory();
    const auto tests = context.ChosenTests(inventory);
    // All are looked at before the first is changed.
    for (const CTestChoice& choice : tests)
        if (!choice.Test->SendsPackets())
            throw CFailure(ExitCode::CouldNotRun, Said(L"{1} has no settings.", {TestTitle(choice)}),
                           Said(L"See which tests have any with \"zebdiag settings\"."));
    const CSettingValues values = {context.Options.Quick, context.Options.Report, context.Options.Coverage};
    for (const CTestChoice& choice : tests)
        try
        {
            StoreSetting(context.Session, *choice.Test, values);
        }
        catch (CFailure& failure)
        {
            failure.Cause = TestTitle(choice) + L": " + failure.Cause;
            throw;
        }
    return Show(context, inventory, tests);
}
} // namespace zebdiag
