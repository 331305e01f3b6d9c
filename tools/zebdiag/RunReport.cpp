#include "tools/zebdiag/RunReport.h"

#include "tools/zebdiag/DateTime.h"
#include "tools/zebdiag/Filled.h"
#include "tools/zebdiag/TextReport.h"
#include "tools/zebdiag/Words.h"
#include "tools/zebdiag/Wrap.h"
#include "tools/zebdiag/doctor/Places.h"

namespace zebdiag
{
namespace
{
constexpr unsigned kRunIndent = 2;
constexpr unsigned kMoreIndent = 4;

// How an outcome is called in a verdict.
const wchar_t* OutcomeInWords(ExitCode code)
{
    switch (code)
    {
    case ExitCode::Passed:
        return L"passed";
    case ExitCode::Failed:
        return L"failed";
    case ExitCode::Stopped:
        return L"stopped";
    case ExitCode::Busy:
        return L"busy";
    default:
        return L"could not run";
    }
}

std::wstring UpperCase(std::wstring text)
{
    CharUpperBuffW(text.data(), static_cast<DWORD>(text.size()));
    return text;
}
} // namespace

void CRunReport::TellWhatStays(PutBack back) const
{
    if (back == PutBack::Failed)
        Tell(L"The sender's values could not be put back; look at Peer and the others under "
             L"HKEY_LOCAL_MACHINE\\" +
             std::wstring(kZebDiagKey) + L".");
    else if (back == PutBack::NotAll)
        Tell(L"The sender's values were changed while the test ran; the new ones stay.");
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

void CRunReport::Announce() const
{
    // Several that send packets are announced one by one.
    if (m_plan.IsSingle() || m_plan.Tests.front().Test->SendsPackets())
        return;
    Tell(Filled(L"{1}, usually some seconds each.", {Count(m_plan.Tests.size(), L"test")}));
    Tell(L"Ordinary tests leave the adapter's traffic alone, unless their description says otherwise.");
    std::wstring names;
    for (const CTestChoice& choice : m_plan.LeftOut)
        names += (names.empty() ? L"" : L", ") + TestTitle(choice);
    if (!names.empty())
        Tell(Filled(L"Left out, because they take long and load the network: {1}. Run them by name.",
                    {names}));
}

// What somebody wants to know before a run that lasts or that others notice.
void CRunReport::AnnounceOne(const CTestChoice& choice) const
{
    if (!m_plan.IsSingle() && !choice.Test->SendsPackets())
        return;
    Tell(TestTitle(choice));
    Tell(choice.Test->Description, kMoreIndent);
    if (!choice.Test->SendsPackets())
    {
        Tell(L"Usually takes some seconds.", kMoreIndent);
        if (m_plan.Setting.Coverage || m_plan.Setting.Quick || m_plan.Setting.Report)
            Tell(L"This test has no settings: --coverage, --no-quick and --profile make no difference.",
                 kMoreIndent);
        return;
    }
    Tell(LengthInWords(*choice.Test), kMoreIndent);
    Tell(L"Other traffic on the adapter can become slower while it runs.", kMoreIndent);
    if (!m_context.Options.Sender.Peer.empty() && choice.Test->IsSender())
        Tell(Filled(L"Sends to {1}.", {m_context.Options.Sender.Peer}), kMoreIndent);
}

// Whether a switch is on in a run, by what is changed for it and what is stored.
bool CRunReport::Holds(std::optional<bool> CSettingValues::*which,
                       const std::optional<CSetting>& stored) const
{
    if (m_plan.Setting.*which)
        return *(m_plan.Setting.*which);
    return stored && stored->Values.*which && *(stored->Values.*which);
}

std::wstring CRunReport::LengthInWords(const CTest& test) const
{
    const std::optional<CSetting> stored = LoadSetting(m_context.Session, test);
    unsigned long long coverage = 100;
    if (m_plan.Setting.Coverage)
        coverage = static_cast<unsigned long long>(*m_plan.Setting.Coverage);
    else if (stored && stored->Values.Coverage)
        coverage = static_cast<unsigned long long>(*stored->Values.Coverage);
    const bool mayEndSooner = Holds(&CSettingValues::Quick, stored) && Holds(&CSettingValues::Report, stored);
    const std::optional<unsigned> full = m_context.Surroundings.FullRunSeconds(m_context.Session);
    return Filled(
        full ? mayEndSooner ? L"Takes up to {1}; less if enough packets come sooner." : L"Takes up to {1}."
        : mayEndSooner
            ? L"Takes up to about {1}, unless that computer is configured otherwise; less if enough packets "
              L"come sooner."
            : L"Takes up to about {1}, unless that computer is configured otherwise.",
        {Duration(full ? coverage * *full / 100 : coverage)});
}

void CRunReport::ShowOutcome(const CTestOutcome& run) const
{
    const CRunOutcome& outcome = run.Outcome;
    Tell(TestTitle(run.Choice) + L": " + OutcomeInWords(outcome.Code) +
             (outcome.Result ? L", " + Duration(outcome.Seconds) : L""),
         kRunIndent);
    if (!outcome.Message.empty())
        Tell(outcome.Message, kMoreIndent);
    if (outcome.Result)
        TellRaw(RenderFindings(*outcome.Result, Width()));
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
            count += std::wstring_view(OutcomeInWords(run.Outcome.Code)) == OutcomeInWords(code);
        if (count == 0)
            continue;
        line += separator + std::to_wstring(count) + L" " + OutcomeInWords(code);
        separator = L", ";
    }
    if (notRun != 0)
        line += L", " + std::to_wstring(notRun) + L" not run";
    return line + L".";
}
} // namespace zebdiag
