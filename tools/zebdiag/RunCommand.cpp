#include "tools/zebdiag/Commands.h"
#include "tools/zebdiag/Inventory.h"
#include "tools/zebdiag/RunLines.h"
#include "tools/zebdiag/RunReport.h"
#include "tools/zebdiag/RunScreen.h"
#include "tools/zebdiag/TextReport.h"
#include "tools/zebdiag/Words.h"
#include "tools/zebdiag/Wrap.h"
#include "tools/zebdiag/languages/Said.h"

#include <algorithm>
#include <memory>

namespace zebdiag
{
namespace
{
// The tests to run, and what is told about them.
class CSeries
{
  public:
    CSeries(const CCommandContext& context, const CInventory& inventory)
        : m_context(context), m_inventory(inventory), m_json(context.Options.Json)
    {
        if (context.Options.TimeoutSeconds)
            m_options.Deadline = context.Control.Now() + *context.Options.TimeoutSeconds * 1000ULL;
        for (const CTestChoice& choice : context.ChosenTests(inventory))
            (context.Options.All && choice.Test->SendsPackets() ? m_plan.LeftOut : m_plan.Tests)
                .push_back(choice);
        if (m_plan.Tests.empty())
            throw CFailure(ExitCode::NotFound, Said(L"There is no test to run."),
                           Said(L"See what there is with \"zebdiag list\"."));
        if (HasPeer() && std::ranges::none_of(m_plan.Tests, [](const CTestChoice& choice)
                                              { return choice.Test->IsSender(); }))
            throw CFailure(ExitCode::Usage, Said(L"--peer is for the sender, which is not the test to run."),
                           Said(L"Name it with --test sender."));
        if (context.Options.Serial)
            m_plan.InOrder = Order::OneByOne;
        ChooseSetting();
    }

    ExitCode Run()
    {
        m_context.Control.CatchInterrupts();
        CSenderValues values(*m_context.Surroundings.Registry);
        if (HasPeer())
            values.Set(m_context.Options.Sender);
        const std::unique_ptr<IRunView> view = MakeView(m_report.Announce());
        const auto outcomes = RunSeries(
            m_plan.Tests, m_plan.InOrder, m_context.Control.Stop,
            [this](const CTestChoice& choice, const CRunObserver& observer)
            { return RunOne(choice, observer); },
            *view);
        view->Finish();
        for (size_t i = 0; i < outcomes.size(); ++i)
            if (outcomes[i])
                m_runs.push_back({m_plan.Tests[i], *outcomes[i]});
            else
                m_notRun.push_back(m_plan.Tests[i]);
        m_report.TellWhatStays(values.Restore());
        const ExitCode verdict = Verdict();
        m_context.Console.Out(m_json ? JsonRun(m_context.JsonHead(m_inventory), verdict, m_runs, m_notRun)
                                     : Paragraph(m_report.VerdictLine(verdict, m_runs, m_notRun.size()),
                                                 m_context.Console.Width()));
        return verdict;
    }

  private:
    bool HasPeer() const { return !m_context.Options.Sender.Peer.empty(); }

    // For runs of tests that have settings; what the command line says counts more than the profile.
    void ChooseSetting()
    {
        const COptions& options = m_context.Options;
        if (!options.Profile.empty())
            m_plan.Setting = ProfileNamed(LoadProfiles(m_context.Surroundings.ProfileFile), options.Profile);
        if (options.Coverage)
            m_plan.Setting.Coverage = *options.Coverage;
        if (options.NoQuick)
            m_plan.Setting.Quick = false;
    }

    std::unique_ptr<IRunView> MakeView(const CRunReport::Lengths& lengths) const
    {
        const Stream stream = m_json ? Stream::Err : Stream::Out;
        const CScreenSize size = {m_report.Width(), m_context.Console.Height(stream)};
        if (m_report.IsWatched() && HasRoomForRuns(size))
            return std::make_unique<CRunScreen>(m_report, m_plan, m_context.Console, stream, lengths);
        return std::make_unique<CRunLines>(m_report, m_plan);
    }

    // On the thread of the test's adapter.
    CRunOutcome RunOne(const CTestChoice& choice, const CRunObserver& observer) const
    {
        CRunOptions options = m_options;
        if (choice.Test->SendsPackets())
            options.Setting = m_plan.Setting;
        return RunOneTest(m_context.Session, m_inventory.Computer, *choice.Test, options, m_context.Control,
                          observer);
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

    const CCommandContext& m_context;
    const CInventory& m_inventory;
    const bool m_json;
    CRunOptions m_options;
    CRunPlan m_plan;
    const CRunReport m_report{m_context, m_plan};
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
