// Listing tests across processes: every client gets the same, from one provider process, in every mode.
#include "tests/system/provider/SharedMachine.h"

#include "Common/src/VormArray.h"
#include "Common/src/com/Text.h"
#include "agent/Vorl.h"
#include "agent/VorlIds.h"

#include <gtest/gtest.h>

namespace
{
const std::vector<std::string> kKeysOfTwoAdapters = {"1@ALPHA", "1@BETA", "2@ALPHA", "9@ALPHA", "F@BETA"};

TEST_F(Served, ListsTheSameTestsToEveryClient)
{
    EXPECT_EQ(kKeysOfTwoAdapters, TestKeys(ZebdiagJson(L"list")));
    EXPECT_EQ(kKeysOfTwoAdapters, RunScript(L"list.vbs"));
    std::vector<std::string> raw;
    for (const std::wstring& name : PropertyTexts(CWmiClient().Instances(L"Tolva_DiagTest"), L"Name"))
        raw.push_back(NarrowText(name));
    EXPECT_EQ(kKeysOfTwoAdapters, raw);
}

TEST_F(Served, InstancesHaveEveryServedProperty)
{
    ComPtr<IWbemClassObject> test;
    ASSERT_EQ(S_OK, CWmiClient().Get(TestPath(L"9@alpha"), test));
    EXPECT_EQ(L"9@ALPHA", PropertyText(test.Get(), L"Name"));
    EXPECT_EQ(L"Sender", PropertyText(test.Get(), L"Caption"));
    EXPECT_EQ(L"FALSE", PropertyText(test.Get(), L"IsInUse"));
    EXPECT_EQ(L"2,7", PropertyText(test.Get(), L"Characteristics"));
    EXPECT_EQ(L"", PropertyText(test.Get(), L"ResourcesUsed"));
    EXPECT_EQ(std::nullopt, PropertyText(test.Get(), L"OtherCharacteristicDescription"));
    EXPECT_EQ(L"Tolva_DiagTest", PropertyText(test.Get(), L"CreationClassName"));
    EXPECT_EQ(L"Win32_ComputerSystem", PropertyText(test.Get(), L"SystemCreationClassName"));
    wchar_t computer[MAX_COMPUTERNAME_LENGTH + 1] = {};
    DWORD size = MAX_COMPUTERNAME_LENGTH + 1;
    ASSERT_TRUE(GetComputerNameW(computer, &size));
    EXPECT_EQ(computer, PropertyText(test.Get(), L"SystemName"));
}

TEST_F(Served, TwoClientsAtOnceByOneProcess)
{
    CRunningProgram first(ZebdiagCommand(L"list --json"));
    CRunningProgram second(ZebdiagCommand(L"list --json"));
    const CRunResult one = first.Finish();
    const CRunResult two = second.Finish();
    EXPECT_EQ(0u, one.ExitCode) << one.Output;
    EXPECT_EQ(one.Output, two.Output);
    EXPECT_EQ(1u, ProcessesOf(L"Drevok.EXE").size());
}

// A provider that does not start: the client says why.
void ExpectNothingToList(const char* reason)
{
    const CRunResult list = Zebdiag(L"list");
    EXPECT_EQ(6u, list.ExitCode) << list.Output;
    EXPECT_NE(std::string::npos, list.Output.find("The diagnostics provider could not be started on "))
        << list.Output;
    EXPECT_NE(std::string::npos, list.Output.find(reason)) << list.Output;
}

TEST(List, WithoutAdaptersTheClientSaysSo)
{
    const CProviderMachine machine;
    SetAdapters(machine, "[]");
    ExpectNothingToList("The adapter agent finds no wired adapter");
}

TEST(List, WithoutTestsTheClientSaysSo)
{
    const CProviderMachine machine;
    SetAdapters(machine, R"([ { "Key": "ALPHA", "Tests": [] } ])");
    ExpectNothingToList("The adapter agent has no test for any adapter");
}

TEST(List, AgentThatFailsIsQuoted)
{
    const CProviderMachine machine;
    machine.SetScript(R"({ "Faults": { "Initialize": { "Result": "0x80040308" } }, "Adapters": [] })");
    ExpectNothingToList(
        "The adapter agent fails with status 0x80040308: The system did not give the list of its "
        "network interfaces.");
}

TEST(List, AgentThatThrowsIsNamed)
{
    const CProviderMachine machine;
    machine.SetScript(R"({ "Faults": { "EnumAdapters": { "Throw": true } }, "Adapters": [] })");
    ExpectNothingToList("The adapter agent ");
}

TEST(List, RegistryValueThatIsRefusedIsNamed)
{
    const CProviderMachine machine;
    SetAdapters(machine, kTwoAdapters);
    machine.SetNumber(L"ZebDiag", L"Enable", 2);
    ExpectNothingToList("The registry value Enable is 2.");
}

TEST(List, ProxyAgentIsReachedAcrossProcesses)
{
    const CProviderMachine machine(CProviderMachine::Agent::Proxy);
    SetAdapters(machine, kTwoAdapters);

    EXPECT_EQ(kKeysOfTwoAdapters, TestKeys(ZebdiagJson(L"list")));
    EXPECT_EQ(1u, ProcessesOf(L"VorlProxy.exe").size());
}

TEST(List, RealAgentListsTheWiredAdaptersOfThisMachine)
{
    ComPtr<IVormRoot> root;
    ComPtr<IVormDiag> agent;
    ASSERT_EQ(S_OK,
              CoCreateInstance(kClsidVorl, nullptr, CLSCTX_INPROC_SERVER, IID_IVormRoot, root.PutVoid()));
    ASSERT_EQ(S_OK, root->Initialize(1033));
    ASSERT_EQ(S_OK, root->QueryInterface(IID_IVormDiag, agent.PutVoid()));
    CVormArray<BSTR> adapters;
    ASSERT_EQ(S_OK, agent->EnumAdapters(adapters.PutCount(), adapters.PutItems()));

    const CProviderMachine machine(CProviderMachine::Agent::Real);
    if (adapters.Count() == 0)
    {
        ExpectNothingToList("The adapter agent finds no wired adapter");
        return;
    }
    const nlohmann::json list = ZebdiagJson(L"list");
    ASSERT_EQ(adapters.Count(), list.at("adapters").size());
    for (const auto& adapter : list.at("adapters"))
        EXPECT_EQ(10u, adapter.at("tests").size()) << adapter.dump();
}
} // namespace
