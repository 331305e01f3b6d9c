#include "tools/zebdiag/RunReport.h"

#include "tools/zebdiag/DateTime.h"
#include "tools/zebdiag/Inventory.h"
#include "tools/zebdiag/TextReport.h"
#include "tools/zebdiag/Words.h"
#include "tools/zebdiag/Wrap.h"
#include "tools/zebdiag/doctor/Places.h"
#include "tools/zebdiag/languages/Said.h"

#include <algorithm>
#include <utility>

namespace zebdiag
{
namespace
{
constexpr unsigned kRunIndent = 2;
constexpr unsigned kMoreIndent = 4;

std::wstring UpperCase(std::wstring text)
{
    CharUpperBuffW(text.data(), static_cast<DWORD>(text.size()));
    return text;
}

// How long a run may take; first as configured, then as usual, each without and with an earlier end.
constexpr const wchar_t* kLengths[2][2] = {
    {Marked(L"Takes up to {1}."), Marked(L"Takes up to {1}; less if enough packets come sooner.")},
    {Marked(L"Takes up to about {1}, unless that computer is configured otherwise."),
     Marked(
         L"Takes up to about {1}, unless that computer is configured otherwise; less if enough packets come "
         L"sooner.")}};
} // namespace

void CRunReport::TellWhatStays(PutBack back) const
{
    if (back == PutBack::Failed)
        Tell(Said(
            L"The sender's values could not be put back; look at Peer and the others under HKEY_LOCAL_MACHINE\\{1}.",
            {kZebDiagKey}));
    else if (back == PutBack::NotAll)
        Tell(Said(L"The sender's values were changed while the test ran; the new ones stay."));
}

unsigned CRunReport::Width() const
{
    return m_json ? m_context.Console.ErrWidth() : m_context.Console.Width();
}

bool CRunReport::IsWatched() const
{
    return m_json ? m_context.Console.ErrIsTerminal() : m_context.Console.OutIsTerminal();
}

void CRunReport::TellRaw(std::wstring_view text) const
{
    if (!m_json)
        m_context.Console.Out(text);
    else if (m_context.Console.ErrIsTerminal())
        m_context.Console.Err(text);
}

void CRunReport::Tell(const std::wstring& text, unsigned indent) const
{
    TellRaw(Paragraph(text, Width(), indent));
}

CRunReport::Lengths CRunReport::Announce() const
{
    AnnounceSeries();
    Lengths lengths;
    // Tests of which the same is to be said are announced together.
    std::vector<std::pair<std::wstring, std::vector<std::wstring>>> announced;
    for (const CTestChoice& choice : m_plan.Tests)
    {
        const CAnnouncement one = AnnouncementOf(choice);
        lengths.push_back(one.MostSeconds);
        if (one.Texts.empty())
            continue;
        const auto same = std::ranges::find(announced, one.Texts,
                                            &std::pair<std::wstring, std::vector<std::wstring>>::second);
        if (same == announced.end())
            announced.emplace_back(TestTitle(choice), one.Texts);
        else
            same->first += L", " + TestTitle(choice);
    }
    for (const auto& [titles, texts] : announced)
    {
        Tell(titles);
        for (const std::wstring& text : texts)
            Tell(text, kMoreIndent);
    }
    return lengths;
}

void CRunReport::AnnounceSeries() const
{
    // Those that send packets are announced by themselves.
    if (m_plan.IsSingle() || m_plan.Tests.front().Test->SendsPackets())
        return;
    Tell(Said(L"{1}, usually some seconds each.", {Tests(m_plan.Tests.size())}));
    Tell(Said(L"Ordinary tests leave the adapter's traffic alone, unless their description says otherwise."));
    if (ChangesSettings())
        Tell(Said(L"These tests have no settings: --coverage, --no-quick and --profile make no difference."));
    std::wstring names;
    for (const CTestChoice& choice : m_plan.LeftOut)
        names += (names.empty() ? L"" : L", ") + TestTitle(choice);
    if (!names.empty())
        Tell(Said(L"Left out, because they take long and load the network: {1}. Run them by name.", {names}));
}

bool CRunReport::ChangesSettings() const
{
    return m_plan.Setting.Coverage || m_plan.Setting.Quick || m_plan.Setting.Report;
}

// What somebody wants to know before a run that lasts or that others notice.
CRunReport::CAnnouncement CRunReport::AnnouncementOf(const CTestChoice& choice) const
{
    if (!m_plan.IsSingle() && !choice.Test->SendsPackets())
        return {};
    if (!choice.Test->SendsPackets())
    {
        CAnnouncement one = {{choice.Test->Description, Said(L"Usually takes some seconds.")}, {}};
        if (ChangesSettings())
            one.Texts.push_back(
                Said(L"This test has no settings: --coverage, --no-quick and --profile make no difference."));
        return one;
    }
    CAnnouncement one = LengthOf(*choice.Test);
    one.Texts.insert(one.Texts.begin(), choice.Test->Description);
    one.Texts.push_back(Said(L"Other traffic on the adapter can become slower while it runs."));
    if (!m_context.Options.Sender.Peer.empty() && choice.Test->IsSender())
        one.Texts.push_back(Said(L"Sends to {1}.", {m_context.Options.Sender.Peer}));
    return one;
}

// Whether a switch is on in a run, by what is changed for it and what is stored.
bool CRunReport::Holds(std::optional<bool> CSettingValues::*which,
                       const std::optional<CSetting>& stored) const
{
    if (m_plan.Setting.*which)
        return *(m_plan.Setting.*which);
    return stored && stored->Values.*which && *(stored->Values.*which);
}

CRunReport::CAnnouncement CRunReport::LengthOf(const CTest& test) const
{
    const std::optional<CSetting> stored = LoadSetting(m_context.Session, test);
    unsigned long long coverage = 100;
    if (m_plan.Setting.Coverage)
        coverage = static_cast<unsigned long long>(*m_plan.Setting.Coverage);
    else if (stored && stored->Values.Coverage)
        coverage = static_cast<unsigned long long>(*stored->Values.Coverage);
    const bool mayEndSooner = Holds(&CSettingValues::Quick, stored) && Holds(&CSettingValues::Report, stored);
    const std::optional<unsigned> full = m_context.Surroundings.FullRunSeconds(m_context.Session);
    const unsigned long long most = full ? coverage * *full / 100 : coverage;
    return {{Said(kLengths[full ? 0 : 1][mayEndSooner ? 1 : 0], {Duration(most)})}, most};
}

void CRunReport::ShowOutcome(const CTestOutcome& run) const
{
    if (m_json)
        return;
    const CRunOutcome& outcome = run.Outcome;
    Tell(TestTitle(run.Choice) + L": " + OutcomeInWords(outcome.Code) +
             (outcome.Result ? L", " + Duration(outcome.Seconds) : L""),
         kRunIndent);
    if (!outcome.Message.empty())
        Tell(outcome.Message, kMoreIndent);
    if (outcome.Result)
        TellRaw(RenderFindings(*outcome.Result, Width()));
}

void CRunReport::ShowFindings(const CTestOutcome& run) const
{
    if (!run.Outcome.Message.empty() || (run.Outcome.Result && !run.Outcome.Result->Lines.empty()))
        ShowOutcome(run);
}

void CRunReport::TellOf(const CTestChoice& choice, const std::wstring& text) const
{
    Tell(m_plan.IsSingle() ? text : TestTitle(choice) + L": " + text, kRunIndent);
}

void CRunReport::TellStopping(StopReason reason) const
{
    const bool several = LanesOf(m_plan.Tests, m_plan.InOrder).size() > 1;
    if (reason == StopReason::Timeout)
        Tell(several ? Said(L"The time given with --timeout is over: stopping the tests.")
                     : Said(L"The time given with --timeout is over: stopping the test."),
             kRunIndent);
    else
        Tell(several ? Said(L"Stopping the tests. Press Ctrl+C again to leave them running.")
                     : Said(L"Stopping the test. Press Ctrl+C again to leave it running."),
             kRunIndent);
}

std::wstring CRunReport::VerdictLine(ExitCode verdict, const std::vector<CTestOutcome>& runs,
                                     size_t notRun) const
{
    std::wstring line = UpperCase(OutcomeInWords(verdict)) + L": ";
    if (m_plan.IsSingle())
        return line + TestTitle(m_plan.Tests.front()) + L".";
    const wchar_t* separator = L"";
    for (const ExitCode code :
         {ExitCode::Passed, ExitCode::Failed, ExitCode::Stopped, ExitCode::Busy, ExitCode::CouldNotRun})
    {
        size_t count = 0;
        for (const CTestOutcome& run : runs)
            count += OutcomeInWords(run.Outcome.Code) == OutcomeInWords(code);
        if (count == 0)
            continue;
        line += separator + Said(L"{1} {2}", {std::to_wstring(count), OutcomeInWords(code)});
        separator = L", ";
    }
    if (notRun != 0)
        line += separator + Said(L"{1} not run", {std::to_wstring(notRun)});
    return line + L".";
}
} // namespace zebdiag
