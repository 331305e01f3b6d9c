// Stopping runs from another console and from a script.
#include "tests/system/provider/SharedMachine.h"

#include "tests/support/CaseName.h"

namespace
{
constexpr char kAdapters[] = R"([ { "Key": "ALPHA", "Tests": [
    { "TestID": 2, "Duration": 4000000000, "Outcome": "0x80040321" },
    { "TestID": 3, "Duration": "until stopped" }, { "TestID": 9 } ] } ])";

void StopByConsole()
{
    const CRunResult stop = Zebdiag(L"stop");
    EXPECT_EQ(0u, stop.ExitCode) << stop.Output;
    EXPECT_NE(std::string::npos, stop.Output.find(": Stopped.")) << stop.Output;
}

template <const wchar_t* Arguments>
void StopByScript()
{
    EXPECT_EQ((std::vector<std::string>{"ReturnValue 0", "Stopped"}),
              RunScript(L"discontinue.vbs", Arguments));
}
constexpr wchar_t kOrdinaryTest[] = L"3@ALPHA ALPHA";
constexpr wchar_t kSender[] = L"9@ALPHA ALPHA";

struct StopCase
{
    const char* name;
    const char* test;
    const wchar_t* run;
    void (*stop)();
    const char* verdict;
};

class StoppedRun : public CSharedProvider, public testing::WithParamInterface<StopCase>
{
  public:
    static void SetUpTestSuite() { MakeProvider(kAdapters); }
};

TEST_P(StoppedRun, EndsAsStoppedForTheOneThatStartedItElsewhere)
{
    RunUntilStopped(Machine());
    const unsigned runs = CallsOf(Machine(), GetParam().test, "RunDiagTest");
    CRunningProgram run(ZebdiagCommand(GetParam().run));
    ASSERT_TRUE(WaitForCalls(Machine(), GetParam().test, "RunDiagTest", runs + 1));
    GetParam().stop();
    const CRunResult stopped = run.Finish();
    EXPECT_EQ(2u, stopped.ExitCode) << stopped.Output;
    EXPECT_NE(std::string::npos, stopped.Output.find(GetParam().verdict)) << stopped.Output;
    EXPECT_EQ("stopped", StateOf(ZebdiagJson(L"results"), GetParam().test));
}

INSTANTIATE_TEST_SUITE_P(
    Tests, StoppedRun,
    testing::Values(StopCase{"SenderByConsole", "9@ALPHA", L"run --test 9", StopByConsole,
                             "STOPPED: Sender on ALPHA."},
                    StopCase{"OrdinaryByConsole", "3@ALPHA", L"run --test 3", StopByConsole,
                             "STOPPED: Receive and transmit errors on ALPHA."},
                    StopCase{"OrdinaryThatWouldHaveFailedByConsole", "2@ALPHA", L"run --test 2",
                             StopByConsole, "STOPPED: Negotiated speed and duplex on ALPHA."},
                    StopCase{"OrdinaryByScript", "3@ALPHA", L"run --adapter ALPHA --test 3",
                             StopByScript<kOrdinaryTest>, "STOPPED: "},
                    StopCase{"SenderByScript", "9@ALPHA", L"run --adapter ALPHA --test 9",
                             StopByScript<kSender>, "STOPPED: "}),
    NameOf<StopCase>);
} // namespace
