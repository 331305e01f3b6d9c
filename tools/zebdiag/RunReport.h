// What a run of tests says in words: before it begins, while it lasts and when it has ended.
#pragma once

#include "tools/zebdiag/Commands.h"
#include "tools/zebdiag/Series.h"

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
    Order InOrder = Order::SideBySide;

    bool IsSingle() const { return Tests.size() == 1; }
};

// Speaks on standard output or, if the data is a document, to the person who watches. Needs both as long as
// it lives.
class CRunReport
{
  public:
    CRunReport(const CCommandContext& context, const CRunPlan& plan) : m_context(context), m_plan(plan) {}

    // How many seconds each test takes at most, as far as that is known.
    using Lengths = std::vector<std::optional<unsigned long long>>;

    Lengths Announce() const;
    // Nothing if it is in the document.
    void ShowOutcome(const CTestOutcome& run) const;
    // The same for whoever knows the outcome already: nothing if there is nothing to add.
    void ShowFindings(const CTestOutcome& run) const;
    void TellOf(const CTestChoice& choice, const std::wstring& text) const;
    void TellStopping(StopReason reason) const;
    void TellWhatStays(PutBack back) const;
    std::wstring VerdictLine(ExitCode verdict, const std::vector<CTestOutcome>& runs, size_t notRun) const;

    // For what draws over itself.
    void TellRaw(std::wstring_view text) const;
    unsigned Width() const;
    bool IsWatched() const;

  private:
    struct CAnnouncement
    {
        std::vector<std::wstring>
            Texts; // below the title of the test; if there are none, it is not announced
        std::optional<unsigned long long> MostSeconds;
    };

    void Tell(const std::wstring& text, unsigned indent = 0) const;
    bool Holds(std::optional<bool> CSettingValues::*which, const std::optional<CSetting>& stored) const;
    bool ChangesSettings() const;
    void AnnounceSeries() const;
    CAnnouncement AnnouncementOf(const CTestChoice& choice) const;
    CAnnouncement LengthOf(const CTest& test) const;

    const CCommandContext& m_context;
    const CRunPlan& m_plan;
    const bool m_json = m_context.Options.Json;
};
} // namespace zebdiag
