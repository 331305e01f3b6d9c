#include "CDM/src/ZebDebug.h"
#include "CDM/src/ZebRegistry.h"
#include "tests/support/CaseName.h"
#include "tests/unit/support/LogFile.h"

#include <gtest/gtest.h>

namespace
{
using Lines = std::vector<std::string>;
using namespace std::string_literals;

constexpr char kImagePath[] = "C:\\Program Files\\Veltrane\\ZEB";

// The current directory, put back at the end.
class CWorkingFolder
{
  public:
    explicit CWorkingFolder(const std::filesystem::path& folder) : m_before(std::filesystem::current_path())
    {
        std::filesystem::current_path(folder);
    }
    ~CWorkingFolder() { std::filesystem::current_path(m_before); }

  private:
    std::filesystem::path m_before;
};

TEST(DebugConfigure, StartsTheFileWithTheHeading)
{
    const CLogFile file(2);
    EXPECT_EQ(0, file.Result);
    EXPECT_EQ(2, file.Log.Level());
    EXPECT_EQ("<center><h1>ZebDiag</h1></center>\r\n<xmp>\r\n", file.Text());
}

TEST(DebugConfigure, ASecondTimeIsRefusedWithAnErrorLine)
{
    CLogFile file(1);
    EXPECT_EQ(-1, file.Log.Configure("Other", file.Path().c_str(), 2, 0, false, 0));
    EXPECT_EQ(1, file.Log.Level());
    EXPECT_EQ((Lines{"CDM/src/ZebDebug (478): CZebDebug class already configured", ""}), file.Messages());
}

TEST(DebugConfigure, LevelZeroOpensNoFile)
{
    const CLogFile file(0);
    EXPECT_EQ(-1, file.Result);
    EXPECT_EQ(0, file.Log.Level());
    EXPECT_FALSE(std::filesystem::exists(file.Path()));
}

TEST(DebugConfigure, ANegativeLevelOpensTheFileAndWritesNothing)
{
    CLogFile file(-1);
    EXPECT_EQ(0, file.Result);
    EXPECT_EQ(-1, file.Log.Level());
    file.Log.Write("trace");
    file.Log.Error("a", 1, "error");
    EXPECT_EQ(Lines{}, file.Lines());
}

struct NameCase
{
    const char* name;
    std::string fileName;
    long result;
};

// Of the given length, and short once the system has resolved it.
std::string LongName(size_t length)
{
    std::string name = length % 2 ? "a" : "ab";
    while (name.size() < length)
        name = ".\\" + name;
    return name;
}

class FileNameTest : public testing::TestWithParam<NameCase>
{
};

TEST_P(FileNameTest, IsJudgedByItsLength)
{
    const CRegistryScope registry;
    const CTempFolder folder;
    const CWorkingFolder here(folder.Path());
    CZebDebug log;
    EXPECT_EQ(GetParam().result, log.Configure("t", GetParam().fileName.c_str(), 2, 0, false, 0));
    EXPECT_EQ(GetParam().result != 0, std::filesystem::is_empty(folder.Path()));
}

INSTANTIATE_TEST_SUITE_P(Lengths, FileNameTest,
                         testing::Values(NameCase{"Empty", "", -1}, NameCase{"Of245", LongName(245), 0},
                                         NameCase{"Of246", LongName(246), -1}),
                         NameOf<NameCase>);

TEST(DebugConfigure, AFileThatCannotBeOpenedLeavesTheLogClosed)
{
    const CRegistryScope registry;
    const CTempFolder folder;
    CZebDebug log;
    EXPECT_EQ(-1, log.Configure("t", folder.File("missing\\x.log").c_str(), 2, 0, false, 0));
    EXPECT_EQ(0, log.Level());
    log.Write("nowhere");
    log.Error("a", 1, "nowhere");
    // It may be tried again.
    EXPECT_EQ(0, log.Configure("t", folder.File("x.log").c_str(), 2, 0, false, 0));
}

TEST(DebugConfigure, AppendKeepsWhatIsThereAndElseTheFileIsEmptied)
{
    const CRegistryScope registry;
    const CTempFolder folder;
    const std::string path = folder.File("x.log");
    for (const bool append : {false, true, true})
    {
        CZebDebug log;
        ASSERT_EQ(0, log.Configure("t", path.c_str(), 2, 0, append, 0));
    }
    EXPECT_EQ(6u, FileLines(path).size());
    CZebDebug log;
    ASSERT_EQ(0, log.Configure("t", path.c_str(), 2, 0, false, 0));
    EXPECT_EQ(2u, FileLines(path).size());
}

TEST(DebugConfigure, SeveralReadersCanReadTheFileWhileItIsWritten)
{
    CLogFile file(2);
    std::ifstream first(file.Path());
    std::ifstream second(file.Path());
    file.Log.Write("seen at once");
    EXPECT_TRUE(first.is_open() && second.is_open());
    EXPECT_EQ(Lines{"seen at once"}, file.Messages());
}

TEST(DebugPath, IsTheGivenNameWhereTheKeyIsMissing)
{
    const CRegistryScope registry;
    EXPECT_EQ("ZebDiagDbg.log", ZebDebugPath("ZebDiagDbg.log"));
}

TEST(DebugPath, PerProcessAndImagePathTogether)
{
    CRegistryScope registry;
    registry.SetNumber(kZebKey, "LogFilePerProcess", 1);
    registry.SetString(kZebKey, "ImagePath", kImagePath);
    EXPECT_EQ(std::string(kImagePath) + "\\DebugLog\\" + std::to_string(GetCurrentProcessId()) +
                  "-ZebDiagDbg.log",
              ZebDebugPath("ZebDiagDbg.log"));
}

TEST(DebugPath, TheFileIsOpenedInTheFolderDebugLog)
{
    CRegistryScope registry;
    const CTempFolder folder;
    registry.SetNumber(kZebKey, "LogFilePerProcess", 1);
    registry.SetString(kZebKey, "ImagePath", folder.Path().string().c_str());
    std::filesystem::create_directory(folder.Path() / "DebugLog");
    CZebDebug log;
    EXPECT_EQ(0, log.Configure("t", "x.log", 2, 0, false, 0));
    EXPECT_TRUE(std::filesystem::exists(folder.Path() / "DebugLog" /
                                        (std::to_string(GetCurrentProcessId()) + "-x.log")));
}

struct PerProcessCase
{
    const char* name;
    DWORD type;
    std::string bytes;
    bool perProcess;
};

class PerProcessTest : public testing::TestWithParam<PerProcessCase>
{
};

TEST_P(PerProcessTest, OnlyANumberOtherThanZeroAsksForIt)
{
    CRegistryScope registry;
    registry.SetRaw(kZebKey, "LogFilePerProcess", GetParam().type, GetParam().bytes);
    const std::string expected =
        GetParam().perProcess ? std::to_string(GetCurrentProcessId()) + "-x.log" : std::string("x.log");
    EXPECT_EQ(expected, ZebDebugPath("x.log"));
}

INSTANTIATE_TEST_SUITE_P(Values, PerProcessTest,
                         testing::Values(PerProcessCase{"One", REG_DWORD, "\1\0\0\0"s, true},
                                         PerProcessCase{"Large", REG_DWORD, "\0\0\0\x80"s, true},
                                         PerProcessCase{"Zero", REG_DWORD, "\0\0\0\0"s, false},
                                         PerProcessCase{"Text", REG_SZ, "1\0"s, false},
                                         PerProcessCase{"Bytes", REG_BINARY, "\1\0\0\0"s, false},
                                         PerProcessCase{"ShortNumber", REG_DWORD, "\1\0"s, false},
                                         PerProcessCase{"WideNumber", REG_QWORD, "\1\0\0\0\0\0\0\0"s, false}),
                         NameOf<PerProcessCase>);

struct ImagePathCase
{
    const char* name;
    DWORD type;
    std::string bytes;
    const char* folder; // null: the bare file name
};

class ImagePathTest : public testing::TestWithParam<ImagePathCase>
{
};

TEST_P(ImagePathTest, CountsOnlyWhenProperlyTerminated)
{
    CRegistryScope registry;
    registry.SetRaw(kZebKey, "ImagePath", GetParam().type, GetParam().bytes);
    const char* folder = GetParam().folder;
    EXPECT_EQ(folder ? std::string(folder) + "\\DebugLog\\x.log" : std::string("x.log"),
              ZebDebugPath("x.log"));
}

const std::string k255(255, 'a');

INSTANTIATE_TEST_SUITE_P(
    Values, ImagePathTest,
    testing::Values(ImagePathCase{"Text", REG_SZ, "C:\\A\0"s, "C:\\A"},
                    ImagePathCase{"TextUnterminated", REG_SZ, "C:\\A"s, nullptr},
                    ImagePathCase{"TextEmpty", REG_SZ, "\0"s, ""},
                    ImagePathCase{"TextOfNoBytes", REG_SZ, ""s, nullptr},
                    ImagePathCase{"TextWithMoreBehindItsEnd", REG_SZ, "C:\\A\0B\0"s, "C:\\A"},
                    ImagePathCase{"ExpandableIsNotExpanded", REG_EXPAND_SZ, "%TEMP%\0"s, "%TEMP%"},
                    ImagePathCase{"ExpandableUnterminated", REG_EXPAND_SZ, "C:\\A"s, nullptr},
                    ImagePathCase{"List", REG_MULTI_SZ, "C:\\A\0C:\\B\0\0"s, "C:\\A"},
                    ImagePathCase{"ListWithOneNul", REG_MULTI_SZ, "C:\\A\0"s, nullptr},
                    ImagePathCase{"ListOfOneByte", REG_MULTI_SZ, "\0"s, nullptr},
                    ImagePathCase{"Bytes", REG_BINARY, "C:\\A\0"s, nullptr},
                    ImagePathCase{"Number", REG_DWORD, "C:\\\0"s, nullptr},
                    ImagePathCase{"Of256Bytes", REG_SZ, k255 + "\0"s, k255.c_str()},
                    ImagePathCase{"Of257Bytes", REG_SZ, k255 + "a\0"s, nullptr}),
    NameOf<ImagePathCase>);

TEST(DebugPath, AnUnterminatedImagePathOpensTheBareNameInTheCurrentDirectory)
{
    CRegistryScope registry;
    const CTempFolder folder;
    const CWorkingFolder here(folder.Path());
    registry.SetRaw(kZebKey, "ImagePath", REG_SZ, kImagePath);
    CZebDebug log;
    EXPECT_EQ(0, log.Configure("t", "bare.log", 2, 0, false, 0));
    EXPECT_TRUE(std::filesystem::exists(folder.Path() / "bare.log"));
}
} // namespace
