#include "tools/zebdiag/doctor/Doctor.h"

#include "tools/zebdiag/Console.h"
#include "tools/zebdiag/doctor/Checks.h"

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
    {"service", L"Management service", CheckService, true},
    {"namespace", L"Namespace", CheckNamespace, true},
    {"base_classes", L"Base classes", CheckBaseClasses, true},
    {"schema", L"Schema", CheckSchema, true},
    {"registration", L"Provider", CheckRegistration, true},
    {"files", L"Files", CheckFiles, true},
    {"identity", L"COM application", CheckIdentity, true},
    {"configuration", L"Configuration", CheckConfiguration, true},
    {"agent", L"Adapter agent", CheckAgent, true},
    {"data_folder", L"Data folder", CheckDataFolder, false},
    {"trace", L"Trace", CheckTrace, false},
    {"answer", L"Provider's answer", CheckAnswer, false},
    {"texts", L"Texts", CheckTexts, false},
    {"adapters", L"Wired adapters", CheckAdapters, false},
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
        points.push_back({row.Id, row.Title, Look(row, exam)});
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
