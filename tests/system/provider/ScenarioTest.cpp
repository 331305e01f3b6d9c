// The ready scenarios of the scripted agent, and what a client says of them.
#include "tests/system/provider/ProviderFixture.h"

#include "tests/support/CaseName.h"

#include <fstream>
#include <gtest/gtest.h>
#include <iterator>

namespace
{
struct Step
{
    const wchar_t* arguments;
    DWORD exitCode;
    const char* verdict;
};

struct Case
{
    const char* name;
    std::vector<Step> steps;
};

class Scenario : public testing::TestWithParam<Case>
{
};

TEST_P(Scenario, ComesToItsVerdict)
{
    std::ifstream file(std::string(ZEB_SCENARIOS "/") + GetParam().name + ".json", std::ios::binary);
    const CProviderMachine machine;
    machine.SetScript({std::istreambuf_iterator<char>(file), {}});
    machine.SetIdleTime(3600000); // the script goes on where the run before has left it
    machine.SetNumber(L"ZebDiag", L"CheckTime", 1);
    for (const Step& step : GetParam().steps)
    {
        const CRunResult run = Zebdiag(step.arguments);
        EXPECT_EQ(step.exitCode, run.ExitCode);
        EXPECT_NE(std::string::npos, run.Output.find(step.verdict)) << run.Output;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Ready, Scenario,
    testing::Values(Case{"healthy",
                         {{L"run --all", 0, "PASSED: 8 passed."},
                          {L"run --test sender", 0, "PASSED: Sender on SCRIPTED-ADAPTER-1."}}},
                    Case{"cable",
                         {{L"run --all", 1, "FAILED: 6 passed, 2 failed."},
                          {L"run --test sender", 1, "FAILED: Sender on SCRIPTED-ADAPTER-1."}}},
                    Case{"flaky",
                         {{L"run --all", 1, "FAILED: 7 passed, 1 failed."},
                          {L"run --all", 1, "FAILED: 2 passed, 6 failed."},
                          {L"run --all", 0, "PASSED: 8 passed."},
                          {L"run --test sender", 1, "FAILED: Sender on SCRIPTED-ADAPTER-1."}}}),
    NameOf<Case>);
} // namespace
