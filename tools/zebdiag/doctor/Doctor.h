// The doctor: what is wrong with an installation, point by point. Needs nothing to work and changes nothing.
#pragma once

#include "tools/zebdiag/ExitCode.h"
#include "tools/zebdiag/doctor/Examination.h"

#include <string>
#include <vector>

namespace zebdiag
{
class IConsole;
struct COptions;

struct CPoint
{
    const char* Id;     // for JSON documents
    std::wstring Title; // for people
    CFinding Finding;
};

// All points, in their order.
std::vector<CPoint> Examine(CExamination& exam);

// Passed if nothing is wrong, Failed if the provider answers nevertheless, NotReachable if it does not.
ExitCode VerdictOf(const CExamination& exam, const std::vector<CPoint>& points);

std::wstring RenderPoints(const std::vector<CPoint>& points, unsigned width);
std::wstring JsonPoints(const CExamination& exam, const std::vector<CPoint>& points);

// The command: examines, shows and says how it ended.
ExitCode RunDoctor(const COptions& options, CExamination& exam, IConsole& console);
} // namespace zebdiag
