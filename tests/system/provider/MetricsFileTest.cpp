// The metrics across processes: of results of every kind, and of a provider that does not start.
#include "tests/system/provider/ProviderFixture.h"

#include <gtest/gtest.h>

namespace
{
constexpr wchar_t kMetrics[] = L"zebdiag.prom";

std::wstring MetricsCommand(const CProviderMachine& machine)
{
    return L"metrics --out \"" + machine.Folder() + kMetrics + L"\"";
}

void ExpectLines(const std::string& document, const std::vector<const char*>& lines)
{
    for (const char* line : lines)
        EXPECT_NE(std::string::npos, document.find("\n" + std::string(line) + "\n")) << line << "\n"
                                                                                     << document;
}

TEST(MetricsFile, TellsTheLastResults)
{
    const CProviderMachine machine;
    SetAdapters(machine, kTwoAdapters);
    machine.SetNumber(L"ZebDiag", L"CheckTime", 1);
    machine.SetNumber(L"ZebDiag", L"TimeoutSndRsp", 1);
    EXPECT_EQ(0u, Zebdiag(L"run --adapter ALPHA --test 1").ExitCode);
    EXPECT_EQ(1u, Zebdiag(L"run --adapter ALPHA --test 2").ExitCode);
    EXPECT_EQ(0u, Zebdiag(L"run --adapter ALPHA --test 9").ExitCode);
    const CRunResult metrics = Zebdiag(MetricsCommand(machine));
    EXPECT_EQ(0u, metrics.ExitCode) << metrics.Output;
    EXPECT_EQ("", metrics.Output);
    const std::string document = machine.ReadFileBytes(kMetrics);
    ExpectLines(document, {"zeb_up 1", R"(zeb_test_state{adapter="ALPHA",test="1",state="passed"} 1)",
                           R"(zeb_test_state{adapter="ALPHA",test="2",state="failed"} 1)",
                           R"(zeb_test_state{adapter="BETA",test="15",state="none"} 1)",
                           R"(zeb_test_info{adapter="ALPHA",test="9",name="Sender",kind="packets"} 1)"});
    EXPECT_NE(std::string::npos, document.find("\nzeb_run_lost_packets{adapter=\"ALPHA\",test=\"9\","));
    EXPECT_TRUE(document.ends_with("\n# EOF\n"));
}

TEST(MetricsFile, TellsThatTheProviderDoesNotStart)
{
    const CProviderMachine machine;
    SetAdapters(machine, "[]");
    EXPECT_EQ(6u, Zebdiag(MetricsCommand(machine)).ExitCode);
    ExpectLines(
        machine.ReadFileBytes(kMetrics),
        {"zeb_up 0", R"(zeb_failure_info{reason="not_reachable",exit_code="6",status="0x80041013"} 1)"});
}
} // namespace
