// Stopping runs from another console.
#include "tests/system/provider/ProviderFixture.h"

#include "tests/support/CaseName.h"

#include <gtest/gtest.h>

namespace
{
struct StopCase
{
    const char* name;
    const char* test;
    const wchar_t* run;
    const char* verdict;
};

class StopFromAnotherConsole : public testing::TestWithParam<StopCase>
{
};

TEST_P(StopFromAnotherConsole, EndsTheRunAsStoppedInBoth)
{
    const CProviderMachine machine;
    SetCountedScript(machine, R"([ { "Key": "ALPHA", "Tests": [
        { "TestID": 2, "Duration": 4000000000, "Outcome": "0x80040321" },
        { "TestID": 3, "Duration": "until stopped" }, { "TestID": 9 } ] } ])");
    ShortPolls(machine);

    CRunningProgram run(ZebdiagCommand(GetParam().run));
    ASSERT_TRUE(WaitForCalls(machine, GetParam().test, "RunDiagTest", 1));
    const CRunResult stop = Zebdiag(L"stop");
    EXPECT_EQ(0u, stop.ExitCode) << stop.Output;
    EXPECT_NE(std::string::npos, stop.Output.find(": Stopped.")) << stop.Output;
    const CRunResult stopped = run.Finish();
    EXPECT_EQ(2u, stopped.ExitCode) << stopped.Output;
    EXPECT_NE(std::string::npos, stopped.Output.find(GetParam().verdict)) << stopped.Output;
    EXPECT_EQ("stopped", StateOf(ZebdiagJson(L"results"), GetParam().test));
}

INSTANTIATE_TEST_SUITE_P(Tests, StopFromAnotherConsole,
                         testing::Values(StopCase{"Sender", "9@ALPHA", L"run --test 9",
                                                  "STOPPED: Sender on ALPHA."},
                                         StopCase{"Ordinary", "3@ALPHA", L"run --test 3",
                                                  "STOPPED: Receive and transmit errors on ALPHA."},
                                         StopCase{"OrdinaryThatWouldHaveFailed", "2@ALPHA", L"run --test 2",
                                                  "STOPPED: Negotiated speed and duplex on ALPHA."}),
                         NameOf<StopCase>);

TEST(Stop, SecondRunOfARunningTestIsBusy)
{
    const CProviderMachine machine;
    machine.SetScript(kScriptOfTwoAdapters);
    ShortPolls(machine);

    CRunningProgram run(ZebdiagCommand(L"run --adapter ALPHA --test 9"));
    ASSERT_TRUE(run.WaitForOutput("%"));
    EXPECT_EQ(5u, Zebdiag(L"run --adapter ALPHA --test 9").ExitCode);
    EXPECT_EQ(0u, Zebdiag(L"stop").ExitCode);
    EXPECT_EQ(2u, run.Finish().ExitCode);
}
} // namespace
