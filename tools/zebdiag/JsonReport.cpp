#include "tools/zebdiag/JsonReport.h"

#include "Common/src/com/Text.h"
#include "tools/zebdiag/DateTime.h"
#include "tools/zebdiag/ServingProcess.h"
#include "tools/zebdiag/Words.h"
#include "tools/zebdiag/doctor/Places.h"

#include <nlohmann/json.hpp>

namespace zebdiag
{
namespace
{
using Json = nlohmann::ordered_json;

std::wstring Printed(const Json& document)
{
    // What is not Unicode is replaced, so that the document can always be read.
    return WidenUtf8(document.dump(2, ' ', false, Json::error_handler_t::replace)) + L"\n";
}

Json TextOrNull(const std::wstring& text)
{
    return text.empty() ? Json() : Json(Utf8Text(text));
}

template <class T>
Json ValueOrNull(const std::optional<T>& value)
{
    return value ? Json(*value) : Json();
}

Json Texts(const std::vector<std::wstring>& texts)
{
    Json list = Json::array();
    for (const std::wstring& text : texts)
        list.push_back(Utf8Text(text));
    return list;
}

Json Begin(Command command)
{
    return {{"version", kJsonVersion}, {"command", CommandName(command)}};
}

Json Begin(const CJsonHead& head)
{
    Json document = Begin(head.Command);
    document["computer"] = TextOrNull(head.Computer);
    document["namespace"] = Utf8Text(head.Namespace);
    return document;
}

void AddVerdict(Json& document, ExitCode verdict)
{
    document["verdict"] = ExitCodeName(verdict);
    document["exitCode"] = static_cast<int>(verdict);
}

Json AdapterOf(const CAdapter& adapter)
{
    return {{"key", Utf8Text(adapter.Key)},
            {"name", Utf8Text(adapter.Name)},
            {"description", TextOrNull(adapter.Description)}};
}

// Which test something is about.
Json TestOf(const CTestChoice& choice)
{
    return {{"key", Utf8Text(choice.Test->Key)},
            {"number", choice.Test->Number},
            {"caption", Utf8Text(choice.Test->Caption)},
            {"adapter", AdapterOf(*choice.Adapter)}};
}

// A test by itself.
Json ListedTestOf(const CTest& test)
{
    return {{"key", Utf8Text(test.Key)},
            {"number", test.Number},
            {"caption", Utf8Text(test.Caption)},
            {"description", Utf8Text(test.Description)},
            {"running", test.InUse},
            {"sendsPackets", test.SendsPackets()},
            {"characteristics", test.Characteristics}};
}

Json SettingOf(const CSettingValues& values)
{
    return {{"coverage", ValueOrNull(values.Coverage)},
            {"quick", ValueOrNull(values.Quick)},
            {"report", ValueOrNull(values.Report)}};
}

Json ResultOf(const CResult& result)
{
    return {{"state", StateName(result.State)},
            {"percentComplete", ValueOrNull(result.Percent)},
            {"started", TextOrNull(IsoTime(result.Started))},
            {"ended", TextOrNull(IsoTime(result.Completed))},
            {"written", TextOrNull(IsoTime(result.Written))},
            {"setting", SettingOf(result.Setting)},
            {"findings", Texts(Findings(result))},
            {"lines", Texts(result.Lines)}};
}

// Null where there are none.
Json CountersOrNull(const CTest& test, const CResult& result)
{
    Json counters;
    for (const CCounter& counter : CountersOf(test, result))
        counters.push_back({{"name", Utf8Text(counter.Name)}, {"value", counter.Value}});
    return counters;
}
} // namespace

std::wstring JsonList(const CJsonHead& head, const std::vector<const CAdapter*>& adapters,
                      const std::vector<unsigned long>& processes)
{
    Json document = Begin(head);
    document["provider"] = {{"image", Utf8Text(kProviderImage)}, {"processIds", processes}};
    document["adapters"] = Json::array();
    for (const CAdapter* adapter : adapters)
    {
        Json one = AdapterOf(*adapter);
        one["tests"] = Json::array();
        for (const CTest& test : adapter->Tests)
            one["tests"].push_back(ListedTestOf(test));
        document["adapters"].push_back(std::move(one));
    }
    return Printed(document);
}

std::wstring JsonRun(const CJsonHead& head, ExitCode verdict, const std::vector<CTestOutcome>& runs,
                     const std::vector<CTestChoice>& notRun)
{
    Json document = Begin(head);
    AddVerdict(document, verdict);
    document["runs"] = Json::array();
    for (const CTestOutcome& run : runs)
        document["runs"].push_back({{"test", TestOf(run.Choice)},
                                    {"outcome", ExitCodeName(run.Outcome.Code)},
                                    {"seconds", run.Outcome.Seconds},
                                    {"message", TextOrNull(run.Outcome.Message)},
                                    {"result", run.Outcome.Result ? ResultOf(*run.Outcome.Result) : Json()}});
    document["notRun"] = Json::array();
    for (const CTestChoice& choice : notRun)
        document["notRun"].push_back(TestOf(choice));
    return Printed(document);
}

std::wstring JsonResults(const CJsonHead& head, const std::vector<CTestChoice>& tests,
                         const std::map<std::wstring, CResult>& results)
{
    Json document = Begin(head);
    document["results"] = Json::array();
    for (const CTestChoice& choice : tests)
    {
        const auto found = results.find(choice.Test->Key);
        if (found == results.end())
            continue;
        Json one = {{"test", TestOf(choice)}};
        one.update(ResultOf(found->second));
        document["results"].push_back(std::move(one));
    }
    return Printed(document);
}

std::wstring JsonSettings(const CJsonHead& head, const std::vector<CTestChoice>& tests,
                          const std::map<std::wstring, CSetting>& settings)
{
    Json document = Begin(head);
    document["settings"] = Json::array();
    for (const CTestChoice& choice : tests)
    {
        const auto found = settings.find(choice.Test->Key);
        if (!choice.Test->SendsPackets() || found == settings.end())
            continue;
        Json one = {{"test", TestOf(choice)}};
        one.update(SettingOf(found->second.Values));
        document["settings"].push_back(std::move(one));
    }
    return Printed(document);
}

std::wstring JsonEffects(const CJsonHead& head, ExitCode verdict, const std::vector<CTestEffect>& effects)
{
    Json document = Begin(head);
    AddVerdict(document, verdict);
    document["tests"] = Json::array();
    for (const CTestEffect& effect : effects)
        document["tests"].push_back({{"test", TestOf(effect.Choice)},
                                     {"outcome", ExitCodeName(effect.Code)},
                                     {"message", TextOrNull(effect.Message)}});
    return Printed(document);
}

std::wstring JsonProfiles(const Profiles& profiles)
{
    Json document = Begin(Command::Profiles);
    document["profiles"] = Json::array();
    for (const auto& [name, values] : profiles)
    {
        Json one = {{"name", Utf8Text(name)}};
        one.update(SettingOf(values));
        document["profiles"].push_back(std::move(one));
    }
    return Printed(document);
}

std::wstring JsonOfReport(const CReport& report)
{
    Json document = Begin({Command::Report, report.Computer, report.Namespace});
    document["made"] = TextOrNull(IsoTime(report.Made));
    document["program"] = Utf8Text(kOwnVersion);
    document["provider"] = {{"image", Utf8Text(kProviderImage)}, {"processIds", report.Processes}};
    document["adapters"] = Json::array();
    for (const CAdapter& adapter : report.Adapters)
    {
        Json one = AdapterOf(adapter);
        one["tests"] = Json::array();
        for (const CTest& test : adapter.Tests)
        {
            const CResult* result = report.ResultOf(test);
            const CSettingValues* setting = report.SettingOf(test);
            Json row = ListedTestOf(test);
            row["setting"] = setting ? SettingOf(*setting) : Json();
            row["result"] = result ? ResultOf(*result) : Json();
            row["counters"] = result ? CountersOrNull(test, *result) : Json();
            one["tests"].push_back(std::move(row));
        }
        document["adapters"].push_back(std::move(one));
    }
    return Printed(document);
}

std::wstring JsonFailure(Command command, const CFailure& failure)
{
    Json document = Begin(command);
    AddVerdict(document, failure.Code);
    document["error"] = {
        {"cause", Utf8Text(failure.Cause)},
        {"nextStep", TextOrNull(failure.NextStep)},
        {"status", failure.Status == S_OK ? Json() : Json(Utf8Text(StatusText(failure.Status)))},
        {"providerSays", TextOrNull(failure.Detail)}};
    return Printed(document);
}
} // namespace zebdiag
