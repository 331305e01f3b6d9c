#include "CDM/src/server/ShutdownMonitor.h"

#include <deque>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace
{
constexpr DWORD kMainThread = 4711;
constexpr auto kNothing = [] {};

// Plays the world: each wait takes the next step of a script, which says what happens meanwhile and how the
// wait ends. What the monitor does is written down.
class CScriptedActions final : public CMonitorActions
{
  public:
    struct CStep
    {
        DWORD result;
        std::function<void()> meanwhile = kNothing;
    };

    std::deque<CStep> Waits;
    std::function<void()> DuringSuspend = kNothing;
    std::function<void()> DuringQuit = kNothing;
    std::vector<std::string> Log;
    CHandle Done{CreateEventW(nullptr, TRUE, FALSE, nullptr)};

    DWORD Wait(HANDLE, DWORD milliseconds) noexcept override
    {
        Log.push_back(milliseconds == INFINITE ? "wait" : "wait " + std::to_string(milliseconds));
        if (Waits.empty())
        {
            // The script is over, the monitor should have ended: stop it here for good.
            Log.push_back("script over");
            SetEvent(Done.Get());
            ExitThread(1);
        }
        const CStep step = Waits.front();
        Waits.pop_front();
        step.meanwhile();
        return step.result;
    }
    void SuspendClassObjects() noexcept override
    {
        Log.push_back("suspend");
        DuringSuspend();
    }
    void PostQuit(DWORD mainThread) noexcept override
    {
        Log.push_back("quit " + std::to_string(mainThread));
        DuringQuit();
        SetEvent(Done.Get());
    }
};

using Log = std::vector<std::string>;
constexpr DWORD kSignalled = WAIT_OBJECT_0;
constexpr DWORD kTimedOut = WAIT_TIMEOUT;

class ShutdownMonitorTest : public testing::Test
{
  protected:
    const Log& Run()
    {
        EXPECT_TRUE(m_monitor.Start(kMainThread));
        EXPECT_EQ(WaitForSingleObject(m_actions.Done.Get(), 60000), WAIT_OBJECT_0);
        return m_actions.Log;
    }

    volatile LONG m_locks = 0;
    CScriptedActions m_actions;
    CShutdownMonitor m_monitor{m_locks, m_actions};
};

TEST_F(ShutdownMonitorTest, EndsTheServerFiveSecondsAfterTheLastSignal)
{
    m_actions.Waits = {{kSignalled}, {kTimedOut}};
    EXPECT_EQ(Run(), (Log{"wait", "wait 5000", "suspend", "quit 4711"}));
}

TEST_F(ShutdownMonitorTest, EverySignalStartsTheFiveSecondsAnew)
{
    m_actions.Waits = {{kSignalled}, {kSignalled}, {kSignalled}, {kTimedOut}};
    EXPECT_EQ(Run(), (Log{"wait", "wait 5000", "wait 5000", "wait 5000", "suspend", "quit 4711"}));
}

TEST_F(ShutdownMonitorTest, ALockHeldAtTheFirstTestGoesBackToWaiting)
{
    m_actions.Waits = {
        {kSignalled}, {kTimedOut, [&] { m_locks = 1; }}, {kSignalled, [&] { m_locks = 0; }}, {kTimedOut}};
    EXPECT_EQ(Run(), (Log{"wait", "wait 5000", "wait", "wait 5000", "suspend", "quit 4711"}));
}

TEST_F(ShutdownMonitorTest, ActivityBetweenTimeOutAndFirstTestGoesBackToWaiting)
{
    // The flag is set while the wait is timing out: the signal is seen by the next wait.
    m_actions.Waits = {{kSignalled}, {kTimedOut, [&] { m_monitor.Signal(); }}, {kSignalled}, {kTimedOut}};
    EXPECT_EQ(Run(), (Log{"wait", "wait 5000", "wait", "wait 5000", "suspend", "quit 4711"}));
}

TEST_F(ShutdownMonitorTest, AClientThatComesDuringTheSuspensionGoesBackToWaiting)
{
    m_actions.DuringSuspend = [&]
    {
        m_locks = 1;
        m_actions.DuringSuspend = kNothing;
    };
    m_actions.Waits = {{kSignalled}, {kTimedOut}, {kSignalled, [&] { m_locks = 0; }}, {kTimedOut}};
    EXPECT_EQ(Run(), (Log{"wait", "wait 5000", "suspend", "wait", "wait 5000", "suspend", "quit 4711"}));
}

TEST_F(ShutdownMonitorTest, AClientThatCameAndWentDuringTheSuspensionGoesBackToWaiting)
{
    m_actions.DuringSuspend = [&]
    {
        m_monitor.Signal();
        m_actions.DuringSuspend = kNothing;
    };
    m_actions.Waits = {{kSignalled}, {kTimedOut}, {kSignalled}, {kTimedOut}};
    EXPECT_EQ(Run(), (Log{"wait", "wait 5000", "suspend", "wait", "wait 5000", "suspend", "quit 4711"}));
}

TEST_F(ShutdownMonitorTest, NobodyIsAdmittedAfterTheSecondTest)
{
    const auto enter = [&] { InterlockedIncrement(&m_locks); };
    std::vector<bool> admitted;
    m_actions.DuringSuspend = [&]
    {
        admitted.push_back(m_monitor.Admit(enter));
        m_actions.DuringSuspend = kNothing;
    };
    m_actions.DuringQuit = [&] { admitted.push_back(m_monitor.Admit(enter)); };
    m_actions.Waits = {{kSignalled}, {kTimedOut}, {kSignalled, [&] { m_locks = 0; }}, {kTimedOut}};
    EXPECT_EQ(Run(), (Log{"wait", "wait 5000", "suspend", "wait", "wait 5000", "suspend", "quit 4711"}));
    EXPECT_EQ(admitted, (std::vector<bool>{true, false}));
    EXPECT_EQ(m_locks, 0);
}

TEST_F(ShutdownMonitorTest, ASignalAfterTheEndIsHarmless)
{
    m_actions.Waits = {{kSignalled}, {kTimedOut}};
    Run();
    m_monitor.Signal();
    EXPECT_EQ(m_actions.Log.size(), 4u);
}

// The real wait and the real message, with the shortest patience.
class CQuietActions final : public CMonitorActions
{
  public:
    void SuspendClassObjects() noexcept override {}
};

TEST(ShutdownMonitorThreadTest, PostsQuitToTheMainThread)
{
    MSG message;
    PeekMessageA(&message, nullptr, 0, 0, PM_NOREMOVE); // gives the thread its queue
    const volatile LONG locks = 0;
    CQuietActions actions;
    CShutdownMonitor monitor(locks, actions, 0);
    ASSERT_TRUE(monitor.Start(GetCurrentThreadId()));
    monitor.Signal();
    EXPECT_EQ(GetMessageA(&message, nullptr, 0, 0), 0);
    EXPECT_EQ(message.message, static_cast<UINT>(WM_QUIT));
}
} // namespace
