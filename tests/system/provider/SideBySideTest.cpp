// One zebdiag that runs the tests of several adapters: who runs beside whom is seen from the agent's side.
#include "tests/system/provider/SharedMachine.h"

#include "Common/src/com/Text.h"

namespace
{
constexpr unsigned kAdapters = 4;
const wchar_t kGoOn[] = L"Global\\zeb-side-by-side-go-on";

std::string Adapter(unsigned number)
{
    return "ADAPTER-" + std::to_string(number);
}

// Link waits in the agent for the event, speed ends at once, and the sender runs until it is stopped.
std::string WaitingAdapters()
{
    nlohmann::json adapters = nlohmann::json::array();
    for (unsigned i = 1; i <= kAdapters; ++i)
        adapters.push_back(
            {{"Key", Adapter(i)},
             {"Tests",
              {{{"TestID", 1}, {"Faults", {{"RunDiagTest", {{"HangUntil", NarrowText(kGoOn)}}}}}},
               {{"TestID", 2}},
               {{"TestID", 9}}}}});
    return adapters.dump();
}

class SideBySide : public testing::Test
{
  protected:
    SideBySide() { SetAdapters(m_machine, WaitingAdapters()); }

    unsigned Runs(unsigned adapter, const char* test) const
    {
        return CallsOf(m_machine, (test + ("@" + Adapter(adapter))).c_str(), "RunDiagTest");
    }
    bool WaitForRun(unsigned adapter, const char* test) const
    {
        return WaitForCalls(m_machine, (test + ("@" + Adapter(adapter))).c_str(), "RunDiagTest", 1);
    }

    const CProviderMachine m_machine;
    const CHandle m_goOn{CreateEventW(nullptr, TRUE, FALSE, kGoOn)};
};

// All adapters are in the agent at the same time: none of them gets out of it before the event.
TEST_F(SideBySide, EveryAdapterRunsOneTestAtOnce)
{
    CRunningProgram run(ZebdiagCommand(L"run --all --json"), Errors::Dropped);
    for (unsigned i = 1; i <= kAdapters; ++i)
        EXPECT_TRUE(WaitForRun(i, "1")) << i;
    for (unsigned i = 1; i <= kAdapters; ++i)
        EXPECT_EQ(0u, Runs(i, "2")) << "one at a time for each adapter: " << i;
    SetEvent(m_goOn.Get());
    const CRunResult result = run.Finish();
    EXPECT_EQ(0u, result.ExitCode) << result.Output;
    const nlohmann::json runs = nlohmann::json::parse(result.Output).at("runs");
    ASSERT_EQ(2 * kAdapters, runs.size());
    for (unsigned i = 0; i < kAdapters; ++i)
    {
        EXPECT_EQ("1@" + Adapter(i + 1), runs.at(2 * i).at("test").at("key"));
        EXPECT_EQ("2@" + Adapter(i + 1), runs.at(2 * i + 1).at("test").at("key"));
    }
}

// The runs of all adapters wait for the same event of the provider, and each has a setting of its own to put
// back.
TEST_F(SideBySide, StopReachesTheRunOfEveryAdapter)
{
    RunUntilStopped(m_machine);
    CRunningProgram run(ZebdiagCommand(L"run --test sender --coverage 50 --json"), Errors::Dropped);
    for (unsigned i = 1; i <= kAdapters; ++i)
        ASSERT_TRUE(WaitForRun(i, "9")) << i;
    EXPECT_EQ(kAdapters, ZebdiagJson(L"stop").at("tests").size());
    const CRunResult result = run.Finish();
    EXPECT_EQ(2u, result.ExitCode) << result.Output;
    for (const auto& one : nlohmann::json::parse(result.Output).at("runs"))
    {
        EXPECT_EQ("stopped", one.at("outcome"));
        EXPECT_EQ(50, one.at("result").at("setting").at("coverage"));
    }
    for (const auto& setting : ZebdiagJson(L"settings").at("settings"))
        EXPECT_EQ(100, setting.at("coverage"));
}
} // namespace
