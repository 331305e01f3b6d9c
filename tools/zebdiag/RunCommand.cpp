#include "tools/zebdiag/Commands.h"
#include "tools/zebdiag/DateTime.h"
#include "tools/zebdiag/Inventory.h"
#include "tools/zebdiag/Progress.h"
#include "tools/zebdiag/Table.h"
#include "tools/zebdiag/TextReport.h"
#include "tools/zebdiag/Words.h"
#include "tools/zebdiag/doctor/Places.h"

#include <algorithm>

namespace zebdiag
{
namespace
{
constexpr unsigned kIndent = 4;

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

bool IsOn(const std::optional<bool>& value)
{
    return value && *value;
}

std::wstring UpperCase(std::wstring text)
{
    CharUpperBuffW(text.data(), static_cast<DWORD>(text.size()));
    return text;
}

// The tests to run one after the other, and what is told about them.
class CSeries
{
  public:
    CSeries(const CCommandContext& context, const CInventory& inventory)
        : m_context(context), m_inventory(inventory), m_json(context.Options.Json)
    {
        if (context.Options.TimeoutSeconds)
            m_options.Deadline = context.Control.Now() + *context.Options.TimeoutSeconds * 1000ULL;
        for (const CTestChoice& choice : context.ChosenTests(inventory))
            (context.Options.All && choice.Test->SendsPackets() ? m_leftOut : m_tests).push_back(choice);
        if (m_tests.empty())
            throw CFailure(ExitCode::NotFound, L"There is no test to run.",
                           L"See what there is with \"zebdiag list\".");
        if (HasPeer() &&
            std::ranges::none_of(m_tests, [](const CTestChoice& choice) { return choice.Test->IsSender(); }))
            throw CFailure(ExitCode::Usage, L"--peer is for the sender, which is not the test to run.",
                           L"Name it with --test sender.");
    }

    ExitCode Run()
    {
        m_context.Control.CatchInterrupts();
        CSenderValues values(*m_context.Surroundings.Registry);
        if (HasPeer())
            values.Set(m_context.Options.Sender);
        Announce();
        bool ended = false;
        for (const CTestChoice& choice : m_tests)
        {
            if (ended)
            {
                m_notRun.push_back(choice);
                continue;
            }
            CRunOutcome outcome = RunOne(choice);
            ended = outcome.Interrupted || WaitForSingleObject(m_context.Control.Stop, 0) == WAIT_OBJECT_0;
            m_runs.push_back({choice, std::move(outcome)});
            if (!m_json)
                ShowOutcome(m_runs.back());
        }
        TellWhatStays(values.Restore());
        const ExitCode verdict = Verdict();
        m_context.Console.Out(m_json ? JsonRun(m_context.JsonHead(m_inventory), verdict, m_runs, m_notRun)
                                     : VerdictLine(verdict));
        return verdict;
    }

  private:
    bool IsSingle() const { return m_tests.size() == 1; }
    bool HasPeer() const { return !m_context.Options.Sender.Peer.empty(); }

    void TellWhatStays(PutBack back) const
    {
        if (back == PutBack::Failed)
            Tell(L"The sender's values could not be put back; look at Peer and the others under "
                 L"HKEY_LOCAL_MACHINE\\" +
                 std::wstring(kZebDiagKey) + L".\n");
        else if (back == PutBack::NotAll)
            Tell(L"The sender's values were changed while the test ran; the new ones stay.\n");
    }

    // What is not data: shown beside it, or where the data is a document, to who watches.
    void Tell(std::wstring_view text) const
    {
        if (!m_json)
            m_context.Console.Out(text);
        else if (m_context.Console.ErrIsTerminal())
            m_context.Console.Err(text);
    }

    void TellIndented(const std::wstring& text) const
    {
        const unsigned width = m_context.Console.Width();
        for (const std::wstring& line : WrapText(text, width > kIndent ? width - kIndent - 1 : 0))
            Tell(std::wstring(kIndent, L' ') + line + L"\n");
    }

    void Announce() const
    {
        if (!IsSingle())
            Tell(Count(m_tests.size(), L"test") + L", usually some seconds each.\n"
                                                  L"Ordinary tests leave the adapter's traffic alone, unless "
                                                  L"their description says otherwise.\n");
        if (!m_leftOut.empty())
        {
            std::wstring names;
            for (const CTestChoice& choice : m_leftOut)
                names += (names.empty() ? L"" : L", ") + TestTitle(choice);
            Tell(L"Left out, because they take long and load the network: " + names +
                 L". Run them by name.\n");
        }
    }

    // What somebody wants to know before a run that lasts or that others notice.
    void AnnounceOne(const CTestChoice& choice) const
    {
        if (!IsSingle() && !choice.Test->SendsPackets())
            return;
        Tell(TestTitle(choice) + L"\n");
        TellIndented(choice.Test->Description);
        if (!choice.Test->SendsPackets())
        {
            TellIndented(L"Usually takes some seconds.");
            if (m_context.Options.Coverage || m_context.Options.NoQuick)
                TellIndented(L"This test has no settings: --coverage and --no-quick make no difference.");
            return;
        }
        TellIndented(LengthInWords(*choice.Test));
        TellIndented(L"Other traffic on the adapter can become slower while it runs.");
        if (HasPeer() && choice.Test->IsSender())
            TellIndented(L"Sends to " + m_context.Options.Sender.Peer + L".");
    }

    std::wstring LengthInWords(const CTest& test) const
    {
        const std::optional<CSetting> setting = LoadSetting(m_context.Session, test);
        unsigned long long coverage = 100;
        if (m_context.Options.Coverage)
            coverage = *m_context.Options.Coverage;
        else if (setting && setting->Values.Coverage)
            coverage = static_cast<unsigned long long>(*setting->Values.Coverage);
        const std::optional<unsigned> full = m_context.Surroundings.FullRunSeconds(m_context.Session);
        std::wstring text = full ? L"Takes up to " + Duration(coverage * *full / 100)
                                 : L"Takes up to about " + Duration(coverage) +
                                       L", where that computer is not configured otherwise";
        if (!m_context.Options.NoQuick && setting && IsOn(setting->Values.Quick) &&
            IsOn(setting->Values.Report))
            text += L"; less if enough packets come sooner";
        return text + L".";
    }

    CRunOutcome RunOne(const CTestChoice& choice)
    {
        AnnounceOne(choice);
        CRunOptions options = m_options;
        if (choice.Test->SendsPackets())
        {
            options.Setting.Coverage = m_context.Options.Coverage;
            if (m_context.Options.NoQuick)
                options.Setting.Quick = false;
        }
        const bool terminal = m_json ? m_context.Console.ErrIsTerminal() : m_context.Console.OutIsTerminal();
        CProgress progress([this](std::wstring_view text) { Tell(text); }, TestTitle(choice), terminal,
                           m_context.Console.Width());
        const CRunObserver observer = {[&progress](std::optional<long> percent, unsigned long long seconds)
                                       { progress.Show(percent, seconds); },
                                       [&progress](const std::wstring& text) { progress.Say(text); }};
        CRunOutcome outcome = RunOneTest(m_context.Session, m_inventory.Computer, *choice.Test, options,
                                         m_context.Control, observer);
        progress.Finish();
        return outcome;
    }

    void ShowOutcome(const CTestOutcome& run) const
    {
        const CRunOutcome& outcome = run.Outcome;
        Tell(L"  " + TestTitle(run.Choice) + L": " + OutcomeInWords(outcome.Code) +
             (outcome.Result ? L", " + Duration(outcome.Seconds) : L"") + L"\n");
        if (!outcome.Message.empty())
            TellIndented(outcome.Message);
        if (outcome.Result)
            Tell(RenderFindings(*outcome.Result, m_context.Console.Width()));
    }

    // Who interrupts a series wants to hear that it was stopped, whatever its first tests found.
    ExitCode Verdict() const
    {
        ExitCode verdict = m_notRun.empty() ? ExitCode::Passed : ExitCode::Stopped;
        for (const CTestOutcome& run : m_runs)
        {
            if (run.Outcome.Interrupted && run.Outcome.Code == ExitCode::Stopped)
                return ExitCode::Stopped;
            if (m_notRun.empty())
                verdict = Graver(verdict, run.Outcome.Code);
        }
        return verdict;
    }

    std::wstring VerdictLine(ExitCode verdict) const
    {
        std::wstring line = UpperCase(OutcomeInWords(verdict)) + L": ";
        if (IsSingle())
            return line + TestTitle(m_tests.front()) + L".\n";
        const wchar_t* separator = L"";
        for (const ExitCode code :
             {ExitCode::Passed, ExitCode::Failed, ExitCode::Stopped, ExitCode::Busy, ExitCode::CouldNotRun})
        {
            size_t count = 0;
            for (const CTestOutcome& run : m_runs)
                count += std::wstring_view(OutcomeInWords(run.Outcome.Code)) == OutcomeInWords(code);
            if (count == 0)
                continue;
            line += separator + std::to_wstring(count) + L" " + OutcomeInWords(code);
            separator = L", ";
        }
        if (!m_notRun.empty())
            line += L", " + std::to_wstring(m_notRun.size()) + L" not run";
        return line + L".\n";
    }

    const CCommandContext& m_context;
    const CInventory& m_inventory;
    const bool m_json;
    CRunOptions m_options;
    std::vector<CTestChoice> m_tests;
    std::vector<CTestChoice> m_leftOut; // by --all
    std::vector<CTestOutcome> m_runs;
    std::vector<CTestChoice> m_notRun; // because the series was ended
};
} // namespace

ExitCode RunTests(const CCommandContext& context)
{
    const CInventory inventory = context.Inventory();
    return CSeries(context, inventory).Run();
}
} // namespace zebdiag
