#include "CDM/src/engine/results/ResultLog.h"

#include "CDM/src/engine/results/CimDateTime.h"
#include "tests/support/CaseName.h"
#include "tests/unit/engine/EngineFixture.h"

namespace
{
std::string Time(const std::optional<SYSTEMTIME>& time)
{
    CCoTaskMem<wchar_t> text;
    ConvertSystemTimeToString(time ? &*time : nullptr, text);
    return text ? std::string(text.Get(), text.Get() + wcslen(text.Get())) : std::string();
}

const std::string kSeparator = "**********************************************************************\r\n";

class ResultLogTest : public CEngineTest
{
  protected:
    ResultLogTest()
    {
        agent->AddAdapter(L"{aaa}", {1, 9});
        registry.SetNumber(kDiagKey, "Enable", 1);
    }
    // The length of the record that a run of test 1 writes, as the limit counts it.
    size_t RecordSize()
    {
        EXPECT_EQ(S_OK, Start());
        EXPECT_EQ(S_OK, Run(L"1@{aaa}"));
        const std::string text = LogText();
        std::filesystem::remove(folder.Path() / "ZebDiag.log");
        const std::string record = text.substr(0, text.size() - kSeparator.size());
        return record.size() - std::count(record.begin(), record.end(), '\r');
    }
    void WriteLog(size_t bytes)
    {
        std::ofstream(folder.Path() / "ZebDiag.log", std::ios::binary) << std::string(bytes, 'x');
    }
};

TEST_F(ResultLogTest, ARecordOfAPassedRunLineByLine)
{
    ASSERT_EQ(S_OK, Start());
    ASSERT_EQ(S_OK, Run(L"1@{aaa}"));
    const CResultData data = ResultData(L"1@{aaa}");
    const std::string expected = "ResultID=1@{AAA}\r\n"
                                 "DiagnosticCreationClassName=Tolva_DiagTest\r\n"
                                 "ExecutionID={AAA}\r\n"
                                 "HaltOnError=FALSE\r\n"
                                 "QuickMode=TRUE\r\n"
                                 "ReportSoftErrors=FALSE\r\n"
                                 "ReportStatusMessages=TRUE\r\n"
                                 "IsPackage=FALSE\r\n"
                                 "TestWarningLevel=0\r\n"
                                 "PercentOfTestCoverage=100\r\n"
                                 "TestStartTime=" +
                                 Time(data.TestStartTime) + "\r\nTimeStamp=" + Time(data.TimeStamp) +
                                 "\r\nTestCompletionTime=" + Time(data.TestCompletionTime) +
                                 "\r\n"
                                 "TestState=2\r\n"
                                 "OtherStateDescriptionResourceId=0\r\n"
                                 "EstimatedTimeOfPerforming=0\r\n"
                                 "PercentComplete=100\r\n"
                                 "Array of String IDs:\r\n"
                                 "Array of Test Messages:\r\n"
                                 "Diagnostic Name String ID = 3501\r\n" +
                                 kSeparator;
    EXPECT_EQ(expected, LogText());
}

TEST_F(ResultLogTest, ARecordOfAStoppedRunLineByLine)
{
    agent->BlockRuns();
    agent->SetStatistics({{100, 101, 102, 103, 104, 105, 106, 0xFFFFFFFF}, 65535, 250, 251});
    environment.Script({CFakeRunEnvironment::Wake::TimeOut, CFakeRunEnvironment::Wake::Event});
    ASSERT_EQ(S_OK, Start());
    ASSERT_EQ(S_OK, Run(L"9@{aaa}"));
    const CResultData data = ResultData(L"9@{aaa}");
    const std::string expected = "ResultID=9@{AAA}\r\n"
                                 "DiagnosticCreationClassName=Tolva_DiagTest\r\n"
                                 "ExecutionID={AAA}\r\n"
                                 "HaltOnError=FALSE\r\n"
                                 "QuickMode=TRUE\r\n"
                                 "ReportSoftErrors=FALSE\r\n"
                                 "ReportStatusMessages=TRUE\r\n"
                                 "IsPackage=FALSE\r\n"
                                 "TestWarningLevel=0\r\n"
                                 "PercentOfTestCoverage=100\r\n"
                                 "TestStartTime=" +
                                 Time(data.TestStartTime) + "\r\nTimeStamp=" + Time(data.TimeStamp) +
                                 "\r\nTestCompletionTime=" + Time(data.TestCompletionTime) +
                                 "\r\n"
                                 "TestState=5\r\n"
                                 "OtherStateDescriptionResourceId=0\r\n"
                                 "EstimatedTimeOfPerforming=0\r\n"
                                 "PercentComplete=2\r\n"
                                 "Array of String IDs:\r\n"
                                 "String IDs no 0 = 12\r\n"
                                 "String IDs no 1 = 13\r\n"
                                 "String IDs no 2 = 10\r\n"
                                 "String IDs no 3 = 3\r\n"
                                 "String IDs no 4 = 4\r\n"
                                 "String IDs no 5 = 5\r\n"
                                 "String IDs no 6 = 7\r\n"
                                 "String IDs no 7 = 9\r\n"
                                 "String IDs no 8 = 6\r\n"
                                 "String IDs no 9 = 8\r\n"
                                 "String IDs no 10 = 11\r\n"
                                 "Array of Test Messages:\r\n"
                                 "Test Message no 0 = fa\r\n"
                                 "Test Message no 1 = fb\r\n"
                                 "Test Message no 2 = ffffffff\r\n"
                                 "Test Message no 3 = 64\r\n"
                                 "Test Message no 4 = 65\r\n"
                                 "Test Message no 5 = 66\r\n"
                                 "Test Message no 6 = 68\r\n"
                                 "Test Message no 7 = 6a\r\n"
                                 "Test Message no 8 = 67\r\n"
                                 "Test Message no 9 = 69\r\n"
                                 "Test Message no 10 = ffff\r\n"
                                 "Diagnostic Name String ID = 3509\r\n" +
                                 kSeparator;
    EXPECT_EQ(expected, LogText());
}

TEST_F(ResultLogTest, NothingIsLoggedUnlessEnabled)
{
    registry.SetNumber(kDiagKey, "Enable", 0);
    ASSERT_EQ(S_OK, Start());
    ASSERT_EQ(S_OK, Run(L"1@{aaa}"));
    EXPECT_FALSE(std::filesystem::exists(folder.Path() / "ZebDiag.log"));
}

TEST_F(ResultLogTest, AValueOfAnotherTypeEnablesNothing)
{
    registry.SetString(kDiagKey, "Enable", "1");
    ASSERT_EQ(S_OK, Start());
    ASSERT_EQ(S_OK, Run(L"1@{aaa}"));
    EXPECT_FALSE(std::filesystem::exists(folder.Path() / "ZebDiag.log"));
}

TEST_F(ResultLogTest, WithoutFileAppendTheLogIsAppendedTo)
{
    WriteLog(7);
    ASSERT_EQ(S_OK, Start());
    ASSERT_EQ(S_OK, Run(L"1@{aaa}"));
    ASSERT_EQ(S_OK, Run(L"1@{aaa}"));
    const std::string text = LogText();
    EXPECT_EQ(0u, text.find("xxxxxxxResultID=1@{AAA}\r\n"));
    EXPECT_NE(std::string::npos, text.find(kSeparator + "ResultID="));
}

TEST_F(ResultLogTest, WithFileAppendZeroEveryRecordReplacesTheFile)
{
    registry.SetNumber(kDiagKey, "FileAppend", 0);
    WriteLog(100000); // more than the limit: the check sees only the new record
    ASSERT_EQ(S_OK, Start());
    ASSERT_EQ(S_OK, Run(L"1@{aaa}"));
    ASSERT_EQ(S_OK, Run(L"1@{aaa}"));
    const std::string text = LogText();
    EXPECT_EQ(0u, text.find("ResultID=1@{AAA}\r\n"));
    EXPECT_EQ(text.size() - kSeparator.size(), text.find(kSeparator));
}

TEST_F(ResultLogTest, ARecordThatJustFitsIsAppendedAndTheNextOneRefused)
{
    const size_t record = RecordSize();
    WriteLog(65536 - record);
    ASSERT_EQ(S_OK, Start());
    ASSERT_EQ(S_OK, Run(L"1@{aaa}"));
    EXPECT_FALSE(trace.Has("Result cannot be logged. Log file size exceeded!!"));
    const std::string text = LogText();
    EXPECT_GT(text.size(), 65536u); // line ends and the separator come on top
    ASSERT_EQ(S_OK, Run(L"1@{aaa}"));
    EXPECT_TRUE(trace.Has("Result cannot be logged. Log file size exceeded!!"));
    EXPECT_TRUE(trace.Has("CDiagMgr::RunTest:LogResults failed."));
    EXPECT_EQ(text, LogText());
    EXPECT_EQ(2u, ResultData(L"1@{aaa}").TestState);
}

TEST_F(ResultLogTest, OneByteTooManyIsRefused)
{
    const size_t record = RecordSize();
    WriteLog(65536 - record + 1);
    ASSERT_EQ(S_OK, Start());
    ASSERT_EQ(S_OK, Run(L"1@{aaa}"));
    EXPECT_TRUE(trace.Has("Result cannot be logged. Log file size exceeded!!"));
    EXPECT_EQ(65536 - record + 1, LogText().size());
    EXPECT_EQ(E_OUTOFMEMORY, manager->LogResults(CBstr(L"1@{aaa}").Get()));
}

TEST_F(ResultLogTest, LimitsAreTheOnesOfTheRegistry)
{
    const size_t record = RecordSize();
    registry.SetNumber(kDiagKey, "MaxFileSize", static_cast<DWORD>(record));
    ASSERT_EQ(S_OK, Start());
    ASSERT_EQ(S_OK, Run(L"1@{aaa}"));
    EXPECT_FALSE(LogText().empty());
    std::filesystem::remove(folder.Path() / "ZebDiag.log");
    registry.SetNumber(kDiagKey, "MaxFileSize", static_cast<DWORD>(record - 1));
    ASSERT_EQ(S_OK, Start());
    ASSERT_EQ(S_OK, Run(L"1@{aaa}"));
    EXPECT_TRUE(LogText().empty());
    manager.reset(); // which holds the full log open
    std::filesystem::remove(folder.Path() / "ZebDiag.log");
    registry.SetNumber(kDiagKey, "MaxFileSize", 0xFFFFFFFF);
    ASSERT_EQ(S_OK, Start());
    ASSERT_EQ(S_OK, Run(L"1@{aaa}"));
    EXPECT_FALSE(LogText().empty());
}

TEST_F(ResultLogTest, AFullLogStaysOpenWithOneHandleAtMost)
{
    WriteLog(65536);
    ASSERT_EQ(S_OK, Start());
    const auto runAndCount = [&]
    {
        EXPECT_EQ(S_OK, Run(L"1@{aaa}"));
        DWORD handles = 0;
        GetProcessHandleCount(GetCurrentProcess(), &handles);
        return handles;
    };
    const DWORD first = runAndCount();
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(first, runAndCount());
    const std::string path = folder.File("ZebDiag.log");
    EXPECT_FALSE(DeleteFileA(path.c_str()));
    manager.reset();
    EXPECT_TRUE(DeleteFileA(path.c_str()));
}

TEST_F(ResultLogTest, ALogThatCannotBeOpenedIsReportedAndTheRunPasses)
{
    std::filesystem::create_directory(folder.Path() / "ZebDiag.log");
    ASSERT_EQ(S_OK, Start());
    EXPECT_EQ(S_OK, Run(L"1@{aaa}"));
    EXPECT_TRUE(trace.Has("CDiagMgr::LogResults: the log cannot be opened, hr = <80070005>"));
    EXPECT_TRUE(trace.Has("CDiagMgr::RunTest:LogResults failed."));
    EXPECT_EQ(E_ACCESSDENIED, manager->LogResults(CBstr(L"1@{aaa}").Get()));
    EXPECT_EQ(2u, ResultData(L"1@{aaa}").TestState);
}

TEST_F(ResultLogTest, TheNameComesFromTheRegistryAndIsJoinedAsItIs)
{
    registry.SetString(kDiagKey, "LogFileName", "other.txt");
    ASSERT_EQ(S_OK, Start());
    ASSERT_EQ(S_OK, Run(L"1@{aaa}"));
    EXPECT_TRUE(std::filesystem::exists(folder.Path() / "other.txt"));
}

TEST_F(ResultLogTest, AnUnknownResultIsTraced)
{
    ASSERT_EQ(S_OK, Start());
    EXPECT_EQ(engine::NotFound, manager->LogResults(CBstr(L"1@{aaa}").Get()));
    EXPECT_TRUE(trace.Has("CDiagMgr::LogResults:GetResultData failed <80042005>"));
}

TEST_F(ResultLogTest, TextsThatTheCodePageLacksDoNotCutTheRecord)
{
    CResultLog log;
    log.Configure({(folder.Path() / "ZebDiag.log").wstring()});
    CResultData data;
    data.ResultID = CBstr(L"1@\u4e2d\u6587\xd83d\xde00.");
    data.ExecutionID = CBstr(std::wstring_view(std::wstring(6000, L'K')));
    EXPECT_EQ(S_OK, log.Append(data));
    const std::string text = LogText();
    EXPECT_EQ(0u, text.find("ResultID=1@????.\r\n"));
    EXPECT_NE(std::string::npos, text.find("ExecutionID=" + std::string(6000, 'K') + "\r\n"));
    EXPECT_NE(std::string::npos, text.find("TestStartTime=\r\n")); // absent
    EXPECT_EQ(text.size() - kSeparator.size(), text.find(kSeparator));
}

// A result in which no two values are alike.
CResultData DistinctResult()
{
    CResultData data;
    data.ResultID = CBstr(L"4@{BBB}");
    data.DiagnosticCreationClassName = CBstr(L"Class");
    data.ExecutionID = CBstr(L"Execution");
    data.ReportStatusMessages = 0;
    data.QuickMode = 0;
    data.TestWarningLevel = 21;
    data.PercentOfTestCoverage = 22;
    data.TestStartTime = SYSTEMTIME{2021, 1, 0, 11, 1, 11, 21, 0};
    data.TimeStamp = SYSTEMTIME{2022, 2, 0, 12, 2, 12, 22, 0};
    data.TestCompletionTime = SYSTEMTIME{2023, 3, 0, 13, 3, 13, 23, 0};
    data.TestState = static_cast<TestState>(23);
    data.OtherStateDescriptionResourceId = 24;
    data.EstimatedTimeOfPerforming = 25;
    data.PercentComplete = 26;
    data.MessageCount = 2;
    data.StringIDs = {27, 28, 0};
    data.TestMessages = {29, 30, 0};
    data.DiagnosticNameStringID = 31;
    return data;
}

struct Flag
{
    const char* name;
    ULONG CResultData::*member;
};

class FlagTest : public ResultLogTest, public testing::WithParamInterface<Flag>
{
};

// With one flag set and every value another, no line can show its neighbour's.
TEST_P(FlagTest, EveryLineShowsItsOwnValue)
{
    const std::string flag = GetParam().name;
    CResultData data = DistinctResult();
    data.*GetParam().member = 2; // whatever is not zero
    const auto line = [&](const char* name)
    { return std::string(name) + (flag == name ? "=TRUE" : "=FALSE") + "\r\n"; };
    const std::string expected = "ResultID=4@{BBB}\r\n"
                                 "DiagnosticCreationClassName=Class\r\n"
                                 "ExecutionID=Execution\r\n" +
                                 line("HaltOnError") + line("QuickMode") + line("ReportSoftErrors") +
                                 line("ReportStatusMessages") + line("IsPackage") +
                                 "TestWarningLevel=21\r\n"
                                 "PercentOfTestCoverage=22\r\n"
                                 "TestStartTime=" +
                                 Time(data.TestStartTime) + "\r\nTimeStamp=" + Time(data.TimeStamp) +
                                 "\r\nTestCompletionTime=" + Time(data.TestCompletionTime) +
                                 "\r\n"
                                 "TestState=23\r\n"
                                 "OtherStateDescriptionResourceId=24\r\n"
                                 "EstimatedTimeOfPerforming=25\r\n"
                                 "PercentComplete=26\r\n"
                                 "Array of String IDs:\r\n"
                                 "String IDs no 0 = 27\r\n"
                                 "String IDs no 1 = 28\r\n"
                                 "Array of Test Messages:\r\n"
                                 "Test Message no 0 = 1d\r\n"
                                 "Test Message no 1 = 1e\r\n"
                                 "Diagnostic Name String ID = 31\r\n" +
                                 kSeparator;
    CResultLog log;
    log.Configure({(folder.Path() / "ZebDiag.log").wstring()});
    EXPECT_EQ(S_OK, log.Append(data));
    EXPECT_EQ(expected, LogText());
}

const Flag kFlags[] = {{"HaltOnError", &CResultData::HaltOnError},
                       {"QuickMode", &CResultData::QuickMode},
                       {"ReportSoftErrors", &CResultData::ReportSoftErrors},
                       {"ReportStatusMessages", &CResultData::ReportStatusMessages},
                       {"IsPackage", &CResultData::IsPackage}};
INSTANTIATE_TEST_SUITE_P(Flags, FlagTest, testing::ValuesIn(kFlags), NameOf<Flag>);
} // namespace
