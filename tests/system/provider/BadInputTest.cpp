// Bad input from clients and from the machine: a clear status, and the same process goes on serving.
#include "tests/system/provider/SharedMachine.h"

#include "Common/src/com/WmiStatus.h"
#include "tests/support/CaseName.h"

#include <optional>

namespace
{
TEST_F(Served, BadInputGetsAStatusAndTheProcessServesOn)
{
    const CWmiClient client;
    ASSERT_EQ(5u, client.Instances(L"Tolva_DiagTest").size());
    const CHandle process = OpenProcessOf(L"Drevok.EXE");
    ASSERT_TRUE(process);

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
    EXPECT_EQ(1u, ProcessesOf(L"Drevok.EXE").size());
    EXPECT_EQ(static_cast<DWORD>(WAIT_TIMEOUT), WaitForSingleObject(process.Get(), 0));
}

struct LoadCase
{
    const char* name;
    void (*prepare)(const CProviderMachine& machine);
    size_t tests;                    // that are served all the same
    std::vector<const char*> traced; // texts
};

template <const char* Script>
void SetScript(const CProviderMachine& machine)
{
    machine.SetScript(Script);
}

// One process, in which the management service lets the provider go after each request, so that every case
// has it loaded anew with values, files and an agent of the case's own.
class LoadedAnew : public CSharedMachine, public testing::WithParamInterface<LoadCase>
{
  public:
    static void SetUpTestSuite()
    {
        constexpr DWORD kAtOnce = 100;
        MakeMachine().SetIdleTime(kAtOnce);
        s_service.emplace();
    }
    // Whatever it was given to load, the process ends by itself.
    static void TearDownTestSuite()
    {
        if (s_service)
        {
            s_service.reset();
            EXPECT_TRUE(Machine().WaitUntilAllEnded());
        }
        CSharedMachine::TearDownTestSuite();
    }

  protected:
    void SetUp() override
    {
        ASSERT_TRUE(Machine().WaitForFile(kTrace,
                                          [](const std::string& text) {
                                              return CountOf(text, "{ --> CProviderImp::Initialize") ==
                                                     CountOf(text, "} <-- ~CVormAgentMgr()");
                                          }));
        Machine().ForgetValues();
        Machine().RemoveFile(L"ZebDiag.bin");
        SetAdapters(Machine(), kTwoAdapters);
    }

  private:
    static inline std::optional<CWmiClient> s_service; // keeps it
};

TEST_P(LoadedAnew, ServesWhatIsNotAffected)
{
    const std::string before = Machine().ReadFileBytes(kTrace);
    GetParam().prepare(Machine());
    const CWmiClient client;
    HRESULT status = S_OK;
    EXPECT_EQ(GetParam().tests, client.Instances(L"Tolva_DiagTest", &status).size());
    EXPECT_EQ(GetParam().tests == 0, FAILED(status));
    EXPECT_TRUE(client.Instances(L"Tolva_DiagResult", &status).empty());
    EXPECT_EQ(GetParam().tests == 0, FAILED(status));
    const std::string trace = NewTrace(Machine(), before);
    for (const char* text : GetParam().traced)
        EXPECT_NE(std::string::npos, trace.find(text)) << text << "\n" << trace;
}

constexpr char kInitializeFails[] = R"({"Adapters": [{"Key": "A", "Tests": [{"TestID": 1}]}],
    "Faults": {"Initialize": {"Result": "0x80040307"}}})";
constexpr char kInitializeThrows[] = R"({"Adapters": [{"Key": "A", "Tests": [{"TestID": 1}]}],
    "Faults": {"Initialize": {"Throw": true}}})";
constexpr char kEnumAdaptersThrows[] = R"({"Adapters": [{"Key": "A", "Tests": [{"TestID": 1}]}],
    "Faults": {"EnumAdapters": {"Throw": true}}})";
constexpr char kFirstAdapterCannotListItsTests[] = R"({"Adapters": [
    {"Key": "A", "Tests": [{"TestID": 1}], "Faults": {"EnumDiagTests": {"Result": "0x80040308"}}},
    {"Key": "B", "Tests": [{"TestID": 1}, {"TestID": 2}]}]})";
constexpr char kReleaseThrows[] = R"({"Adapters": [{"Key": "A", "Tests": [{"TestID": 1}]}],
    "Faults": {"Release": {"Throw": true}}})";

INSTANTIATE_TEST_SUITE_P(
    Machines, LoadedAnew,
    testing::Values(
        LoadCase{"EnableAsText",
                 [](const CProviderMachine& machine) { machine.SetText(L"ZebDiag", L"Enable", L"2"); },
                 5,
                 {}},
        LoadCase{"FileAppendOfThreeBytes",
                 [](const CProviderMachine& machine) { machine.SetBinary(L"ZebDiag", L"FileAppend", "abc"); },
                 5,
                 {}},
        LoadCase{"LogFileNameAsBytes",
                 [](const CProviderMachine& machine)
                 { machine.SetBinary(L"ZebDiag", L"LogFileName", "abc"); },
                 5,
                 {}},
        LoadCase{"EnableThatIsRefused",
                 [](const CProviderMachine& machine) { machine.SetNumber(L"ZebDiag", L"Enable", 2); },
                 0,
                 {"CDiagMgr::Initialize:\"Enable\" should be a BOOLEAN!!", "Sending FAILED"}},
        LoadCase{"ResultFileThatIsNoStorage",
                 [](const CProviderMachine& machine)
                 { machine.WriteFileBytes(L"ZebDiag.bin", std::string(5000, 'x')); },
                 5,
                 {"CDiagMgr::LoadResult:LoadResult failed, hr = <"}},
        LoadCase{"InitializeFails", SetScript<kInitializeFails>, 0, {}},
        LoadCase{"InitializeThrows", SetScript<kInitializeThrows>, 0, {}},
        LoadCase{"EnumAdaptersThrows", SetScript<kEnumAdaptersThrows>, 0, {}},
        LoadCase{"FirstAdapterCannotListItsTests", SetScript<kFirstAdapterCannotListItsTests>, 2, {}},
        LoadCase{"ReleaseThrows", SetScript<kReleaseThrows>, 1, {}}),
    NameOf<LoadCase>);
} // namespace
