// Which tests run beside each other and which do not. Every wait here is for an event that another lane or
// the test sets: lanes that did not run at once would never end.
#include "tools/zebdiag/Series.h"

#include "Common/src/com/Owned.h"
#include "Gate.h"
#include "SampleInventory.h"

#include <algorithm>
#include <atomic>
#include <gtest/gtest.h>
#include <stdexcept>

namespace zebdiag
{
namespace
{
class CRecordingView final : public IRunView
{
  public:
    void Begun(size_t index) override { Add("begun", index); }
    void Progress(size_t index, std::optional<long>, unsigned long long) override { Add("progress", index); }
    void Said(size_t index, const std::wstring&) override { Add("said", index); }
    void Stopping(size_t index, StopReason) override { Add("stopping", index); }
    void Ended(size_t index, const CRunOutcome&) override
    {
        Add("ended", index);
        OnEnded(index);
    }
    void Finish() override {}

    // Where it was told, or the count of all if it was not.
    size_t At(const std::string& what) const
    {
        return static_cast<size_t>(std::ranges::find(Told, what) - Told.begin());
    }

    std::vector<std::string> Told;
    std::function<void(size_t)> OnEnded = [](size_t) {};

  private:
    void Add(const char* what, size_t index)
    {
        EXPECT_EQ(GetCurrentThreadId(), m_thread);
        Told.push_back(what + std::string(" ") + std::to_string(index));
    }

    const DWORD m_thread = GetCurrentThreadId();
};

CRunOutcome Passed()
{
    CRunOutcome outcome;
    outcome.Code = ExitCode::Passed;
    return outcome;
}

// Three adapters with two tests each: 0 and 1 are the first one's, 2 and 3 the second one's, 4 and 5 the
// third one's.
class SeriesTest : public testing::Test
{
  protected:
    SeriesTest()
    {
        for (const wchar_t* name : {L"A", L"B", L"C"})
            m_adapters.push_back(
                {name, name, L"", {SampleTest(L"1", name, L"Link"), SampleTest(L"2", name, L"Speed")}});
        for (const CAdapter& adapter : m_adapters)
            for (const CTest& test : adapter.Tests)
                m_tests.push_back({&adapter, &test});
    }

    size_t IndexOf(const CTestChoice& choice) const
    {
        return static_cast<size_t>(std::ranges::find(m_tests, choice.Test, &CTestChoice::Test) -
                                   m_tests.begin());
    }
    bool IsFirst(const CTestChoice& choice) const { return IndexOf(choice) % 2 == 0; }

    std::vector<std::optional<CRunOutcome>> Run(const RunFunction& run, Order order = Order::SideBySide)
    {
        return RunSeries(m_tests, order, m_stop.Get(), run, m_view);
    }

    std::vector<CAdapter> m_adapters;
    std::vector<CTestChoice> m_tests;
    CHandle m_stop{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    CRecordingView m_view;
};

std::vector<bool> WereRun(const std::vector<std::optional<CRunOutcome>>& outcomes)
{
    std::vector<bool> run;
    for (const auto& outcome : outcomes)
        run.push_back(outcome.has_value());
    return run;
}

TEST_F(SeriesTest, AdaptersHaveALaneEach)
{
    EXPECT_EQ(LanesOf(m_tests, Order::SideBySide),
              (std::vector<std::vector<size_t>>{{0, 1}, {2, 3}, {4, 5}}));
    EXPECT_EQ(LanesOf(m_tests, Order::OneByOne), (std::vector<std::vector<size_t>>{{0, 1, 2, 3, 4, 5}}));
    std::swap(m_tests[1], m_tests[2]);
    EXPECT_EQ(LanesOf(m_tests, Order::SideBySide),
              (std::vector<std::vector<size_t>>{{0, 2}, {1, 3}, {4, 5}}));
}

TEST_F(SeriesTest, AllAdaptersRunAtOnceAndEachRunsOneTestAtATime)
{
    CGate firsts(3);
    CGate seconds(3);
    std::atomic<int> ofAdapter[3] = {};
    const auto outcomes = Run(
        [&](const CTestChoice& choice, const CRunObserver&)
        {
            std::atomic<int>& running = ofAdapter[IndexOf(choice) / 2];
            EXPECT_EQ(++running, 1);
            (IsFirst(choice) ? firsts : seconds).ArriveAndWait();
            --running;
            return Passed();
        });
    EXPECT_EQ(WereRun(outcomes), std::vector<bool>(6, true));
    for (size_t i = 0; i < 6; i += 2)
        EXPECT_LT(m_view.At("ended " + std::to_string(i)), m_view.At("begun " + std::to_string(i + 1)));
    EXPECT_EQ(m_view.Told.size(), 12u);
}

TEST_F(SeriesTest, OneByOneFollowsTheList)
{
    std::atomic<int> running = 0;
    Run(
        [&](const CTestChoice&, const CRunObserver&)
        {
            EXPECT_EQ(++running, 1);
            --running;
            return Passed();
        },
        Order::OneByOne);
    EXPECT_EQ(m_view.Told,
              (std::vector<std::string>{"begun 0", "ended 0", "begun 1", "ended 1", "begun 2", "ended 2",
                                        "begun 3", "ended 3", "begun 4", "ended 4", "begun 5", "ended 5"}));
}

TEST_F(SeriesTest, WhatARunTellsArrivesBetweenItsBeginAndItsEnd)
{
    m_tests.resize(1);
    Run(
        [](const CTestChoice&, const CRunObserver& observer)
        {
            observer.Progress(10, 1);
            observer.Say(L"remark");
            observer.Stopping(StopReason::Request);
            return Passed();
        });
    EXPECT_EQ(m_view.Told,
              (std::vector<std::string>{"begun 0", "progress 0", "said 0", "stopping 0", "ended 0"}));
}

// The second adapter's first test fails while the others wait for its second one to begin.
TEST_F(SeriesTest, FailureOfOneHoldsNoOther)
{
    CGate failed(1);
    const auto outcomes = Run(
        [&](const CTestChoice& choice, const CRunObserver&)
        {
            const size_t index = IndexOf(choice);
            if (index == 2)
                return CRunOutcome(); // could not run
            if (index == 3)
                failed.Arrive();
            failed.Wait();
            return Passed();
        });
    EXPECT_EQ(WereRun(outcomes), std::vector<bool>(6, true));
    EXPECT_EQ(outcomes[2]->Code, ExitCode::CouldNotRun);
    EXPECT_EQ(outcomes[3]->Code, ExitCode::Passed);
}

// Whatever the order in which tests end, outcomes have the places of their tests.
TEST_F(SeriesTest, OutcomesKeepTheOrderOfTheList)
{
    CGate last(1);
    const auto outcomes = Run(
        [&](const CTestChoice& choice, const CRunObserver&)
        {
            const size_t index = IndexOf(choice);
            if (index == 0)
                last.Wait();
            if (index == 5)
                last.Arrive();
            CRunOutcome outcome = Passed();
            outcome.Seconds = index;
            return outcome;
        });
    for (size_t i = 0; i < 6; ++i)
        EXPECT_EQ(outcomes[i]->Seconds, i);
}

TEST_F(SeriesTest, StopEndsAllThatRunsAndNothingElseBegins)
{
    CGate running(3);
    const auto outcomes = Run(
        [&](const CTestChoice&, const CRunObserver&)
        {
            running.Arrive();
            running.Wait();
            SetEvent(m_stop.Get());
            CRunOutcome outcome;
            outcome.Code = ExitCode::Stopped;
            outcome.Interrupted = true;
            return outcome;
        });
    EXPECT_EQ(WereRun(outcomes), (std::vector<bool>{true, false, true, false, true, false}));
}

// As with --timeout, which sets no event.
TEST_F(SeriesTest, InterruptedRunLetsNoOtherAdapterBeginAnother)
{
    CGate others(2);
    CGate told(1);
    m_view.OnEnded = [&](size_t index)
    {
        if (index == 0)
            told.Arrive();
    };
    const auto outcomes = Run(
        [&](const CTestChoice& choice, const CRunObserver&)
        {
            CRunOutcome outcome = Passed();
            outcome.Interrupted = IndexOf(choice) == 0;
            if (outcome.Interrupted)
                others.Wait();
            else
            {
                others.Arrive();
                told.Wait();
            }
            return outcome;
        });
    EXPECT_EQ(WereRun(outcomes), (std::vector<bool>{true, false, true, false, true, false}));
}

TEST_F(SeriesTest, StopBeforeTheBeginRunsNothing)
{
    SetEvent(m_stop.Get());
    const auto outcomes = Run([](const CTestChoice&, const CRunObserver&) { return Passed(); });
    EXPECT_EQ(WereRun(outcomes), std::vector<bool>(6, false));
    EXPECT_TRUE(m_view.Told.empty());
}

TEST_F(SeriesTest, ExceptionOfARunReachesTheCallerWhenTheOthersHaveEnded)
{
    CGate running(3);
    std::atomic<int> ended = 0;
    const auto run = [&](const CTestChoice& choice, const CRunObserver&)
    {
        running.ArriveAndWait();
        if (IndexOf(choice) == 0)
            throw std::runtime_error("run");
        ++ended;
        return Passed();
    };
    m_tests.erase(m_tests.begin() + 5);
    m_tests.erase(m_tests.begin() + 3);
    m_tests.erase(m_tests.begin() + 1);
    EXPECT_THROW(Run(run), std::runtime_error);
    EXPECT_EQ(ended, 2);
}

TEST_F(SeriesTest, ExceptionOfTheViewReachesTheCallerWhenAllHaveEnded)
{
    m_tests = {m_tests[0], m_tests[2]};
    CGate running(2); // what was not begun before the view throws is not begun
    CGate told(1);
    m_view.OnEnded = [&](size_t)
    {
        told.Arrive();
        throw std::runtime_error("view");
    };
    std::atomic<int> ended = 0;
    EXPECT_THROW(Run(
                     [&](const CTestChoice& choice, const CRunObserver&)
                     {
                         running.ArriveAndWait();
                         if (IndexOf(choice) == 1)
                             told.Wait();
                         ++ended;
                         return Passed();
                     }),
                 std::runtime_error);
    EXPECT_EQ(ended, 2);
}
} // namespace
} // namespace zebdiag
