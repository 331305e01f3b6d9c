#include "tools/zebdiag/doctor/Doctor.h"

#include "tools/zebdiag/Console.h"
#include "tools/zebdiag/doctor/Checks.h"
#include "tools/zebdiag/languages/Said.h"

#include <algorithm>

namespace zebdiag
{
namespace
{
struct CPointRow
{
    const char* Id;
    const wchar_t* Title;
    CFinding (*Check)(CExamination&);
    bool Needed; // without it the provider does not answer
};

constexpr CPointRow kPoints[] = {
    {"service", Marked(L"Management service"), CheckService, true},
    {"namespace", Marked(L"Namespace"), CheckNamespace, true},
    {"base_classes", Marked(L"Base classes"), CheckBaseClasses, true},
    {"schema", Marked(L"Schema"), CheckSchema, true},
    {"registration", Marked(L"Provider"), CheckRegistration, true},
    {"files", Marked(L"Files"), CheckFiles, true},
    {"identity", Marked(L"COM application"), CheckIdentity, true},
    {"configuration", Marked(L"Configuration"), CheckConfiguration, true},
    {"agent", Marked(L"Adapter agent"), CheckAgent, true},
    {"data_folder", Marked(L"Data folder"), CheckDataFolder, false},
    {"trace", Marked(L"Trace"), CheckTrace, false},
    {"answer", Marked(L"Provider's answer"), CheckAnswer, false},
    {"texts", Marked(L"Texts"), CheckTexts, false},
    {"adapters", Marked(L"Wired adapters"), CheckAdapters, false},
};

CFinding Look(const CPointRow& row, CExamination& exam)
{
    try
    {
        return row.Check(exam);
    }
    catch (const CFailure& failure)
    {
        return Wrong(failure);
    }
}
} // namespace

std::vector<CPoint> Examine(CExamination& exam)
{
    std::vector<CPoint> points;
    for (const CPointRow& row : kPoints)
    {
        points.push_back({row.Id, Said(row.Title), Look(row, exam)});
        if (row.Needed && points.back().Finding.State == PointState::Wrong)
            exam.Blocked = true;
    }
    return points;
}

ExitCode VerdictOf(const CExamination& exam, const std::vector<CPoint>& points)
{
    if (std::ranges::none_of(points,
                             [](const CPoint& point) { return point.Finding.State == PointState::Wrong; }))
        return ExitCode::Passed;
    return exam.Inventory ? ExitCode::Failed : ExitCode::NotReachable;
}

ExitCode RunDoctor(const COptions& options, CExamination& exam, IConsole& console)
{
    const std::vector<CPoint> points = Examine(exam);
    console.Out(options.Json ? JsonPoints(exam, points) : RenderPoints(points, console.Width()));
    return VerdictOf(exam, points);
}
} // namespace zebdiag
