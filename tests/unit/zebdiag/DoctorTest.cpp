// The doctor before a good installation, and before one that is broken at each point.
#include "CommandsFixture.h"
#include "Common/src/com/WmiStatus.h"
#include "tests/support/CaseName.h"
#include "tools/zebdiag/doctor/InterfaceKind.h"
#include "tools/zebdiag/doctor/Places.h"

#include <gmock/gmock.h>

namespace zebdiag
{
namespace
{
using testing::HasSubstr;
using Names = std::vector<std::string>;

const Names kAllPoints = {"service", "namespace", "base_classes",  "schema",  "registration",
                          "files",   "identity",  "configuration", "agent",   "data_folder",
                          "trace",   "answer",    "texts",         "adapters"};

class DoctorBase : public CommandsTest
{
  public:
    DoctorBase()
    {
        m_seams.Connect = [this](const CTarget& target, const std::wstring&)
        {
            if (FAILED(m_refusal))
                throw FailureOf(m_refusal, m_refusedStep, target);
            return CWmiSession(m_world, target);
        };
    }

    // Runs it, and files its findings.
    ExitCode Examine(std::vector<std::wstring> arguments = {})
    {
        arguments.insert(arguments.begin(), {L"doctor", L"--json"});
        const ExitCode code = Run(arguments);
        m_document = Document();
        return code;
    }
    Names PointsThatAre(const char* state) const
    {
        Names names;
        for (const auto& point : m_document.at("points"))
            if (point.at("state") == state)
                names.push_back(point.at("point"));
        return names;
    }
    const nlohmann::json& Point(const std::string& name) const
    {
        for (const auto& point : m_document.at("points"))
            if (point.at("point") == name)
                return point;
        throw std::out_of_range(name);
    }
    std::string FindingOf(const std::string& name) const { return Point(name).at("finding"); }

    std::wstring& Text(const std::wstring& key, const wchar_t* name)
    {
        return m_machine.Texts[CFakeMachine::Place(key, name)];
    }
    void RemoveText(const std::wstring& key, const wchar_t* name)
    {
        m_machine.Texts.erase(CFakeMachine::Place(key, name));
    }
    DWORD& Number(const std::wstring& key, const wchar_t* name)
    {
        return m_machine.Numbers[CFakeMachine::Place(key, name)];
    }
    void Refuse(HRESULT status, Step step = Step::Connect)
    {
        m_refusal = status;
        m_refusedStep = step;
    }
    // As the service answers where the provider does not start.
    void Fail(HRESULT status) { m_world->Failures[L"Enum Tolva_DiagTest"] = {status, L""}; }

    CFakeMachine& Machine() { return m_machine; }
    CFakeDiagnostics& World() { return *m_world.Get(); }

  protected:
    HRESULT m_refusal = S_OK;
    Step m_refusedStep = Step::Connect;
    nlohmann::json m_document;
};

using DoctorTest = DoctorBase;

TEST_F(DoctorTest, GoodInstallationHasNoFault)
{
    EXPECT_EQ(Examine(), ExitCode::Passed);
    EXPECT_EQ(PointsThatAre("good"), kAllPoints) << m_document.dump(1);
    EXPECT_EQ(m_document.at("version"), 2);
    EXPECT_EQ(m_document.at("command"), "doctor");
    EXPECT_EQ(m_document.at("computer"), "WS42");
    EXPECT_EQ(m_document.at("namespace"), "root\\cimv2");
    EXPECT_EQ(m_document.at("verdict"), "passed");
    EXPECT_EQ(m_document.at("exitCode"), 0);
    for (const auto& point : m_document.at("points"))
        EXPECT_TRUE(point.at("nextStep").is_null()) << point;
}

TEST_F(DoctorTest, GoodInstallationIsDescribed)
{
    Examine();
    EXPECT_EQ(FindingOf("registration"), "C:\\Program Files\\ZEB\\Drevok.EXE");
    EXPECT_EQ(FindingOf("agent"), "C:\\Program Files\\ZEB\\Vorl.dll, the adapter agent");
    EXPECT_EQ(
        FindingOf("identity"),
        "The provider runs as NT AUTHORITY\\LocalService. Launch permissions: as the computer's default; "
        "access permissions: as the computer's default.");
    EXPECT_EQ(FindingOf("data_folder"),
              "C:\\ProgramData\\ZEB\\, where NT AUTHORITY\\LocalService may write. Results "
              "are stored after each run.");
    EXPECT_EQ(FindingOf("answer"), "It named 4 tests within 0.0 s.");
    EXPECT_EQ(FindingOf("trace"),
              "Off. DebugLevel 1 or 2 would switch it on, to C:\\ProgramData\\ZEB\\ZebDiagDbg.log.");
    EXPECT_EQ(FindingOf("adapters"),
              "With tests: Ethernet, Ethernet 2. Left out: Wi-Fi (wireless), Loopback (loopback).");
}

TEST_F(DoctorTest, TableNamesEachPointAndItsNextStep)
{
    m_machine.Files.erase(L"C:\\ProgramData\\ZEB");
    EXPECT_EQ(Run({L"doctor"}), ExitCode::Failed);
    const std::string text = Utf8Text(m_console.Output);
    EXPECT_THAT(text, HasSubstr("  Management service  good   It answers.\n"));
    EXPECT_THAT(text,
                HasSubstr("  Data folder         WRONG  C:\\ProgramData\\ZEB\\ is not there, so no result is "
                          "kept.\n                             -> Make that folder, or another one."));
    EXPECT_THAT(text, HasSubstr("\n13 good, 1 wrong, 0 unknown.\n"));
    EXPECT_EQ(m_console.Errors, L"");
}

TEST_F(DoctorTest, OtherComputersTellOnlyWhatTheServiceTells)
{
    EXPECT_EQ(Examine({L"--computer", L"another-computer"}), ExitCode::Passed);
    EXPECT_EQ(PointsThatAre("unknown"),
              (Names{"registration", "files", "identity", "configuration", "agent", "data_folder", "trace"}));
    EXPECT_EQ(FindingOf("files"), "This can be seen only on another-computer itself.");
    EXPECT_THAT(FindingOf("adapters"),
                HasSubstr("Why others are left out can be seen only on another-computer"));
}

TEST_F(DoctorTest, TimeOfTheAnswerIsTold)
{
    m_seams.Control.Now = [this] { return m_now.fetch_add(2345); };
    Examine();
    EXPECT_EQ(FindingOf("answer"), "It named 4 tests within 2.3 s.");
}

TEST_F(DoctorTest, EnglishTextsStandInForALanguageThatIsNotThere)
{
    EXPECT_EQ(Examine({L"--locale", L"de-DE"}), ExitCode::Passed);
    EXPECT_EQ(FindingOf("texts"),
              "All tests have texts. There are none in German, so another language stands in.");
}

struct FaultCase
{
    const char* name;
    std::function<void(DoctorBase&)> breakIt;
    Names wrong;
    Names unknown;
    const char* finding; // part of that of the point that comes first
    const char* nextStep;
    ExitCode code;
};

class DoctorFaultTest : public DoctorBase, public testing::WithParamInterface<FaultCase>
{
};

TEST_P(DoctorFaultTest, IsNamed)
{
    const FaultCase& fault = GetParam();
    fault.breakIt(*this);
    EXPECT_EQ(Examine(), fault.code);
    EXPECT_EQ(PointsThatAre("wrong"), fault.wrong) << m_document.dump(1);
    EXPECT_EQ(PointsThatAre("unknown"), fault.unknown) << m_document.dump(1);
    const auto& point = Point(fault.wrong.empty() ? fault.unknown.front() : fault.wrong.front());
    EXPECT_THAT(point.at("finding").get<std::string>(), HasSubstr(fault.finding));
    EXPECT_THAT(point.at("nextStep").get<std::string>(), HasSubstr(fault.nextStep));
    for (const std::string& name : fault.unknown)
        EXPECT_TRUE(Point(name).at("nextStep").is_string()) << name;
}

const Names kUnknownWithoutSession = {"namespace", "base_classes", "schema", "answer", "texts", "adapters"};
const Names kNoAnswer = {"texts", "adapters"};
const Names kHiddenAnswer = {"answer", "texts", "adapters"};
constexpr char kSeeAdapters[] = "See under \"Wired adapters\".";
constexpr char kMendAbove[] = "Mend what is wrong above, then run this again.";

const FaultCase kFaults[] = {
    {"NoServiceClient",
     [](DoctorBase& d) { d.Refuse(REGDB_E_CLASSNOTREG, Step::Locate); },
     {"service"},
     kUnknownWithoutSession,
     "is not installed on this computer",
     "Install or repair it",
     ExitCode::NotReachable},
    {"ServiceIsDisabled",
     [](DoctorBase& d) { d.Refuse(HRESULT_FROM_WIN32(ERROR_SERVICE_DISABLED)); },
     {"service"},
     kUnknownWithoutSession,
     "could not be started. (Status 0x80070422.)",
     "Winmgmt",
     ExitCode::NotReachable},
    {"NoNamespace",
     [](DoctorBase& d) { d.Refuse(wmi::InvalidNamespace); },
     {"namespace"},
     {"base_classes", "schema", "answer", "texts", "adapters"},
     "There is no namespace root\\cimv2",
     "--namespace",
     ExitCode::NotReachable},
    {"NamespaceIsClosed",
     [](DoctorBase& d) { d.Refuse(wmi::AccessDenied); },
     {"namespace"},
     {"base_classes", "schema", "answer", "texts", "adapters"},
     "was denied",
     "as an administrator",
     ExitCode::NotReachable},
    {"NoBaseClass",
     [](DoctorBase& d) { d.World().Missing = {L"CIM_DiagnosticTest"}; },
     {"base_classes"},
     {"schema", "answer", "texts", "adapters"},
     "root\\cimv2 lacks CIM_DiagnosticTest.",
     "winmgmt",
     ExitCode::NotReachable},
    {"NoSchema",
     [](DoctorBase& d) {
         d.World().Missing = {L"Tolva_DiagTest", L"Tolva_DiagResult"};
     },
     {"schema"},
     kHiddenAnswer,
     "lacks Tolva_DiagTest, Tolva_DiagResult.",
     "mofcomp zebdiag.mof",
     ExitCode::NotReachable},
    {"SchemaCannotBeRead",
     [](DoctorBase& d) {
         d.World().Failures[L"Get Tolva_DiagTest"] = {wmi::AccessDenied, L""};
     },
     {"schema"},
     kHiddenAnswer,
     "was denied",
     "as an administrator",
     ExitCode::NotReachable},
    {"SchemaOfAnotherVersion",
     [](DoctorBase& d) { d.World().OtherVersion = L"0.9.0"; },
     {"schema"},
     {},
     "It has version 0.9.0, zebdiag has ",
     "mofcomp",
     ExitCode::Failed},
    {"SchemaWithoutVersion",
     [](DoctorBase& d) { d.World().OtherVersion = L""; },
     {"schema"},
     {},
     "It is older",
     "mofcomp",
     ExitCode::Failed},
    {"SchemaNamesNoProvider",
     [](DoctorBase& d) { d.World().Missing = {L"__Win32Provider"}; },
     {"registration"},
     {"files"},
     "names no provider DREVOK_PROVIDER",
     "mofcomp",
     ExitCode::Failed},
    {"SchemaNamesAnotherProvider",
     [](DoctorBase& d) { d.World().ProviderId = L"{0}"; },
     {"registration"},
     {"files"},
     "is the class {0} there",
     "mofcomp",
     ExitCode::Failed},
    {"ProviderIsNotRegistered",
     [](DoctorBase& d)
     {
         d.RemoveText(ClassKey(kProviderClass) + L"\\LocalServer32", L"");
         d.RemoveText(ClassKey(kProviderClass), L"AppID");
         d.Fail(wmi::ProviderLoadFailure);
     },
     {"registration"},
     {"files", "identity", "answer", "texts", "adapters"},
     "COM does not know the provider",
     "Drevok.EXE /RegServer",
     ExitCode::NotReachable},
    {"ProviderFileIsGone",
     [](DoctorBase& d)
     {
         d.Machine().Files.erase(std::wstring(kFakeFolder) + L"Drevok.EXE");
         d.Fail(wmi::ProviderLoadFailure);
     },
     {"registration"},
     {"files", "answer", "texts", "adapters"},
     "It is registered as C:\\Program Files\\ZEB\\Drevok.EXE, which is not there.",
     "/RegServer",
     ExitCode::NotReachable},
    {"ProviderFileMayNotBeLookedAt",
     [](DoctorBase& d) { d.Machine().Hidden = {std::wstring(kFakeFolder) + L"Drevok.EXE"}; },
     {},
     {"registration", "files"},
     "which you may not look at",
     "administrator",
     ExitCode::Passed},
    {"TextLibraryIsGone",
     [](DoctorBase& d) { d.Machine().Files.erase(std::wstring(kFakeFolder) + L"ENU_8023.dll"); },
     {"files"},
     {},
     "Missing: ENU_8023.dll.",
     "Copy all files",
     ExitCode::Failed},
    {"LanguageIsThereInPart",
     [](DoctorBase& d) { d.Machine().VersionIn(L"DEU_NWR.dll") = kOwnVersion; },
     {"files"},
     {},
     "Missing: DEU_8023.dll, DEUDiag.dll.",
     "Copy all files",
     ExitCode::Failed},
    {"LanguageOfAnotherVersion",
     [](DoctorBase& d)
     {
         for (const wchar_t* file : {L"DEU_NWR.dll", L"DEU_8023.dll", L"DEUDiag.dll"})
             d.Machine().VersionIn(file) = L"0.9.0";
     },
     {"files"},
     {},
     "but there are other versions: DEU_NWR.dll 0.9.0, DEU_8023.dll 0.9.0, DEUDiag.dll 0.9.0.",
     "of one version",
     ExitCode::Failed},
    {"FileOfAnotherVersion",
     [](DoctorBase& d) { d.Machine().VersionIn(L"Vorl.dll") = L"0.9.0"; },
     {"files"},
     {},
     "but there are other versions: Vorl.dll 0.9.0.",
     "of one version",
     ExitCode::Failed},
    {"FileWithoutVersion",
     [](DoctorBase& d) { d.Machine().VersionIn(L"Drevok.EXE") = L""; },
     {},
     {"files"},
     "No version is told by Drevok.EXE.",
     "of one version",
     ExitCode::Passed},
    {"NoAppId",
     [](DoctorBase& d) { d.RemoveText(ClassKey(kProviderClass), L"AppID"); },
     {"identity"},
     {},
     "has no AppID",
     "/RegServer",
     ExitCode::Failed},
    {"AnotherAppId",
     [](DoctorBase& d) { d.Text(ClassKey(kProviderClass), L"AppID") = L"{1}"; },
     {"identity"},
     {},
     "another AppID: {1}",
     "/RegServer",
     ExitCode::Failed},
    {"NoRunAs",
     [](DoctorBase& d) { d.RemoveText(AppIdKey(kAppId), L"RunAs"); },
     {},
     {"identity"},
     "No account is set",
     "RunAs",
     ExitCode::Passed},
    {"RunAsOfNobody",
     [](DoctorBase& d) { d.Text(AppIdKey(kAppId), L"RunAs") = L".\\gone"; },
     {"identity"},
     {},
     "there is no such account",
     "RunAs",
     ExitCode::Failed},
    {"DamagedPermissions",
     [](DoctorBase& d) {
         d.Machine().Binaries[CFakeMachine::Place(AppIdKey(kAppId), L"LaunchPermission")] = {1, 2, 3};
     },
     {"identity"},
     {},
     "are damaged",
     "dcomcnfg",
     ExitCode::Failed},
    {"AgentIsNotRegistered",
     [](DoctorBase& d)
     {
         d.RemoveText(ClassKey(kAgentClass) + L"\\InprocServer32", L"");
         d.Fail(static_cast<HRESULT>(WBEM_E_INITIALIZATION_FAILURE));
     },
     {"agent"},
     kHiddenAnswer,
     "COM does not know the adapter agent.",
     "regsvr32 Vorl.dll",
     ExitCode::NotReachable},
    {"AgentFileIsGone",
     [](DoctorBase& d) { d.Machine().Files.erase(std::wstring(kFakeFolder) + L"Vorl.dll"); },
     {"agent"},
     {},
     "Vorl.dll, which is not there",
     "regsvr32 Vorl.dll",
     ExitCode::Failed},
    {"TestAgentIsAskedForAndNotThere",
     [](DoctorBase& d) { d.Number(kProvidersKey, L"TestVorl") = 1; },
     {"agent"},
     {},
     "the test agent",
     "Delete the value TestVorl",
     ExitCode::Failed},
    {"AgentProcessIsAskedForAndNotThere",
     [](DoctorBase& d) { d.Number(kProvidersKey, L"TestVorl") = 2; },
     {"agent"},
     {},
     "an agent in a process of its own",
     "Delete the value TestVorl",
     ExitCode::Failed},
    {"RegistryValueIsRefused",
     [](DoctorBase& d)
     {
         d.Number(kZebDiagKey, L"Enable") = 2;
         d.Fail(wmi::ProviderLoadFailure);
     },
     {"configuration"},
     kHiddenAnswer,
     "The registry value Enable is 2.",
     "to 0 or 1",
     ExitCode::NotReachable},
    {"AgentFails",
     [](DoctorBase& d)
     {
         d.Machine().AgentSaid = {AgentSays::Failed, static_cast<HRESULT>(0x80040399)};
         d.Fail(wmi::ProviderLoadFailure);
     },
     {"answer"},
     {"texts", "adapters"},
     "The adapter agent fails with status 0x80040399.",
     "Mend what the agent names",
     ExitCode::NotReachable},
    {"NoDataFolder",
     [](DoctorBase& d) { d.Machine().Files.erase(L"C:\\ProgramData\\ZEB"); },
     {"data_folder"},
     {},
     "C:\\ProgramData\\ZEB\\ is not there",
     "Make that folder",
     ExitCode::Failed},
    {"DataFolderIsNotConfigured",
     [](DoctorBase& d) { d.RemoveText(kZebDiagKey, L"InstalledDir"); },
     {"data_folder"},
     {},
     "C:\\Program Files\\Veltrane\\ZEB\\ is not there",
     "InstalledDir",
     ExitCode::Failed},
    {"DataFolderWithoutBackslash",
     [](DoctorBase& d) { d.Text(kZebDiagKey, L"InstalledDir") = L"C:\\ProgramData\\ZEB"; },
     {"data_folder"},
     {},
     "results go to \"C:\\ProgramData\\ZEBZebDiag.bin\"",
     "InstalledDir",
     ExitCode::Failed},
    {"DataFolderIsClosedToTheProvider",
     [](DoctorBase& d) { d.Machine().Writers[L"NT AUTHORITY\\LocalService"] = Right::No; },
     {"data_folder"},
     {},
     "where NT AUTHORITY\\LocalService may not write",
     "Let NT AUTHORITY\\LocalService change files",
     ExitCode::Failed},
    {"DataFolderDoesNotTell",
     [](DoctorBase& d) { d.Machine().Writers[L"NT AUTHORITY\\LocalService"] = Right::NotTold; },
     {},
     {"data_folder"},
     "is not told",
     "permissions",
     ExitCode::Passed},
    {"TraceIntoAMissingFolder",
     [](DoctorBase& d)
     {
         d.Number(kZebDiagKey, L"DebugLevel") = 2;
         d.Text(kZebDiagKey, L"DebugFileName") = L"D:\\gone\\trace.log";
     },
     {"trace"},
     {},
     "On, level 2, to D:\\gone\\trace.log. That folder is not there",
     "DebugFileName",
     ExitCode::Failed},
    {"TraceWithoutAFolder",
     [](DoctorBase& d)
     {
         d.Number(kZebDiagKey, L"DebugLevel") = 1;
         d.RemoveText(kZebDiagKey, L"DebugFileName");
     },
     {},
     {"trace"},
     "On, level 1, to ZebDiagDbg.log. That is in the folder in which",
     "a full path",
     ExitCode::Passed},
    {"ProviderFails",
     [](DoctorBase& d) { d.Fail(wmi::ProviderFailure); },
     {"answer"},
     kNoAnswer,
     "failed or ended during the request",
     "DebugLevel",
     ExitCode::NotReachable},
    {"ProviderNeverAnswers",
     [](DoctorBase& d) { d.World().NeverAnswers = true; },
     {"answer"},
     kNoAnswer,
     "has not answered in time. (Status 0x00040004.)",
     "DebugLevel",
     ExitCode::NotReachable},
    {"TextsAreNotFound",
     [](DoctorBase& d)
     { d.World().Tests[L"2@{BBBB}"].Caption = L"No string found. Id 3501 DLL _8023 Locale 407"; },
     {"texts"},
     {},
     "Test 2@{BBBB} lacks a text: No string found. Id 3501",
     "ENU_8023.dll",
     ExitCode::Failed},
    {"NoWiredAdapter",
     [](DoctorBase& d)
     {
         for (CInterface& one : d.Machine().All)
             one.LeftOut = L"wireless";
         d.Fail(static_cast<HRESULT>(WBEM_E_INITIALIZATION_FAILURE));
     },
     {"adapters"},
     {"answer", "texts"},
     "This computer has no wired adapter",
     "Connect one",
     ExitCode::NotReachable},
    {"NoAdapterHasTests",
     [](DoctorBase& d) { d.World().Tests.clear(); },
     {"adapters"},
     {"texts"},
     "The provider has tests for no adapter. Left out: Ethernet (the adapter agent does not offer it)",
     "device manager",
     ExitCode::Failed},
};

INSTANTIATE_TEST_SUITE_P(Points, DoctorFaultTest, testing::ValuesIn(kFaults), NameOf<FaultCase>);

TEST(DoctorFaults, EveryPointIsBrokenOnce)
{
    for (const std::string& point : kAllPoints)
        EXPECT_TRUE(std::ranges::any_of(kFaults, [&](const FaultCase& fault)
                                        { return !fault.wrong.empty() && fault.wrong.front() == point; }))
            << point;
}

TEST_F(DoctorTest, FaultsThatDoNotKeepTheProviderFromAnsweringHideNothing)
{
    m_machine.Files.erase(std::wstring(kFakeFolder) + L"Drevok.EXE");
    m_machine.Files.erase(L"C:\\ProgramData\\ZEB");
    EXPECT_EQ(Examine(), ExitCode::Failed);
    EXPECT_EQ(PointsThatAre("wrong"), (Names{"registration", "data_folder"}));
    EXPECT_EQ(PointsThatAre("unknown"), Names{"files"});
}

TEST_F(DoctorTest, FaultOfALaterPointIsNotLookedForAbove)
{
    for (CInterface& one : m_machine.All)
        one.LeftOut = L"wireless";
    Fail(static_cast<HRESULT>(WBEM_E_INITIALIZATION_FAILURE));
    Examine();
    EXPECT_EQ(Point("answer").at("nextStep"), kSeeAdapters);
    EXPECT_EQ(Point("texts").at("nextStep"), kSeeAdapters);

    RemoveText(ClassKey(kAgentClass) + L"\\InprocServer32", L"");
    m_console.Output.clear();
    Examine();
    EXPECT_EQ(PointsThatAre("wrong"), (Names{"agent", "adapters"}));
    EXPECT_EQ(Point("answer").at("nextStep"), kMendAbove);
    EXPECT_EQ(Point("texts").at("nextStep"), kMendAbove);
}

TEST_F(DoctorTest, WithoutTestsTheAdaptersTellWhyThereAreNoTexts)
{
    m_world->Tests.clear();
    Examine();
    EXPECT_EQ(PointsThatAre("wrong"), Names{"adapters"});
    EXPECT_EQ(Point("texts").at("nextStep"), kSeeAdapters);
}

TEST_F(DoctorTest, QuotesAndArgumentsOfTheRegistrationAreNotPartOfThePath)
{
    for (const wchar_t* command :
         {L"\"C:\\Program Files\\ZEB\\Drevok.EXE\"", L"C:\\Program Files\\ZEB\\Drevok.EXE -x",
          L"\"C:\\Program Files\\ZEB\\Drevok.EXE\" -x"})
    {
        Text(ClassKey(kProviderClass) + L"\\LocalServer32", L"") = command;
        m_console.Output.clear();
        EXPECT_EQ(Examine(), ExitCode::Passed) << Utf8Text(command);
        EXPECT_EQ(FindingOf("registration"), "C:\\Program Files\\ZEB\\Drevok.EXE");
    }
}

TEST_F(DoctorTest, DamagedPermissionsDoNotHideWhoseFolderItIs)
{
    m_machine.Binaries[CFakeMachine::Place(AppIdKey(kAppId), L"AccessPermission")] = {1, 2, 3};
    m_machine.Writers[L""] = Right::No;
    EXPECT_EQ(Examine(), ExitCode::Failed);
    EXPECT_EQ(PointsThatAre("wrong"), Names{"identity"});
    EXPECT_THAT(FindingOf("data_folder"), HasSubstr("where NT AUTHORITY\\LocalService may write."));
}

TEST_F(DoctorTest, TextsAreLookedForWhereTheProviderLooks)
{
    m_machine.Files.erase(std::wstring(kFakeFolder) + L"ENU_8023.dll");
    m_machine.Files[L"D:\\texts\\ENU_8023.dll"] = kOwnVersion;
    Text(kZebKey, L"ResourcePath") = L"D:\\texts\\";
    EXPECT_EQ(Examine(), ExitCode::Passed) << m_document.dump(1);
}

TEST_F(DoctorTest, AgentOfAnotherMakerHasVersionsOfItsOwn)
{
    Text(ClassKey(kAgentClass) + L"\\InprocServer32", L"") = L"D:\\maker\\agent.dll";
    m_machine.Files[L"D:\\maker\\agent.dll"] = L"7.1.0";
    EXPECT_EQ(Examine(), ExitCode::Passed) << m_document.dump(1);
    EXPECT_EQ(FindingOf("agent"), "D:\\maker\\agent.dll, the adapter agent");
}

TEST(StoreRefusesCallerTest, IsToldByTheFolderOfThisComputersStore)
{
    const CWmiSession here(MakeCom<CFakeDiagnostics>(), CTarget());
    CFakeMachine machine;
    machine.Files[std::wstring(kFakeData) + L"ZebDiag.bin"] = L"";
    EXPECT_FALSE(StoreRefusesCaller(here, machine)) << "who may write";
    machine.Writers[L""] = Right::NotTold;
    EXPECT_FALSE(StoreRefusesCaller(here, machine)) << "not known";
    machine.Writers[L""] = Right::No;
    EXPECT_TRUE(StoreRefusesCaller(here, machine));

    CTarget elsewhere;
    elsewhere.Computer = L"another-computer";
    EXPECT_FALSE(StoreRefusesCaller(CWmiSession(MakeCom<CFakeDiagnostics>(), elsewhere), machine));
    machine.Files.erase(std::wstring(kFakeData) + L"ZebDiag.bin");
    EXPECT_FALSE(StoreRefusesCaller(here, machine)) << "nothing is stored";
}

struct KindCase
{
    const char* name;
    std::function<void(MIB_IF_ROW2&)> make;
    const wchar_t* reason;
};

class InterfaceKindTest : public testing::TestWithParam<KindCase>
{
};

TEST_P(InterfaceKindTest, SaysWhyItIsLeftOut)
{
    MIB_IF_ROW2 row = {};
    row.Type = IF_TYPE_ETHERNET_CSMACD;
    row.PhysicalMediumType = NdisPhysicalMedium802_3;
    row.InterfaceAndOperStatusFlags.HardwareInterface = TRUE;
    row.InterfaceAndOperStatusFlags.ConnectorPresent = TRUE;
    GetParam().make(row);
    EXPECT_STREQ(WhyNotWired(row), GetParam().reason);
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, InterfaceKindTest,
    testing::Values(
        KindCase{"Wired", [](MIB_IF_ROW2&) {}, L""},
        KindCase{"WiredOfAnUnknownMedium",
                 [](MIB_IF_ROW2& row) { row.PhysicalMediumType = NdisPhysicalMediumUnspecified; }, L""},
        KindCase{"Loopback", [](MIB_IF_ROW2& row) { row.Type = IF_TYPE_SOFTWARE_LOOPBACK; }, L"loopback"},
        KindCase{"Tunnel", [](MIB_IF_ROW2& row) { row.TunnelType = TUNNEL_TYPE_TEREDO; }, L"a tunnel"},
        KindCase{"WirelessType", [](MIB_IF_ROW2& row) { row.Type = IF_TYPE_IEEE80211; }, L"wireless"},
        KindCase{"WirelessMedium",
                 [](MIB_IF_ROW2& row) { row.PhysicalMediumType = NdisPhysicalMediumNative802_11; },
                 L"wireless"},
        KindCase{"Bluetooth", [](MIB_IF_ROW2& row) { row.PhysicalMediumType = NdisPhysicalMediumBluetooth; },
                 L"Bluetooth"},
        KindCase{"Mobile", [](MIB_IF_ROW2& row) { row.Type = 243; }, L"a mobile network"},
        KindCase{"DialUp", [](MIB_IF_ROW2& row) { row.Type = IF_TYPE_PPP; }, L"a dial-up or VPN connection"},
        KindCase{"OtherType", [](MIB_IF_ROW2& row) { row.Type = IF_TYPE_FDDI; }, L"not Ethernet"},
        KindCase{"Software",
                 [](MIB_IF_ROW2& row) { row.InterfaceAndOperStatusFlags.HardwareInterface = FALSE; },
                 L"software, such as a virtual switch or a VPN"},
        KindCase{"NoConnector",
                 [](MIB_IF_ROW2& row) { row.InterfaceAndOperStatusFlags.ConnectorPresent = FALSE; },
                 L"without a connector"},
        KindCase{"OtherMedium", [](MIB_IF_ROW2& row) { row.PhysicalMediumType = NdisPhysicalMedium1394; },
                 L"of another medium"}),
    NameOf<KindCase>);
} // namespace
} // namespace zebdiag
