// What a run of tests says in words: before it begins, while it lasts and when it has ended.
#pragma once

#include "tools/zebdiag/Commands.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zebdiag
{
struct CRunPlan
{
    std::vector<CTestChoice> Tests;
    std::vector<CTestChoice> LeftOut; // by --all
    CSettingValues Setting;           // to change for the runs of tests that have one

    bool IsSingle() const { return Tests.size() == 1; }
};

// Speaks on standard output or, if the data is a document, to the person who watches. Needs both as long as
// it lives.
class CRunReport
{
  public:
    CRunReport(const CCommandContext& context, const CRunPlan& plan) : m_context(context), m_plan(plan) {}

    void Announce() const;
    void AnnounceOne(const CTestChoice& choice) const;
    void ShowOutcome(const CTestOutcome& run) const;
    void TellWhatStays(PutBack back) const;
    std::wstring VerdictLine(ExitCode verdict, const std::vector<CTestOutcome>& runs, size_t notRun) const;

    // For what draws over itself.
    void TellRaw(std::wstring_view text) const;
    unsigned Width() const;
    bool IsWatched() const;

  private:
    void Tell(const std::wstring& text, unsigned indent = 0) const;
    bool Holds(std::optional<bool> CSettingValues::*which, const std::optional<CSetting>& stored) const;
    std::wstring LengthInWords(const CTest& test) const;

    const CCommandContext& m_context;
    const CRunPlan& m_plan;
    const bool m_json = m_context.Options.Json;
};
} // namespace zebdiag
