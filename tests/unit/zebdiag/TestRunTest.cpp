#include "tools/zebdiag/TestRun.h"

#include "Common/src/com/Text.h"
#include "FakeDiagnostics.h"
#include "tools/zebdiag/AdapterNames.h"
#include "tools/zebdiag/Inventory.h"

#include <atomic>
#include <gtest/gtest.h>

namespace zebdiag
{
namespace
{
constexpr wchar_t kKey[] = L"9@{AAAA}";

CHandle NewEvent()
{
    return CHandle(CreateEventW(nullptr, TRUE, FALSE, nullptr));
}

// One test that the client runs. Nothing here waits for time to pass: runs end when a test says so, and the
// clock shows what a test sets.
class TestRunTest : public testing::Test
{
  protected:
    TestRunTest()
    {
        m_control.Stop = m_stop.Get();
        m_control.Abandon = m_abandon.Get();
        m_control.PollMilliseconds = 1;
        m_control.Now = [this] { return m_now.load(); };
        m_observer.Progress = [this](std::optional<long> percent, unsigned long long)
        {
            m_percents.push_back(percent);
            m_onProgress();
        };
        m_observer.Say = [this](const std::wstring& text) { m_said += text + L"\n"; };
        m_observer.Stopping = [this](StopReason reason) { m_stoppings.push_back(reason); };
    }

    CFakeDiagnostics::CFakeTest& AddTest(bool sendsPackets = true)
    {
        return m_world->Add(kKey, L"Sender", sendsPackets);
    }

    // A run that lasts until `m_mayEnd` is set.
    std::function<TestState()> LastingRun(TestState state)
    {
        return [this, state]
        {
            WaitForSingleObject(m_mayEnd.Get(), INFINITE);
            return state;
        };
    }

    // For runs that were left to themselves: they use what this test owns.
    void LetTheRunEnd()
    {
        ResetEvent(m_world->CallEnded());
        SetEvent(m_mayEnd.Get());
        WaitForSingleObject(m_world->CallEnded(), INFINITE);
    }

    CRunOutcome Run()
    {
        const CInventory inventory = LoadInventory(m_session, {});
        return RunOneTest(m_session, inventory.Computer, inventory.Adapters.at(0).Tests.at(0), m_options,
                          m_control, m_observer);
    }

    ComPtr<CFakeDiagnostics> m_world = MakeCom<CFakeDiagnostics>();
    CWmiSession m_session{m_world, CTarget()};
    CHandle m_stop = NewEvent();
    CHandle m_abandon = NewEvent();
    CHandle m_mayEnd = NewEvent();
    std::atomic<unsigned long long> m_now = 0;
    CRunOptions m_options;
    CRunControl m_control;
    CRunObserver m_observer;
    std::function<void()> m_onProgress = [] {};
    std::vector<std::optional<long>> m_percents;
    std::wstring m_said;
    std::vector<StopReason> m_stoppings;
};

TEST_F(TestRunTest, PassedRunHasItsResult)
{
    AddTest();
    const CRunOutcome outcome = Run();
    EXPECT_EQ(outcome.Code, ExitCode::Passed);
    ASSERT_TRUE(outcome.Result);
    EXPECT_EQ(outcome.Result->State, TestState::Passed);
    EXPECT_EQ(outcome.Result->Percent, 100);
    EXPECT_FALSE(outcome.Interrupted);
    EXPECT_EQ(outcome.Message, L"");
    EXPECT_TRUE(m_world->Puts.empty());
}

TEST_F(TestRunTest, MethodGetsTheAdapterWithAllKeysAndTheSettingOfTheTest)
{
    AddTest();
    Run();
    ASSERT_EQ(m_world->Calls.size(), 1u);
    EXPECT_EQ(m_world->Calls[0].Path, L"Tolva_DiagTest.Name=\"9@{AAAA}\"");
    EXPECT_EQ(m_world->Calls[0].Method, L"RunTest");
    EXPECT_EQ(m_world->Calls[0].Arguments[L"SystemElement"],
              L"Tolva_EthernetAdapter.DeviceID=\"{AAAA}\",CreationClassName=\"Tolva_EthernetAdapter\","
              L"SystemCreationClassName=\"Win32_ComputerSystem\",SystemName=\"WS42\"");
    EXPECT_EQ(m_world->Calls[0].Arguments[L"Setting"], L"Tolva_DiagSetting.SettingID=\"9@{AAAA}\"");
}

// The call succeeds although the run failed.
TEST_F(TestRunTest, FailedRunIsReadFromTheResult)
{
    AddTest().Run = [] { return TestState::Failed; };
    const CRunOutcome outcome = Run();
    EXPECT_EQ(outcome.Code, ExitCode::Failed);
    EXPECT_EQ(outcome.Result->State, TestState::Failed);
}

TEST_F(TestRunTest, RunningTestIsNotStartedAndItsSettingNotTouched)
{
    AddTest().InUse = true;
    m_options.Setting.Coverage = 50;
    const CRunOutcome outcome = Run();
    EXPECT_EQ(outcome.Code, ExitCode::Busy);
    EXPECT_FALSE(outcome.Result);
    EXPECT_TRUE(m_world->Calls.empty());
    EXPECT_TRUE(m_world->Puts.empty());
}

// Another client was quicker between our look and our call: an empty reference comes back.
TEST_F(TestRunTest, TestThatAnotherClientHasJustStartedIsBusy)
{
    AddTest();
    m_world->Before = [this](const std::wstring&) { m_world->Tests[kKey].InUse = true; };
    const CRunOutcome outcome = Run();
    EXPECT_EQ(outcome.Code, ExitCode::Busy);
    EXPECT_EQ(m_world->Calls.size(), 1u);
}

TEST_F(TestRunTest, EmptyReferenceOfAFreeTestMeansThatItCouldNotRun)
{
    AddTest().Run = nullptr;
    const CRunOutcome outcome = Run();
    EXPECT_EQ(outcome.Code, ExitCode::CouldNotRun);
    EXPECT_EQ(
        outcome.Message,
        L"The provider did not run the test. Its trace tells why; \"zebdiag doctor\" says where it is.");
}

TEST_F(TestRunTest, FailedCallTellsWhatTheProviderSaid)
{
    AddTest();
    m_world->Failures[L"RunTest"] = {wmi::Failed, L"The agent is gone."};
    const CRunOutcome outcome = Run();
    EXPECT_EQ(outcome.Code, ExitCode::CouldNotRun);
    EXPECT_NE(outcome.Message.find(L"The provider on this computer could not carry out the request."),
              std::wstring::npos);
    EXPECT_TRUE(outcome.Message.ends_with(L"\nThe provider says: The agent is gone.\n(Status 0x80041001.)"));
}

TEST_F(TestRunTest, LockedTestIsBusyWhereTheStatusComesThrough)
{
    AddTest();
    m_world->Failures[L"RunTest"] = {static_cast<HRESULT>(0x80042000), L""};
    EXPECT_EQ(Run().Code, ExitCode::Busy);
}

TEST_F(TestRunTest, BrokenConnectionIsNotReachable)
{
    AddTest();
    m_world->Failures[L"RunTest"] = {HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE), L""};
    EXPECT_EQ(Run().Code, ExitCode::NotReachable);
}

TEST_F(TestRunTest, TestThatIsGoneIsNotFound)
{
    AddTest();
    const CInventory inventory = LoadInventory(m_session, {});
    m_world->Tests.clear();
    const CRunOutcome outcome = RunOneTest(m_session, inventory.Computer, inventory.Adapters[0].Tests[0],
                                           m_options, m_control, m_observer);
    EXPECT_EQ(outcome.Code, ExitCode::NotFound);
}

TEST_F(TestRunTest, ResultThatIsGoneIsSaid)
{
    AddTest();
    m_world->After = [this](const std::wstring&) { m_world->Results.clear(); };
    const CRunOutcome outcome = Run();
    EXPECT_EQ(outcome.Code, ExitCode::CouldNotRun);
    EXPECT_EQ(outcome.Message, L"The test has run, but its result is not there any more. Run it again.");
}

TEST_F(TestRunTest, RunThatTheProviderLeftUnfinishedCouldNotRun)
{
    AddTest().Run = [] { return TestState::InProgress; };
    const CRunOutcome outcome = Run();
    EXPECT_EQ(outcome.Code, ExitCode::CouldNotRun);
    EXPECT_EQ(
        outcome.Message,
        L"The provider did not finish the run. Its trace tells why; \"zebdiag doctor\" says where it is.");
}

TEST_F(TestRunTest, ProgressIsReadWhileTheRunLasts)
{
    AddTest().Run = LastingRun(TestState::Passed);
    m_onProgress = [this]
    {
        CLockScope lock(m_world->Lock());
        CFakeDiagnostics::CFakeResult& result = m_world->Results[kKey];
        if (result.Percent >= 80 && m_percents.back() == result.Percent)
            SetEvent(m_mayEnd.Get());
        else if (m_percents.back() == result.Percent)
            result.Percent += 40;
    };
    EXPECT_EQ(Run().Code, ExitCode::Passed);
    std::vector<long> seen;
    for (const auto& percent : m_percents)
        if (percent && (seen.empty() || seen.back() != *percent))
            seen.push_back(*percent);
    EXPECT_EQ(seen, (std::vector<long>{0, 40, 80}));
}

// It is done in one step, so that its percentage says nothing until then.
TEST_F(TestRunTest, OrdinaryTestShowsNoPercentage)
{
    AddTest(false).Run = LastingRun(TestState::Passed);
    m_onProgress = [this]
    {
        if (m_percents.size() == 3)
            SetEvent(m_mayEnd.Get());
    };
    EXPECT_EQ(Run().Code, ExitCode::Passed);
    ASSERT_GE(m_percents.size(), 3u);
    for (const auto& percent : m_percents)
        EXPECT_EQ(percent, std::nullopt);
}

TEST_F(TestRunTest, ReadingThatFailsDoesNotEndTheRun)
{
    AddTest().Run = LastingRun(TestState::Passed);
    m_onProgress = [this]
    {
        CLockScope lock(m_world->Lock());
        if (m_percents.size() == 1)
            m_world->Failures[L"Get Tolva_DiagResult"] = {wmi::Failed, L""};
        if (m_percents.size() == 3)
        {
            m_world->Failures.clear();
            SetEvent(m_mayEnd.Get());
        }
    };
    EXPECT_EQ(Run().Code, ExitCode::Passed);
    EXPECT_EQ(m_percents.at(1), std::nullopt);
}

TEST_F(TestRunTest, InterruptStopsTheTest)
{
    CFakeDiagnostics::CFakeTest& test = AddTest();
    test.Run = LastingRun(TestState::Stopped);
    test.Stop = [this] { return SetEvent(m_mayEnd.Get()) != FALSE; };
    m_onProgress = [this]
    {
        if (m_percents.back()) // so that the run is known to go on
            SetEvent(m_stop.Get());
    };
    const CRunOutcome outcome = Run();
    EXPECT_EQ(outcome.Code, ExitCode::Stopped);
    EXPECT_TRUE(outcome.Interrupted);
    EXPECT_EQ(outcome.Result->State, TestState::Stopped);
    EXPECT_EQ(m_stoppings, std::vector{StopReason::Request});
    ASSERT_EQ(m_world->Calls.size(), 2u);
    EXPECT_EQ(m_world->Calls[1].Method, L"DiscontinueTest");
    EXPECT_NE(m_world->Calls[1].Arguments[L"SystemElement"].find(L"DeviceID=\"{AAAA}\""), std::wstring::npos);
}

// An interrupt can come before the provider has locked the test, which refuses the stop.
TEST_F(TestRunTest, RefusedStopIsTriedAgain)
{
    CFakeDiagnostics::CFakeTest& test = AddTest();
    test.Run = LastingRun(TestState::Stopped);
    int stops = 0;
    test.Stop = [&] { return ++stops == 3 && SetEvent(m_mayEnd.Get()); };
    SetEvent(m_stop.Get());
    EXPECT_EQ(Run().Code, ExitCode::Stopped);
    EXPECT_EQ(stops, 3);
}

TEST_F(TestRunTest, StopThatFailsIsTriedAgain)
{
    CFakeDiagnostics::CFakeTest& test = AddTest();
    test.Run = LastingRun(TestState::Stopped);
    test.Stop = [this] { return SetEvent(m_mayEnd.Get()) != FALSE; };
    m_world->Failures[L"DiscontinueTest"] = {wmi::Failed, L""};
    m_onProgress = [this]
    {
        CLockScope lock(m_world->Lock());
        m_world->Failures.clear();
    };
    SetEvent(m_stop.Get());
    EXPECT_EQ(Run().Code, ExitCode::Stopped);
}

// An ordinary test that is aborted ends as failed.
TEST_F(TestRunTest, AbortedOrdinaryTestIsStopped)
{
    CFakeDiagnostics::CFakeTest& test = AddTest(false);
    test.Run = LastingRun(TestState::Failed);
    test.Stop = [this] { return SetEvent(m_mayEnd.Get()) != FALSE; };
    SetEvent(m_stop.Get());
    EXPECT_EQ(Run().Code, ExitCode::Stopped);
}

TEST_F(TestRunTest, TestThatFailsBeforeTheStopIsTakenHasFailed)
{
    CFakeDiagnostics::CFakeTest& test = AddTest();
    test.Run = LastingRun(TestState::Failed);
    test.Stop = [this]
    {
        SetEvent(m_mayEnd.Get());
        WaitForSingleObject(m_world->CallEnded(), INFINITE);
        return false;
    };
    SetEvent(m_stop.Get());
    EXPECT_EQ(Run().Code, ExitCode::Failed);
}

TEST_F(TestRunTest, TestThatPassesInSpiteOfTheStopHasPassed)
{
    CFakeDiagnostics::CFakeTest& test = AddTest();
    test.Run = LastingRun(TestState::Passed);
    test.Stop = [this] { return SetEvent(m_mayEnd.Get()) != FALSE; };
    SetEvent(m_stop.Get());
    const CRunOutcome outcome = Run();
    EXPECT_EQ(outcome.Code, ExitCode::Passed);
    EXPECT_TRUE(outcome.Interrupted);
    EXPECT_EQ(outcome.Message, L"The test had ended before it could be stopped.");
}

TEST_F(TestRunTest, SecondInterruptLeavesTheTestToItself)
{
    CFakeDiagnostics::CFakeTest& test = AddTest();
    test.Run = LastingRun(TestState::Passed);
    test.Stop = [] { return false; };
    SetEvent(m_stop.Get());
    m_onProgress = [this] { SetEvent(m_abandon.Get()); };
    const CRunOutcome outcome = Run();
    EXPECT_EQ(outcome.Code, ExitCode::CouldNotRun);
    EXPECT_TRUE(outcome.Interrupted);
    EXPECT_FALSE(outcome.Result);
    EXPECT_EQ(outcome.Message, L"The test could not be stopped and may still run. Try \"zebdiag stop\".");
    LetTheRunEnd();
}

struct PatienceCase
{
    bool taken;
    ExitCode code;
    const wchar_t* message;
};

class PatienceTest : public TestRunTest, public testing::WithParamInterface<PatienceCase>
{
};

TEST_P(PatienceTest, EndsThirtySecondsAfterTheStop)
{
    CFakeDiagnostics::CFakeTest& test = AddTest();
    test.Run = LastingRun(TestState::Stopped);
    test.Stop = [] { return GetParam().taken; };
    m_onProgress = [this] { m_now = 30000; };
    SetEvent(m_stop.Get());
    const CRunOutcome outcome = Run();
    EXPECT_EQ(outcome.Code, GetParam().code);
    EXPECT_EQ(outcome.Message, GetParam().message);
    LetTheRunEnd();
}

INSTANTIATE_TEST_SUITE_P(Answers, PatienceTest,
                         testing::Values(PatienceCase{true, ExitCode::Stopped,
                                                      L"The test was told to stop but has not ended yet. "
                                                      L"\"zebdiag list\" shows when it has."},
                                         PatienceCase{false, ExitCode::CouldNotRun,
                                                      L"The test could not be stopped and may still run. "
                                                      L"Try \"zebdiag stop\"."}),
                         [](const auto& info) { return info.param.taken ? "StopTaken" : "StopRefused"; });

TEST_F(TestRunTest, DeadlineStopsTheTest)
{
    CFakeDiagnostics::CFakeTest& test = AddTest();
    test.Run = LastingRun(TestState::Stopped);
    test.Stop = [this] { return SetEvent(m_mayEnd.Get()) != FALSE; };
    m_options.Deadline = 5000;
    m_onProgress = [this] { m_now = m_percents.size() < 3 ? 4999 : 5000; };
    const CRunOutcome outcome = Run();
    EXPECT_EQ(outcome.Code, ExitCode::Stopped);
    EXPECT_TRUE(outcome.Interrupted);
    EXPECT_EQ(outcome.Seconds, 5u);
    EXPECT_EQ(outcome.Message, L"The time given with --timeout was over.");
    EXPECT_EQ(m_stoppings, std::vector{StopReason::Timeout});
    EXPECT_GE(m_percents.size(), 3u);
}

TEST_F(TestRunTest, DeadlineThatPassesAtTheEndLeavesNoTimeForAnotherTest)
{
    m_options.Deadline = 5000;
    AddTest().Run = [this]
    {
        m_now = 5000;
        return TestState::Passed;
    };
    const CRunOutcome outcome = Run();
    EXPECT_EQ(outcome.Code, ExitCode::Passed);
    EXPECT_TRUE(outcome.Interrupted);
}

TEST_F(TestRunTest, StopByAnotherProgramIsSaid)
{
    AddTest().Run = [] { return TestState::Stopped; };
    const CRunOutcome outcome = Run();
    EXPECT_EQ(outcome.Code, ExitCode::Stopped);
    EXPECT_FALSE(outcome.Interrupted);
    EXPECT_EQ(outcome.Message, L"Another program stopped the test.");
}

TEST_F(TestRunTest, ChangedSettingHoldsForTheRunOnly)
{
    AddTest();
    m_options.Setting.Coverage = 50;
    m_options.Setting.Quick = false;
    const CRunOutcome outcome = Run();
    EXPECT_EQ(outcome.Result->Setting.Coverage, 50);
    EXPECT_EQ(outcome.Result->Setting.Quick, false);
    EXPECT_EQ(outcome.Result->Setting.Report, true);
    EXPECT_EQ(m_world->Settings[kKey].Coverage, 100);
    EXPECT_EQ(m_world->Settings[kKey].Quick, true);
    EXPECT_EQ(m_world->Settings[kKey].Report, true);
    EXPECT_EQ(m_said, L"");
}

TEST_F(TestRunTest, SettingThatIsNotTakenStartsNoRun)
{
    AddTest();
    m_options.Setting.Coverage = 50;
    m_world->Failures[L"Put"] = {wmi::Failed, L""};
    const CRunOutcome outcome = Run();
    EXPECT_EQ(outcome.Code, ExitCode::CouldNotRun);
    EXPECT_TRUE(m_world->Calls.empty());
}

TEST_F(TestRunTest, SettingIsPutBackAfterACallThatFailed)
{
    AddTest();
    m_options.Setting.Coverage = 50;
    m_world->Failures[L"RunTest"] = {wmi::Failed, L""};
    const CRunOutcome outcome = Run();
    EXPECT_EQ(outcome.Code, ExitCode::CouldNotRun);
    EXPECT_NE(outcome.Message, L"");
    EXPECT_EQ(m_world->Puts.size(), 2u);
    EXPECT_EQ(m_world->Settings[kKey].Coverage, 100);
}

TEST_F(TestRunTest, SettingThatCannotBePutBackIsSaidAfterACallThatFailed)
{
    AddTest();
    m_options.Setting.Coverage = 50;
    m_world->Failures[L"RunTest"] = {wmi::Failed, L""};
    m_world->Before = [this](const std::wstring& method)
    {
        CLockScope lock(m_world->Lock());
        if (method == L"RunTest")
            m_world->Failures[L"Put"] = {wmi::Failed, L""};
    };
    EXPECT_EQ(Run().Code, ExitCode::CouldNotRun);
    EXPECT_EQ(m_said, L"The setting could not be put back; see \"zebdiag settings\".\n");
}

TEST_F(TestRunTest, SettingThatAnotherClientChangesMeanwhileStays)
{
    AddTest().Run = [this]
    {
        CLockScope lock(m_world->Lock());
        m_world->Settings[kKey].Coverage = 20;
        return TestState::Passed;
    };
    m_options.Setting.Coverage = 50;
    m_options.Setting.Quick = false;
    EXPECT_EQ(Run().Code, ExitCode::Passed);
    EXPECT_EQ(m_world->Settings[kKey].Coverage, 20);
    EXPECT_EQ(m_world->Settings[kKey].Quick, true) << "still as the run has left it";
    EXPECT_EQ(m_said, L"The setting was changed while the test ran; the new values stay.\n");
}

TEST_F(TestRunTest, ValuesThatTheRunDoesNotChangeAreNotPutBack)
{
    AddTest().Run = [this]
    {
        CLockScope lock(m_world->Lock());
        m_world->Settings[kKey].Coverage = 20;
        m_world->Settings[kKey].Report = false;
        return TestState::Passed;
    };
    m_options.Setting.Quick = false;
    EXPECT_EQ(Run().Code, ExitCode::Passed);
    EXPECT_EQ(m_world->Settings[kKey].Coverage, 20);
    EXPECT_EQ(m_world->Settings[kKey].Report, false);
    EXPECT_EQ(m_world->Settings[kKey].Quick, true);
    EXPECT_EQ(m_said, L"");
}

TEST_F(TestRunTest, SettingOfWhichNothingIsAsTheRunLeftItIsNotWritten)
{
    AddTest().Run = [this]
    {
        CLockScope lock(m_world->Lock());
        m_world->Settings[kKey].Coverage = 20;
        return TestState::Passed;
    };
    m_options.Setting.Coverage = 50;
    EXPECT_EQ(Run().Code, ExitCode::Passed);
    EXPECT_EQ(m_world->Puts.size(), 1u);
    EXPECT_EQ(m_world->Settings[kKey].Coverage, 20);
}

TEST_F(TestRunTest, SettingThatCannotBeReadAfterwardsIsSaid)
{
    AddTest().Run = [this]
    {
        CLockScope lock(m_world->Lock());
        m_world->Failures[L"Get Tolva_DiagSetting"] = {wmi::Failed, L""};
        return TestState::Passed;
    };
    m_options.Setting.Coverage = 50;
    EXPECT_EQ(Run().Code, ExitCode::Passed);
    EXPECT_EQ(m_said, L"The setting could not be put back; see \"zebdiag settings\".\n");
}

TEST_F(TestRunTest, SettingThatCannotBePutBackIsSaid)
{
    AddTest().Run = [this]
    {
        CLockScope lock(m_world->Lock());
        m_world->Failures[L"Put"] = {wmi::Failed, L""};
        return TestState::Passed;
    };
    m_options.Setting.Coverage = 50;
    EXPECT_EQ(Run().Code, ExitCode::Passed);
    EXPECT_EQ(m_said, L"The setting could not be put back; see \"zebdiag settings\".\n");
}
} // namespace
} // namespace zebdiag
