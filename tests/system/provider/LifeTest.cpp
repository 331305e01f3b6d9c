// The provider process from activation to its end: one trace, no unbalanced mark, nothing left behind.
#include "tests/system/provider/ProviderFixture.h"

#include <gtest/gtest.h>
#include <map>
#include <regex>
#include <sstream>

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

// Follows each thread's entry and exit marks; every exit must close the entry that was opened last, at the
// indentation of its depth.
void ExpectBalancedMarks(const std::string& log)
{
    const std::regex mark(R"(^\[([0-9a-f]+)\] \d\d:\d\d:\d\d\.\d\d\d ( *) (\{ -->|\} <--) (.*)$)");
    std::map<std::string, std::vector<std::string>> open;
    std::istringstream lines(log);
    size_t marks = 0;
    for (std::string line; std::getline(lines, line);)
    {
        if (line.ends_with('\r'))
            line.pop_back();
        std::smatch part;
        if (!std::regex_match(line, part, mark))
            continue;
        ++marks;
        std::vector<std::string>& thread = open[part[1]];
        if (part[3] == "{ -->")
        {
            EXPECT_EQ(thread.size() * 4, part[2].length()) << line;
            thread.push_back(part[4]);
            continue;
        }
        ASSERT_FALSE(thread.empty()) << line;
        EXPECT_EQ(thread.back(), part[4]);
        thread.pop_back();
        EXPECT_EQ(thread.size() * 4, part[2].length()) << line;
    }
    EXPECT_GT(marks, 100u);
    for (const auto& [thread, names] : open)
        EXPECT_TRUE(names.empty()) << "thread " << thread << " never left " << names.back();
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
    ExpectBalancedMarks(log);
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
