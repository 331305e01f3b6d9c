#include "CDM/src/server/Configuration.h"

#include "CDM/src/ZebRegistry.h"
#include "tests/support/RegistryScope.h"
#include "tests/support/TraceCapture.h"

#include <gtest/gtest.h>

namespace
{
TEST(ConfigurationTest, MissingKeyLeavesEveryDefault)
{
    const CRegistryScope registry;
    const CTraceConfiguration trace = ReadTraceConfiguration();
    EXPECT_EQ(trace.FileName, "ZebDiagDbg.log");
    EXPECT_EQ(trace.Level, 0u);
    const CHostPaths paths = ReadHostPaths();
    EXPECT_EQ(paths.InstallDir, "C:\\Program Files\\Veltrane\\ZEB\\");
    EXPECT_EQ(paths.ResultStorePath, L"C:\\Program Files\\Veltrane\\ZEB\\ZebDiag.bin");
}

TEST(ConfigurationTest, ReadsWhatTheRegistryHolds)
{
    CRegistryScope registry;
    registry.SetString(kZebDiagKey, "DebugFileName", "D:\\logs\\zeb.log");
    registry.SetNumber(kZebDiagKey, "DebugLevel", 2);
    registry.SetString(kZebDiagKey, "InstalledDir", "D:\\Apps\\");
    const CTraceConfiguration trace = ReadTraceConfiguration();
    EXPECT_EQ(trace.FileName, "D:\\logs\\zeb.log");
    EXPECT_EQ(trace.Level, 2u);
    const CHostPaths paths = ReadHostPaths();
    EXPECT_EQ(paths.InstallDir, "D:\\Apps\\");
    EXPECT_EQ(paths.ResultStorePath, L"D:\\Apps\\ZebDiag.bin");
}

TEST(ConfigurationTest, InstallDirectoryWithoutBackslashIsGluedToTheFileName)
{
    CRegistryScope registry;
    registry.SetString(kZebDiagKey, "InstalledDir", "D:\\Apps");
    EXPECT_EQ(ReadHostPaths().ResultStorePath, L"D:\\AppsZebDiag.bin");
}

TEST(ConfigurationTest, ValuesOfOtherTypesCountAsMissing)
{
    CRegistryScope registry;
    registry.SetNumber(kZebDiagKey, "DebugFileName", 7);
    registry.SetString(kZebDiagKey, "DebugLevel", "2");
    registry.SetBinary(kZebDiagKey, "InstalledDir", "D:\\Apps");
    const CTraceConfiguration trace = ReadTraceConfiguration();
    EXPECT_EQ(trace.FileName, "ZebDiagDbg.log");
    EXPECT_EQ(trace.Level, 0u);
    EXPECT_EQ(ReadHostPaths().InstallDir, "C:\\Program Files\\Veltrane\\ZEB\\");
}

TEST(ConfigurationTest, TextsAreReadUpToTheBuffersSize)
{
    CRegistryScope registry;
    const std::string longest(4095, 'x');
    registry.SetString(kZebDiagKey, "InstalledDir", longest.c_str());
    EXPECT_EQ(ReadHostPaths().InstallDir, longest);
    registry.SetString(kZebDiagKey, "InstalledDir", std::string(4096, 'x').c_str());
    EXPECT_EQ(ReadHostPaths().InstallDir, "C:\\Program Files\\Veltrane\\ZEB\\");
}

TEST(ConfigurationTest, TracesWhyTheDirectoryCouldNotBeRead)
{
    CRegistryScope registry;
    const CTraceCapture withoutKey;
    ReadHostPaths();
    EXPECT_EQ(withoutKey.Count("Open Key failed."), 1u);
    registry.CreateKey(kZebDiagKey);
    const CTraceCapture withoutValue;
    ReadHostPaths();
    EXPECT_EQ(withoutValue.Count("Query Value failed, <2>"), 1u);
}

TEST(ConfigurationTest, StorePathIsWidenedByTheAnsiCodePage)
{
    std::wstring path;
    EXPECT_EQ(FormResultStorePath("C:\\Meßdaten\\", path), S_OK);
    wchar_t expected[64] = {};
    MultiByteToWideChar(CP_ACP, 0, "C:\\Meßdaten\\ZebDiag.bin", -1, expected, 64);
    EXPECT_EQ(path, expected);
    EXPECT_EQ(FormResultStorePath("", path), S_OK);
    EXPECT_EQ(path, L"ZebDiag.bin");
}
} // namespace
