// The provider process from activation to its end: one trace, no unbalanced mark, nothing left behind.
#include "tests/support/TraceMarks.h"
#include "tests/system/provider/ProviderFixture.h"

#include <gmock/gmock.h>

namespace
{
TEST(Life, EndsByItselfAfterTheLastClient)
{
    const CProviderMachine machine;
    machine.SetScript(kScriptOfTwoAdapters);
    {
        const CWmiClient client;
        ASSERT_FALSE(client.Instances(L"Tolva_DiagTest").empty());
        ASSERT_EQ(1u, ProcessesOf(L"Drevok.EXE").size());
    }
    EXPECT_TRUE(WaitForNoProcess(L"Drevok.EXE"));
    EXPECT_TRUE(machine.WaitUntilAllEnded());
}

TEST(Life, TraceShowsNestedMarksWithNoUnbalancedPair)
{
    const CProviderMachine machine;
    machine.SetScript(kScriptOfTwoAdapters);
    ZebdiagJson(L"list");
    ZebdiagJson(L"run --adapter BETA --test 1");
    ASSERT_TRUE(machine.WaitUntilAllEnded());

    const std::string log = machine.ReadFileBytes(L"ZebDiagDbg.log");
    EXPECT_TRUE(log.starts_with("<center><h1>ZebDiag</h1></center>\r\n<xmp>\r\n")) << log.substr(0, 80);
    EXPECT_NE(std::string::npos, log.find(" { --> CProviderImp::Initialize"));
    EXPECT_NE(std::string::npos, log.find("Sending INITIALIZED"));
    EXPECT_NE(std::string::npos, log.find(" { --> CTolva_DiagTest::CreateInstanceEnumAsync"));
    const CTraceFindings findings = CheckTrace(log);
    EXPECT_GT(findings.Marks, 100u);
    EXPECT_THAT(findings.Faults, testing::IsEmpty());
}

TEST(Life, KilledProviderIsReplacedForTheNextRequest)
{
    const CProviderMachine machine;
    machine.SetScript(kScriptOfTwoAdapters);
    const CWmiClient client;
    ASSERT_EQ(5u, client.Instances(L"Tolva_DiagTest").size());
    const std::vector<DWORD> first = ProcessesOf(L"Drevok.EXE");
    ASSERT_EQ(1u, first.size());
    KillServers({L"Drevok.EXE"});

    EXPECT_EQ(5u, client.Instances(L"Tolva_DiagTest").size());
    const std::vector<DWORD> second = ProcessesOf(L"Drevok.EXE");
    ASSERT_EQ(1u, second.size());
    EXPECT_NE(first[0], second[0]);
}
} // namespace
