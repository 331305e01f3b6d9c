// The commands that show and delete results.
#include "tools/zebdiag/Commands.h"

#include "Common/src/com/WmiStatus.h"
#include "tools/zebdiag/Inventory.h"
#include "tools/zebdiag/ObjectPath.h"
#include "tools/zebdiag/TextReport.h"
#include "tools/zebdiag/Words.h"

#include <algorithm>
#include <iterator>

namespace zebdiag
{
namespace
{
constexpr wchar_t kStoredCopyStays[] =
    L"The result is gone from the provider's memory, but its stored copy could not be removed: you may not "
    L"change the provider's data folder. The result is back when the provider starts next. An administrator, "
    L"or "
    L"anyone else who may change files in that folder, can then remove it with \"zebdiag clear\".";

// A refusal that came after the result had gone from the provider's memory can only be the store's.
bool StoreRefused(const CCommandContext& context, const CTest& test, const CFailure& failure)
{
    constexpr HRESULT kRefusals[] = {E_ACCESSDENIED, STG_E_ACCESSDENIED, wmi::AccessDenied};
    if (std::ranges::find(kRefusals, failure.Status) == std::end(kRefusals))
        return false;
    try
    {
        return !LoadResult(context.Session, test);
    }
    catch (const CFailure&)
    {
        return false;
    }
}

// The provider's answer does not say whether a result went, so it is looked for.
CTestEffect ClearOne(const CCommandContext& context, const CInventory& inventory, const CTestChoice& choice)
{
    const CTest& test = *choice.Test;
    CTestEffect effect = {choice, ExitCode::Passed, {}};
    try
    {
        context.Session.Call(test.Path, kTestClass, L"ClearResults",
                             {{L"SystemElement", AdapterPath(test.AdapterKey, inventory.Computer)}});
        if (!LoadResult(context.Session, test))
            return effect;
        const std::optional<CTest> now = LoadTest(context.Session, test);
        effect.Code = now && now->InUse ? ExitCode::Busy : ExitCode::CouldNotRun;
        effect.Message =
            effect.Code == ExitCode::Busy
                ? L"The result cannot be cleared while the test runs. Wait for its end, or stop it."
                : L"The provider did not clear the result. Its trace log tells why.";
    }
    catch (const CFailure& failure)
    {
        const bool kept = StoreRefused(context, test, failure);
        effect.Code = kept ? ExitCode::CouldNotRun : failure.Code;
        effect.Message = kept ? kStoredCopyStays : failure.Cause;
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
    for (const CTestEffect& effect : effects)
        if (effect.Code != ExitCode::Passed)
            context.Console.Out(TestTitle(effect.Choice) + L": " + effect.Message + L"\n");
    context.Console.Out(effects.empty() ? std::wstring(L"There was no result to clear.\n")
                                        : L"Cleared " + Count(cleared, L"result") + L".\n");
    return verdict;
}
} // namespace zebdiag
