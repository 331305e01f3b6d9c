// What the commands print with --json: one document each, described in docs/json.md.
#pragma once

#include "tools/zebdiag/Failure.h"
#include "tools/zebdiag/Model.h"
#include "tools/zebdiag/NameMatch.h"
#include "tools/zebdiag/Options.h"
#include "tools/zebdiag/Profiles.h"
#include "tools/zebdiag/TestRun.h"
#include "tools/zebdiag/report/Report.h"

#include <map>
#include <string>
#include <vector>

namespace zebdiag
{
// Raised with every change that a reader of the documents could stumble over; additions leave it as it is.
inline constexpr int kJsonVersion = 2;

// What all documents begin with.
struct CJsonHead
{
    zebdiag::Command Command;
    std::wstring Computer;
    std::wstring Namespace;
};

struct CTestOutcome
{
    CTestChoice Choice;
    CRunOutcome Outcome;
};

// What became of one test in a stop, set or clear command.
struct CTestEffect
{
    CTestChoice Choice;
    ExitCode Code = ExitCode::Passed;
    std::wstring Message; // may be empty
};

std::wstring JsonList(const CJsonHead& head, const std::vector<const CAdapter*>& adapters,
                      const std::vector<unsigned long>& processes);
std::wstring JsonRun(const CJsonHead& head, ExitCode verdict, const std::vector<CTestOutcome>& runs,
                     const std::vector<CTestChoice>& notRun);
std::wstring JsonResults(const CJsonHead& head, const std::vector<CTestChoice>& tests,
                         const std::map<std::wstring, CResult>& results);
// For the settings and the set command.
std::wstring JsonSettings(const CJsonHead& head, const std::vector<CTestChoice>& tests,
                          const std::map<std::wstring, CSetting>& settings);
// For the stop and the clear command.
std::wstring JsonEffects(const CJsonHead& head, ExitCode verdict, const std::vector<CTestEffect>& effects);
std::wstring JsonProfiles(const Profiles& profiles);
std::wstring JsonOfReport(const CReport& report);
std::wstring JsonFailure(Command command, const CFailure& failure);
} // namespace zebdiag
