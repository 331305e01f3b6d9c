#include "Common/src/com/Text.h"
#include "tools/zebdiag/JsonReport.h"
#include "tools/zebdiag/Table.h"
#include "tools/zebdiag/Wrap.h"
#include "tools/zebdiag/doctor/Doctor.h"
#include "tools/zebdiag/languages/Said.h"

#include <nlohmann/json.hpp>

namespace zebdiag
{
namespace
{
struct CPointWords
{
    const wchar_t* Words;
    const char* Name;
};
// In the order of PointState.
constexpr CPointWords kPointWords[] = {
    {Marked(L"good"), "good"}, {Marked(L"WRONG"), "wrong"}, {Marked(L"unknown"), "unknown"}};

const CPointWords& WordsOf(const CPoint& point)
{
    return kPointWords[static_cast<int>(point.Finding.State)];
}
} // namespace

std::wstring RenderPoints(const std::vector<CPoint>& points, unsigned width)
{
    CTable table({Said(L"Point"), Said(L"State"), Said(L"Finding")});
    size_t counts[std::size(kPointWords)] = {};
    for (const CPoint& point : points)
    {
        const CFinding& finding = point.Finding;
        table.Add({point.Title, Said(WordsOf(point).Words),
                   finding.Text + (finding.NextStep.empty() ? L"" : L"\n-> " + finding.NextStep)});
        ++counts[static_cast<int>(finding.State)];
    }
    const auto count = [&](PointState state) { return std::to_wstring(counts[static_cast<int>(state)]); };
    return table.Render(width) + L"\n" +
           Paragraph(Said(L"{1} good, {2} wrong, {3} unknown.",
                          {count(PointState::Good), count(PointState::Wrong), count(PointState::Unknown)}),
                     width);
}

std::wstring JsonPoints(const CExamination& exam, const std::vector<CPoint>& points)
{
    const ExitCode verdict = VerdictOf(exam, points);
    nlohmann::ordered_json document = {{"version", kJsonVersion},
                                       {"command", CommandName(Command::Doctor)},
                                       {"computer", nullptr},
                                       {"namespace", Utf8Text(exam.Target.Namespace)},
                                       {"verdict", ExitCodeName(verdict)},
                                       {"exitCode", static_cast<int>(verdict)},
                                       {"points", nlohmann::ordered_json::array()}};
    if (exam.Inventory && !exam.Inventory->Computer.empty())
        document["computer"] = Utf8Text(exam.Inventory->Computer);
    for (const CPoint& point : points)
    {
        nlohmann::ordered_json next;
        if (!point.Finding.NextStep.empty())
            next = Utf8Text(point.Finding.NextStep);
        document["points"].push_back({{"point", point.Id},
                                      {"title", Utf8Text(point.Title)},
                                      {"state", WordsOf(point).Name},
                                      {"finding", Utf8Text(point.Finding.Text)},
                                      {"nextStep", std::move(next)}});
    }
    return WidenUtf8(document.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace)) + L"\n";
}
} // namespace zebdiag
