// Why a provider does not start, as every command tells it.
#include "CommandsFixture.h"
#include "Common/src/com/WmiStatus.h"
#include "tests/support/CaseName.h"
#include "tools/zebdiag/doctor/Places.h"

namespace zebdiag
{
namespace
{
constexpr wchar_t kTextFile[] = L"C:\\Program Files\\ZEB\\ENU_8023.dll";

struct ReasonCase
{
    const char* name;
    std::function<void(CFakeMachine&)> breakIt;
    const wchar_t* cause;
    const wchar_t* nextStep;
};

class StartFaultTest : public CommandsTest, public testing::WithParamInterface<ReasonCase>
{
};

TEST_P(StartFaultTest, IsToldApart)
{
    m_world->Failures[L"Enum Tolva_DiagTest"] = {wmi::ProviderLoadFailure, L""};
    GetParam().breakIt(m_machine);
    EXPECT_EQ(Run({L"list", L"--locale", L"en-US"}), ExitCode::NotReachable);
    EXPECT_EQ(Utf8Text(m_console.Errors),
              Utf8Text(L"zebdiag: The diagnostics provider could not be started on this computer. " +
                       std::wstring(GetParam().cause) + L"\n" + GetParam().nextStep +
                       L"\n(Status 0x80041013.)\n"));
}

std::wstring& TextOf(CFakeMachine& machine, const std::wstring& key, const wchar_t* name)
{
    return machine.Texts[CFakeMachine::Place(key, name)];
}

INSTANTIATE_TEST_SUITE_P(
    Reasons, StartFaultTest,
    testing::Values(
        ReasonCase{"ProviderNotRegistered",
                   [](CFakeMachine& m)
                   { TextOf(m, ClassKey(kProviderClass) + L"\\LocalServer32", L"").clear(); },
                   L"COM does not know the provider: its class has no LocalServer32.",
                   L"Register the provider as an administrator: \"Drevok.EXE /RegServer\"."},
        ReasonCase{
            "ProviderFileGone",
            [](CFakeMachine& m) { m.Files.erase(std::wstring(kFakeFolder) + L"Drevok.EXE"); },
            L"It is registered as C:\\Program Files\\ZEB\\Drevok.EXE, which is not there.",
            L"Put the files back, or go to the folder where they are and register the provider there as an "
            L"administrator: \"Drevok.EXE /RegServer\"."},
        ReasonCase{
            "LogSwitchOutOfRange",
            [](CFakeMachine& m) { m.Numbers[CFakeMachine::Place(kZebDiagKey, L"Enable")] = 2; },
            L"The registry value Enable is 2. It has to be 0 or 1; with another one the provider does not "
            L"start.",
            L"As an administrator set Enable of HKEY_LOCAL_MACHINE\\SOFTWARE\\Veltrane\\Halvern\\ZEB\\ZebDiag to "
            L"0 or 1, or delete it."},
        ReasonCase{
            "AppendSwitchOutOfRange",
            [](CFakeMachine& m) { m.Numbers[CFakeMachine::Place(kZebDiagKey, L"FileAppend")] = 4294967295u; },
            L"The registry value FileAppend is 4294967295. It has to be 0 or 1; with another one the provider "
            L"does not start.",
            L"As an administrator set FileAppend of HKEY_LOCAL_MACHINE\\SOFTWARE\\Veltrane\\Halvern\\ZEB\\ZebDiag "
            L"to 0 or 1, or delete it."},
        ReasonCase{"AgentNotRegistered",
                   [](CFakeMachine& m)
                   { TextOf(m, ClassKey(kAgentClass) + L"\\InprocServer32", L"").clear(); },
                   L"COM does not know the adapter agent.",
                   L"Register the agent as an administrator: \"regsvr32 Vorl.dll\"."},
        ReasonCase{"AgentFileGone",
                   [](CFakeMachine& m) { m.Files.erase(std::wstring(kFakeFolder) + L"Vorl.dll"); },
                   L"It is registered as C:\\Program Files\\ZEB\\Vorl.dll, which is not there.",
                   L"Register the agent as an administrator: \"regsvr32 Vorl.dll\"."},
        ReasonCase{"NoAdapter",
                   [](CFakeMachine& m) {
                       m.AgentSaid = {AgentSays::NoAdapter, S_OK};
                   },
                   L"The adapter agent finds no wired adapter, and without one the provider does not start.",
                   L"Connect one, or see in the device manager why an adapter that is there does not show."},
        ReasonCase{
            "NoTests",
            [](CFakeMachine& m) {
                m.AgentSaid = {AgentSays::NoTests, S_OK};
            },
            L"The adapter agent has no test for any adapter, and without one the provider does not start.",
            L"See in the device manager whether the wired adapters work, or ask the agent's maker."},
        ReasonCase{"AgentFailsWithItsText",
                   [](CFakeMachine& m)
                   {
                       m.AgentSaid = {AgentSays::Failed, static_cast<HRESULT>(0x80040308)};
                       m.Strings[CFakeMachine::Place(kTextFile, L"33544")] =
                           L"The system did not give the list.";
                   },
                   L"The adapter agent fails with status 0x80040308: The system did not give the list.",
                   L"Mend what the agent names, then try again."},
        ReasonCase{"AgentFailsWithoutText",
                   [](CFakeMachine& m) {
                       m.AgentSaid = {AgentSays::Failed, static_cast<HRESULT>(0x80040399)};
                   },
                   L"The adapter agent fails with status 0x80040399.",
                   L"Mend what the agent names, then try again."},
        ReasonCase{"AgentCrashes",
                   [](CFakeMachine& m) {
                       m.AgentSaid = {AgentSays::Crashed, S_OK};
                   },
                   L"The adapter agent crashes when it is asked for its adapters.",
                   L"Install its files anew; if it goes on crashing, tell the agent's maker."},
        ReasonCase{"AgentHangs",
                   [](CFakeMachine& m) {
                       m.AgentSaid = {AgentSays::Nothing, S_OK};
                   },
                   L"The adapter agent does not answer when it is asked for its adapters.",
                   L"Restart the computer; if that does not help, tell the agent's maker."}),
    NameOf<ReasonCase>);

using TraceHintTest = CommandsTest;

// Nothing is wrong as far as anyone can see: only the trace knows.
TEST_F(TraceHintTest, SaysWhereTheTraceIs)
{
    const auto nextStep = [this]
    {
        m_world->Failures[L"Enum Tolva_DiagTest"] = {wmi::ProviderLoadFailure, L""};
        m_console.Output.clear();
        EXPECT_EQ(Run({L"list", L"--json"}), ExitCode::NotReachable);
        return Document()["error"]["nextStep"].get<std::string>();
    };
    DWORD& level = m_machine.Numbers[CFakeMachine::Place(kZebDiagKey, L"DebugLevel")];
    std::wstring& file = TextOf(m_machine, kZebDiagKey, L"DebugFileName");
    level = 2;
    EXPECT_EQ(nextStep(), "The provider's trace is on; read C:\\ProgramData\\ZEB\\ZebDiagDbg.log.");
    file = L"trace.log";
    EXPECT_EQ(
        nextStep(),
        "The provider's trace is on, in the file trace.log of the folder in which the provider was started.");
    level = 0;
    EXPECT_EQ(nextStep(),
              "Switch the provider's trace on: as an administrator set DebugLevel (REG_DWORD) of "
              "HKEY_LOCAL_MACHINE\\SOFTWARE\\Veltrane\\Halvern\\ZEB\\ZebDiag to 2 and DebugFileName (REG_SZ) "
              "to the full path of a file, try again, and read that file.");
}

TEST_F(TraceHintTest, SaysSoOfAProviderThatFailsLater)
{
    m_world->Failures[L"Enum Tolva_DiagTest"] = {wmi::ProviderFailure, L""};
    m_machine.Numbers[CFakeMachine::Place(kZebDiagKey, L"DebugLevel")] = 2;
    TextOf(m_machine, kZebDiagKey, L"DebugFileName") = L"C:\\trace.log";
    EXPECT_EQ(Run({L"list"}), ExitCode::CouldNotRun);
    EXPECT_EQ(m_console.Errors,
              L"zebdiag: The diagnostics provider on this computer failed or ended during the request.\n"
              L"The provider's trace is on; read C:\\trace.log.\n"
              L"(Status 0x80041004.)\n");
}

TEST_F(TraceHintTest, OtherComputersAreNotJudgedByThisOne)
{
    m_world->Failures[L"Enum Tolva_DiagTest"] = {wmi::ProviderLoadFailure, L""};
    m_machine.AgentSaid = {AgentSays::NoAdapter, S_OK};
    EXPECT_EQ(Run({L"list", L"--computer", L"WS42"}), ExitCode::NotReachable);
    EXPECT_EQ(m_console.Errors, L"zebdiag: The diagnostics provider could not be started on WS42.\n"
                                L"Run \"zebdiag doctor\" on that computer: it names what is missing.\n"
                                L"(Status 0x80041013.)\n");
}

struct ExitCase
{
    const char* name;
    DWORD code;
    AgentSays says;
    HRESULT status;
};

class AgentAnswerTest : public testing::TestWithParam<ExitCase>
{
};

TEST_P(AgentAnswerTest, IsTheExitCodeOfTheProcessThatAsked)
{
    const CAgentAnswer answer = AgentAnswerOf(GetParam().code);
    EXPECT_EQ(answer.Says, GetParam().says);
    EXPECT_EQ(answer.Status, GetParam().status);
}

INSTANTIATE_TEST_SUITE_P(
    Codes, AgentAnswerTest,
    testing::Values(ExitCase{"HasTests", 0, AgentSays::HasTests, S_OK},
                    ExitCase{"NoAdapter", 1, AgentSays::NoAdapter, S_OK},
                    ExitCase{"NoTests", 2, AgentSays::NoTests, S_OK},
                    ExitCase{"Status", 0x80040308, AgentSays::Failed, static_cast<HRESULT>(0x80040308)},
                    ExitCase{"SystemStatus", 0x80070005, AgentSays::Failed, E_ACCESSDENIED},
                    ExitCase{"Aborted", 3, AgentSays::Crashed, S_OK},
                    ExitCase{"AccessViolation", 0xC0000005, AgentSays::Crashed, S_OK}),
    NameOf<ExitCase>);
} // namespace
} // namespace zebdiag
