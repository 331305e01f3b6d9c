#include "tools/zebdiag/Series.h"

#include "Common/src/com/CriticalSection.h"
#include "Common/src/com/Owned.h"

#include <atomic>
#include <exception>
#include <map>
#include <objbase.h>
#include <thread>
#include <utility>

namespace zebdiag
{
namespace
{
// What the lanes tell, on its way to the thread that shows it.
class CNews
{
  public:
    using Item = std::function<void(IRunView&)>;
    struct CBatch
    {
        std::vector<Item> Items;
        size_t Lanes = 0; // that still tell something
    };

    void Add(Item item)
    {
        CLockScope lock(m_lock);
        m_next.Items.push_back(std::move(item));
        SetEvent(m_any.Get());
    }
    void LaneBegins() noexcept
    {
        CLockScope lock(m_lock);
        ++m_next.Lanes;
    }
    void LaneEnds() noexcept
    {
        CLockScope lock(m_lock);
        --m_next.Lanes;
        SetEvent(m_any.Get());
    }

    // Waits until there is something.
    CBatch Take()
    {
        WaitForSingleObject(m_any.Get(), INFINITE);
        CLockScope lock(m_lock);
        return {std::exchange(m_next.Items, {}), m_next.Lanes};
    }

  private:
    CCriticalSection m_lock;
    CBatch m_next;
    const CHandle m_any{CreateEventW(nullptr, FALSE, FALSE, nullptr)};
};

class CSeriesRun
{
  public:
    CSeriesRun(const std::vector<CTestChoice>& tests, HANDLE stop, const RunFunction& run)
        : m_tests(tests), m_stop(stop), m_run(run), m_outcomes(tests.size())
    {
    }

    std::vector<std::optional<CRunOutcome>> Run(const std::vector<std::vector<size_t>>& lanes, IRunView& view)
    {
        std::vector<std::exception_ptr> failures(lanes.size());
        {
            std::vector<std::jthread> threads; // joined at the end of the scope
            try
            {
                for (size_t i = 0; i < lanes.size(); ++i)
                {
                    m_news.LaneBegins();
                    threads.emplace_back([this, &lanes, &failures, i] { WorkOff(lanes[i], failures[i]); });
                }
                Show(view);
            }
            catch (...)
            {
                m_over = true;
                throw;
            }
        }
        for (const std::exception_ptr& failure : failures)
            if (failure)
                std::rethrow_exception(failure);
        return std::move(m_outcomes);
    }

  private:
    bool IsOver() const { return m_over || WaitForSingleObject(m_stop, 0) == WAIT_OBJECT_0; }

    void Show(IRunView& view)
    {
        CNews::CBatch batch;
        do
        {
            batch = m_news.Take();
            for (const CNews::Item& item : batch.Items)
                item(view);
        } while (batch.Lanes != 0);
    }

    void WorkOff(const std::vector<size_t>& lane, std::exception_ptr& failure) noexcept
    {
        const HRESULT apartment = CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        try
        {
            for (size_t i = 0; i < lane.size() && !IsOver(); ++i)
                RunOne(lane[i]);
        }
        catch (...)
        {
            m_over = true;
            failure = std::current_exception();
        }
        if (SUCCEEDED(apartment))
            CoUninitialize();
        m_news.LaneEnds();
    }

    void RunOne(size_t index)
    {
        m_news.Add([index](IRunView& view) { view.Begun(index); });
        const CRunObserver observer = {
            [this, index](std::optional<long> percent, unsigned long long seconds)
            { m_news.Add([=](IRunView& view) { view.Progress(index, percent, seconds); }); },
            [this, index](const std::wstring& text)
            { m_news.Add([=](IRunView& view) { view.Said(index, text); }); },
            [this, index](StopReason reason)
            { m_news.Add([=](IRunView& view) { view.Stopping(index, reason); }); }};
        CRunOutcome outcome = m_run(m_tests[index], observer);
        if (outcome.Interrupted)
            m_over = true;
        m_news.Add(
            [this, index, ended = std::move(outcome)](IRunView& view)
            {
                view.Ended(index, ended);
                m_outcomes[index] = ended;
            });
    }

    const std::vector<CTestChoice>& m_tests;
    const HANDLE m_stop;
    const RunFunction& m_run;
    CNews m_news;
    std::atomic<bool> m_over = false;
    std::vector<std::optional<CRunOutcome>> m_outcomes; // of the thread that shows
};
} // namespace

std::vector<std::vector<size_t>> LanesOf(const std::vector<CTestChoice>& tests, Order order)
{
    std::vector<std::vector<size_t>> lanes;
    std::map<const CAdapter*, size_t> laneOf;
    for (size_t i = 0; i < tests.size(); ++i)
    {
        const CAdapter* const adapter = order == Order::SideBySide ? tests[i].Adapter : nullptr;
        const size_t lane = laneOf.emplace(adapter, lanes.size()).first->second;
        if (lane == lanes.size())
            lanes.emplace_back();
        lanes[lane].push_back(i);
    }
    return lanes;
}

std::vector<std::optional<CRunOutcome>> RunSeries(const std::vector<CTestChoice>& tests, Order order,
                                                  HANDLE stop, const RunFunction& run, IRunView& view)
{
    return CSeriesRun(tests, stop, run).Run(LanesOf(tests, order), view);
}
} // namespace zebdiag
