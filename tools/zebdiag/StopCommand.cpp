#include "tools/zebdiag/Commands.h"
#include "tools/zebdiag/Inventory.h"
#include "tools/zebdiag/TextReport.h"
#include "tools/zebdiag/Words.h"
#include "tools/zebdiag/languages/Said.h"

namespace zebdiag
{
namespace
{
// How long a test may take to end after it took the stop.
constexpr unsigned long long kPatience = 30000;

bool StillRuns(const CWmiSession& session, const CTest& test)
{
    const std::optional<CTest> now = LoadTest(session, test);
    return now && now->InUse;
}

// False where the test still runs when patience, or the user's, is at its end.
bool WaitForEnd(const CCommandContext& context, const CTest& test)
{
    const CRunControl& control = context.Control;
    const unsigned long long start = control.Now();
    while (StillRuns(context.Session, test))
        if (control.Now() - start >= kPatience ||
            WaitForSingleObject(control.Stop, control.PollMilliseconds) == WAIT_OBJECT_0)
            return false;
    return true;
}

std::wstring EndInWords(const CCommandContext& context, const CTest& test)
{
    const std::optional<CResult> result = LoadResult(context.Session, test);
    return result ? StateInWords(result->State) + L"." : Said(L"Ended.");
}

CTestEffect StopOne(const CCommandContext& context, const CInventory& inventory, const CTestChoice& choice)
{
    CTestEffect effect = {choice, ExitCode::CouldNotRun, {}};
    try
    {
        const bool taken = RequestStop(context.Session, inventory.Computer, *choice.Test);
        if (!taken && StillRuns(context.Session, *choice.Test))
            effect.Message = Said(L"The provider did not stop the test.") + TraceTells();
        else if (!taken)
            effect = {choice, ExitCode::Passed, Said(L"It had ended already.")};
        else if (WaitForEnd(context, *choice.Test))
            effect = {choice, ExitCode::Passed, EndInWords(context, *choice.Test)};
        else
            effect.Message =
                Said(L"It was told to stop but still runs. \"zebdiag list\" shows when it has ended.");
    }
    catch (const CFailure& failure)
    {
        effect.Code = failure.Code;
        effect.Message = OutcomeOf(failure).Message;
    }
    return effect;
}

// That nothing had to be stopped is no failure, whether a test was named or not.
std::wstring NothingRuns(const CCommandContext& context, const std::vector<CTestChoice>& chosen)
{
    if (context.Options.Test.empty())
        return Said(L"No test is running.");
    std::wstring text;
    for (const CTestChoice& choice : chosen)
        text += (text.empty() ? L"" : L"\n") + Said(L"{1} is not running.", {TestTitle(choice)});
    return text;
}
} // namespace

ExitCode StopTests(const CCommandContext& context)
{
    const CInventory inventory = context.Inventory();
    context.Control.CatchInterrupts();
    ExitCode verdict = ExitCode::Passed;
    std::vector<CTestEffect> effects;
    const auto chosen = context.ChosenTests(inventory);
    for (const CTestChoice& choice : chosen)
    {
        if (!choice.Test->InUse)
            continue;
        effects.push_back(StopOne(context, inventory, choice));
        verdict = Graver(verdict, effects.back().Code);
    }
    if (context.Options.Json)
    {
        context.Console.Out(JsonEffects(context.JsonHead(inventory), verdict, effects));
        return verdict;
    }
    context.Say(EffectsInWords(effects));
    if (effects.empty())
        context.Say(NothingRuns(context, chosen));
    return verdict;
}
} // namespace zebdiag
