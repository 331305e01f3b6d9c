#include "tools/zebdiag/metrics/MetricsCommand.h"

#include "Common/src/com/Text.h"
#include "tools/zebdiag/Inventory.h"
#include "tools/zebdiag/WholeFile.h"
#include "tools/zebdiag/metrics/MetricsDocument.h"

namespace zebdiag
{
namespace
{
constexpr LONG kLongestWait = 60000; // milliseconds

// Names of tests are labels, and the same on machines of every language.
constexpr wchar_t kEnglish[] = L"MS_409";

void Ask(const COptions& options, const CMetricsSources& sources, CMetricsFacts& facts)
{
    CTarget target = options.Target;
    if (target.Locale.empty())
        target.Locale = kEnglish;
    const CWmiSession session = sources.Connect(target, {});
    const AdapterNames names = sources.Names(session);
    const unsigned long long begin = sources.Milliseconds();
    facts.Inventory = LoadInventory(session, names, kLongestWait);
    facts.AnswerMilliseconds = sources.Milliseconds() - begin;
    facts.Results = LoadResults(session, kLongestWait);
}

void Publish(const CMetricsFacts& facts, const std::wstring& file, IConsole& console)
{
    const std::string document = MetricsDocument(facts);
    if (file.empty())
        console.Out(WidenUtf8(document));
    else
        WriteWholeFile(file, document);
}
} // namespace

ExitCode WriteMetrics(const COptions& options, const CMetricsSources& sources, IConsole& console)
{
    CMetricsFacts facts;
    try
    {
        Ask(options, sources, facts);
    }
    catch (const CFailure& failure)
    {
        CMetricsFacts told;
        told.Now = sources.Now();
        told.Failure = &failure;
        Publish(told, options.Out, console);
        throw;
    }
    facts.Now = sources.Now();
    Publish(facts, options.Out, console);
    return ExitCode::Passed;
}
} // namespace zebdiag
