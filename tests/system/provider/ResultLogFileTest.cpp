// The result log of a provider in its own process, compared line by line.
#include "tests/system/provider/ProviderFixture.h"

#include "Common/src/com/Text.h"

#include <gtest/gtest.h>
#include <regex>

namespace
{
constexpr char kSeparator[] = "**********************************************************************";

struct LoggedMessage
{
    unsigned StringId;
    unsigned Value;
};

struct LoggedRun
{
    const wchar_t* key;
    const char* adapter;
    const char* state;
    const char* nameStringId;
    std::vector<LoggedMessage> messages;
};

// A value that differs from run to run, as every client sees it.
std::string Served(const CPropertyTexts& result, const wchar_t* property)
{
    return NarrowText(result.at(property).value());
}

std::string ExpectedRecord(const LoggedRun& run, const CPropertyTexts& result)
{
    std::string record = "ResultID=" + NarrowText(run.key) +
                         "\r\n"
                         "DiagnosticCreationClassName=Tolva_DiagTest\r\n"
                         "ExecutionID=" +
                         run.adapter +
                         "\r\n"
                         "HaltOnError=FALSE\r\n"
                         "QuickMode=TRUE\r\n"
                         "ReportSoftErrors=FALSE\r\n"
                         "ReportStatusMessages=TRUE\r\n"
                         "IsPackage=FALSE\r\n"
                         "TestWarningLevel=0\r\n"
                         "PercentOfTestCoverage=100\r\n"
                         "TestStartTime=" +
                         Served(result, L"TestStartTime") +
                         "\r\n"
                         "TimeStamp=" +
                         Served(result, L"TimeStamp") +
                         "\r\n"
                         "TestCompletionTime=" +
                         Served(result, L"TestCompletionTime") +
                         "\r\n"
                         "TestState=" +
                         run.state +
                         "\r\n"
                         "OtherStateDescriptionResourceId=0\r\n"
                         "EstimatedTimeOfPerforming=0\r\n"
                         "PercentComplete=" +
                         Served(result, L"PercentComplete") +
                         "\r\n"
                         "Array of String IDs:\r\n";
    char line[100];
    for (size_t i = 0; i < run.messages.size(); ++i)
    {
        _snprintf(line, sizeof line, "String IDs no %u = %u\r\n", static_cast<unsigned>(i),
                  run.messages[i].StringId);
        record += line;
    }
    record += "Array of Test Messages:\r\n";
    for (size_t i = 0; i < run.messages.size(); ++i)
    {
        _snprintf(line, sizeof line, "Test Message no %u = %x\r\n", static_cast<unsigned>(i),
                  run.messages[i].Value);
        record += line;
    }
    return record + "Diagnostic Name String ID = " + run.nameStringId + "\r\n" + kSeparator + "\r\n";
}

// The adapter's sender and responder find the same counters, each counter another one.
constexpr char kAdapter[] = R"([ { "Key": "ALPHA", "Tests": [
    { "TestID": 1 },
    { "TestID": 2, "Outcome": "0x80040321" },
    { "TestID": 3, "Duration": "until stopped" },
    { "TestID": 9, "Statistics":
        [ { "Counter": [300, 16, 17, 18, 19, 20, 21, 4294967295], "Word": 65535, "ByteA": 1, "ByteB": 255 } ] },
    { "TestID": 10, "Statistics":
        [ { "Counter": [1, 2, 3, 4, 5, 6, 7, 8], "Word": 9, "ByteA": 10, "ByteB": 11 } ] }
] } ])";

const LoggedRun kRuns[] = {
    {L"1@ALPHA", "ALPHA", "2", "3501", {}},
    {L"9@ALPHA",
     "ALPHA",
     "2",
     "3509",
     {{12, 1},
      {13, 255},
      {10, 4294967295},
      {3, 300},
      {4, 16},
      {5, 17},
      {7, 19},
      {9, 21},
      {6, 18},
      {8, 20},
      {11, 65535}}},
    {L"3@ALPHA", "ALPHA", "5", "3503", {}},
    {L"A@ALPHA",
     "ALPHA",
     "5",
     "3510",
     {{12, 10}, {13, 11}, {10, 8}, {3, 1}, {4, 2}, {5, 3}, {7, 5}, {9, 7}, {6, 4}, {8, 6}, {11, 9}}},
};

TEST(ResultLogFile, HoldsARecordOfEveryPassedAndStoppedRunAndOfNoFailedOne)
{
    const CProviderMachine machine;
    SetAdapters(machine, kAdapter);
    machine.SetNumber(L"ZebDiag", L"Enable", 1);
    machine.SetNumber(L"ZebDiag", L"CheckTime", 1);
    machine.SetNumber(L"ZebDiag", L"MaxPktsRcvd", 300);

    EXPECT_EQ(0u, Zebdiag(L"run --test 1").ExitCode);
    EXPECT_EQ(1u, Zebdiag(L"run --test 2").ExitCode);
    EXPECT_EQ(0u, Zebdiag(L"run --test 9").ExitCode);
    const struct
    {
        const wchar_t* command;
        const char* test;
    } stopped[] = {{L"run --test 3", "3@ALPHA"}, {L"run --test 10", "A@ALPHA"}};
    for (const auto& row : stopped)
    {
        CRunningProgram run(ZebdiagCommand(row.command));
        ASSERT_TRUE(WaitForCalls(machine, row.test, "RunDiagTest", 1));
        EXPECT_EQ(0u, Zebdiag(L"stop").ExitCode);
        EXPECT_EQ(2u, run.Finish().ExitCode);
    }

    const CResultTexts results = AllResults(CWmiClient());
    std::string expected;
    for (const LoggedRun& run : kRuns)
    {
        ASSERT_EQ(1u, results.count(run.key));
        expected += ExpectedRecord(run, results.at(run.key));
    }
    const std::string log = machine.ReadFileBytes(L"ZebDiag.log");
    EXPECT_EQ(expected, log);
    EXPECT_TRUE(std::regex_search(log, std::regex(R"(\r\nTestStartTime=\d{14}\.\d{6}[+-]-?\d+\r\n)"))) << log;
}
} // namespace
