// The commands that show and delete results.
#include "tools/zebdiag/Commands.h"
#include "tools/zebdiag/Inventory.h"
#include "tools/zebdiag/ObjectPath.h"
#include "tools/zebdiag/TextReport.h"
#include "tools/zebdiag/Words.h"
#include "tools/zebdiag/languages/Said.h"

namespace zebdiag
{
namespace
{
constexpr const wchar_t* kStoredCopyStays = Marked(
    L"The result is gone from the provider's memory, but a stored copy of it stays: you may not change the "
    L"provider's data folder. It is back when the provider starts next. An administrator, or anyone else who "
    L"may change files in that folder, can then remove it with \"zebdiag clear\".");

// The provider's answer does not say whether a result went, so it is looked for. Nor does it say that the
// store refused the caller.
CTestEffect ClearOne(const CCommandContext& context, const CInventory& inventory, const CTestChoice& choice)
{
    const CTest& test = *choice.Test;
    CTestEffect effect = {choice, ExitCode::Passed, {}};
    try
    {
        context.Session.Call(test.Path, kTestClass, L"ClearResults",
                             {{L"SystemElement", AdapterPath(test.AdapterKey, inventory.Computer)}});
        if (!LoadResult(context.Session, test))
        {
            if (context.Surroundings.StoreRefuses(context.Session))
                effect = {choice, ExitCode::CouldNotRun, Said(kStoredCopyStays)};
            return effect;
        }
        const std::optional<CTest> now = LoadTest(context.Session, test);
        effect.Code = now && now->InUse ? ExitCode::Busy : ExitCode::CouldNotRun;
        effect.Message =
            effect.Code == ExitCode::Busy
                ? Said(L"The result cannot be cleared while the test runs. Wait for its end, or stop it.")
                : Said(L"The provider did not clear the result.") + TraceTells();
    }
    catch (const CFailure& failure)
    {
        effect.Code = failure.Code;
        effect.Message = OutcomeOf(failure).Message;
    }
    return effect;
}
} // namespace

ExitCode ShowResults(const CCommandContext& context)
{
    const CInventory inventory = context.Inventory();
    const auto tests = context.ChosenTests(inventory);
    const auto results = LoadResults(context.Session);
    context.Console.Out(context.Options.Json ? JsonResults(context.JsonHead(inventory), tests, results)
                                             : RenderResults(tests, results, context.Console.Width()));
    return ExitCode::Passed;
}

ExitCode ClearResults(const CCommandContext& context)
{
    const CInventory inventory = context.Inventory();
    const auto tests = context.ChosenTests(inventory);
    const auto results = LoadResults(context.Session);

    ExitCode verdict = ExitCode::Passed;
    std::vector<CTestEffect> effects;
    size_t cleared = 0;
    for (const CTestChoice& choice : tests)
    {
        if (!results.contains(choice.Test->Key))
            continue;
        effects.push_back(ClearOne(context, inventory, choice));
        verdict = Graver(verdict, effects.back().Code);
        cleared += effects.back().Code == ExitCode::Passed;
    }

    if (context.Options.Json)
    {
        context.Console.Out(JsonEffects(context.JsonHead(inventory), verdict, effects));
        return verdict;
    }
    const bool any = !effects.empty();
    std::erase_if(effects, [](const CTestEffect& effect) { return effect.Code == ExitCode::Passed; });
    context.Say(EffectsInWords(effects));
    context.Say(any ? Said(L"Cleared: {1}.", {Results(cleared)}) : Said(L"There was no result to clear."));
    return verdict;
}
} // namespace zebdiag
