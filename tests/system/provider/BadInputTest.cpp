// Bad input from clients and from the machine: a clear status, and the same process goes on serving.
#include "tests/system/provider/ProviderFixture.h"

#include "Common/src/com/WmiStatus.h"
#include "tests/support/CaseName.h"

#include <gtest/gtest.h>

namespace
{
TEST(BadInput, ClientGetsAStatusAndTheProcessServesOn)
{
    const CProviderMachine machine;
    machine.SetScript(kScriptOfTwoAdapters);
    const CWmiClient client;
    ASSERT_EQ(5u, client.Instances(L"Tolva_DiagTest").size());
    const std::vector<DWORD> before = ProcessesOf(L"Drevok.EXE");

    const struct
    {
        const char* name;
        std::wstring path;
        HRESULT status;
    } cases[] = {
        {"unknown test", TestPath(L"7@ALPHA"), wmi::NotFound},
        {"unknown adapter", TestPath(L"1@GAMMA"), wmi::NotFound},
        {"no separator", TestPath(L"1"), wmi::NotFound},
        {"empty key", TestPath(L""), wmi::NotFound},
        {"quotes and backslashes", TestPath(L"1@\"A\\B\""), wmi::NotFound},
        {"key of 10,000 characters", TestPath(std::wstring(10000, L'x')), wmi::NotFound},
        {"unknown result",
         L"Tolva_DiagResult.DiagnosticName=\"1@ALPHA\",DiagnosticCreationClassName="
         L"\"Tolva_DiagTest\",ExecutionID=\"ALPHA\"",
         wmi::NotFound},
        {"unknown setting", L"Tolva_DiagSetting.SettingID=\"99@ALPHA\"", wmi::NotFound},
    };
    for (const auto& row : cases)
    {
        ComPtr<IWbemClassObject> object;
        EXPECT_EQ(row.status, client.Get(row.path, object)) << row.name;
        EXPECT_FALSE(object) << row.name;
    }
    ComPtr<IWbemClassObject> object;
    EXPECT_EQ(S_OK, client.Get(TestPath(L"1@ALPHA"), object));
    EXPECT_EQ(before, ProcessesOf(L"Drevok.EXE"));
}

struct RegistryCase
{
    const char* name;
    const wchar_t* value;
    bool asText; // text where a number belongs, else three bytes of binary data
};

class OddRegistry : public testing::TestWithParam<RegistryCase>
{
};

TEST_P(OddRegistry, CountsAsAbsent)
{
    const CProviderMachine machine;
    machine.SetScript(kScriptOfTwoAdapters);
    if (GetParam().asText)
        machine.SetText(L"ZebDiag", GetParam().value, L"2");
    else
        machine.SetBinary(L"ZebDiag", GetParam().value, "abc");
    EXPECT_EQ(5u, CWmiClient().Instances(L"Tolva_DiagTest").size());
}

INSTANTIATE_TEST_SUITE_P(Values, OddRegistry,
                         testing::Values(RegistryCase{"EnableAsText", L"Enable", true},
                                         RegistryCase{"FileAppendOfThreeBytes", L"FileAppend", false},
                                         RegistryCase{"LogFileNameAsBytes", L"LogFileName", false}),
                         NameOf<RegistryCase>);

TEST(BadInput, ResultFileThatIsNoStorageIsTracedAndLeftOutOfTheStart)
{
    const CProviderMachine machine;
    machine.SetScript(kScriptOfTwoAdapters);
    machine.WriteFileBytes(L"ZebDiag.bin", std::string(5000, 'x'));
    {
        const CWmiClient client;
        EXPECT_EQ(5u, client.Instances(L"Tolva_DiagTest").size());
        EXPECT_TRUE(client.Instances(L"Tolva_DiagResult").empty());
    }
    ASSERT_TRUE(machine.WaitUntilAllEnded());
    EXPECT_NE(
        std::string::npos,
        machine.ReadFileBytes(L"ZebDiagDbg.log").find("CDiagMgr::LoadResult:LoadResult failed, hr = <"));
}

TEST(BadInput, RefusedConfigurationFailsTheStartAndTellsTheClient)
{
    const CProviderMachine machine;
    machine.SetScript(kScriptOfTwoAdapters);
    machine.SetNumber(L"ZebDiag", L"Enable", 2);
    HRESULT status = S_OK;
    EXPECT_TRUE(CWmiClient().Instances(L"Tolva_DiagTest", &status).empty());
    EXPECT_TRUE(FAILED(status));
    ASSERT_TRUE(machine.WaitUntilAllEnded());
    const std::string log = machine.ReadFileBytes(L"ZebDiagDbg.log");
    EXPECT_NE(std::string::npos, log.find("CDiagMgr::Initialize:\"Enable\" should be a BOOLEAN!!"));
    EXPECT_NE(std::string::npos, log.find("Sending FAILED"));
}

struct AgentFaultCase
{
    const char* name;
    const char* script;
    size_t tests; // that are served all the same
};

class AgentFault : public testing::TestWithParam<AgentFaultCase>
{
};

TEST_P(AgentFault, LeavesTheRestServed)
{
    const CProviderMachine machine;
    machine.SetScript(GetParam().script);
    HRESULT status = S_OK;
    EXPECT_EQ(GetParam().tests, CWmiClient().Instances(L"Tolva_DiagTest", &status).size());
    EXPECT_EQ(GetParam().tests == 0, FAILED(status));
}

INSTANTIATE_TEST_SUITE_P(
    Calls, AgentFault,
    testing::Values(
        AgentFaultCase{"InitializeFails", R"({"Adapters": [{"Key": "A", "Tests": [{"TestID": 1}]}],
                       "Faults": {"Initialize": {"Result": "0x80040307"}}})",
                       0},
        AgentFaultCase{"InitializeThrows", R"({"Adapters": [{"Key": "A", "Tests": [{"TestID": 1}]}],
                       "Faults": {"Initialize": {"Throw": true}}})",
                       0},
        AgentFaultCase{"EnumAdaptersThrows", R"({"Adapters": [{"Key": "A", "Tests": [{"TestID": 1}]}],
                       "Faults": {"EnumAdapters": {"Throw": true}}})",
                       0},
        AgentFaultCase{"FirstAdapterCannotListItsTests",
                       R"({"Adapters": [
                         {"Key": "A", "Tests": [{"TestID": 1}],
                          "Faults": {"EnumDiagTests": {"Result": "0x80040308"}}},
                         {"Key": "B", "Tests": [{"TestID": 1}, {"TestID": 2}]}]})",
                       2},
        AgentFaultCase{"ReleaseThrows", R"({"Adapters": [{"Key": "A", "Tests": [{"TestID": 1}]}],
                       "Faults": {"Release": {"Throw": true}}})",
                       1}),
    NameOf<AgentFaultCase>);
} // namespace
