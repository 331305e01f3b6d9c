#include "tools/zebdiag/Failure.h"

#include "Common/src/com/Text.h"
#include "Common/src/com/WmiStatus.h"
#include "tests/support/CaseName.h"

namespace zebdiag
{
namespace
{
struct FailureCase
{
    const char* name;
    unsigned long status;
    Step step;
    ExitCode code;
    const wchar_t* cause;
    const wchar_t* nextStep; // a part of it
    const wchar_t* computer = L"WS42";
};

class FailureTest : public testing::TestWithParam<FailureCase>
{
};

TEST_P(FailureTest, HasCauseAndNextStep)
{
    CTarget target;
    const FailureCase& given = GetParam();
    target.Computer = given.computer;
    const HRESULT status = static_cast<HRESULT>(given.status);
    const CFailure failure = FailureOf(status, given.step, target, L"Tolva_DiagTest");
    EXPECT_EQ(failure.Code, given.code);
    EXPECT_EQ(Utf8Text(failure.Cause), Utf8Text(given.cause));
    EXPECT_NE(failure.NextStep.find(given.nextStep), std::wstring::npos) << Utf8Text(failure.NextStep);
    EXPECT_EQ(failure.Status, status);
}

INSTANTIATE_TEST_SUITE_P(
    Statuses, FailureTest,
    testing::Values(
        FailureCase{"NoLocator", 0x80040154, Step::Locate, ExitCode::NotReachable,
                    L"Windows Management Instrumentation is not installed on this computer.", L"Install"},
        FailureCase{"LocatorFails", 0x80004005, Step::Locate, ExitCode::NotReachable,
                    L"Windows Management Instrumentation cannot be used on this computer.", L"Repair"},
        FailureCase{"NoNamespace", 0x8004100E, Step::Connect, ExitCode::NotReachable,
                    L"There is no namespace root\\cimv2 on WS42.", L"--namespace"},
        FailureCase{"AccessDeniedByService", 0x80041003, Step::Connect, ExitCode::NotReachable,
                    L"Access to root\\cimv2 on WS42 was denied.", L"--user"},
        FailureCase{"AccessDeniedBySystem", 0x80070005, Step::Read, ExitCode::NotReachable,
                    L"Access to root\\cimv2 on WS42 was denied.", L"administrator"},
        FailureCase{"WrongPassword", 0x8007052E, Step::Connect, ExitCode::NotReachable,
                    L"WS42 does not accept this user name and password.", L"DOMAIN\\name"},
        FailureCase{"RpcUnavailable", 0x800706BA, Step::Connect, ExitCode::NotReachable,
                    L"There is no answer from WS42.", L"firewall"},
        FailureCase{"RpcUnavailableWhileReading", 0x800706BA, Step::Read, ExitCode::NotReachable,
                    L"There is no answer from WS42.", L"firewall"},
        FailureCase{"RpcBroken", 0x800706BE, Step::Call, ExitCode::NotReachable,
                    L"The connection to WS42 broke.", L"Try again"},
        FailureCase{"Disconnected", 0x80010108, Step::Read, ExitCode::NotReachable,
                    L"The connection to WS42 broke.", L"Try again"},
        FailureCase{"ServiceDisabled", 0x80070422, Step::Connect, ExitCode::NotReachable,
                    L"The management service on WS42 could not be started.", L"Winmgmt"},
        FailureCase{"ServiceDoesNotStart", 0x80080005, Step::Connect, ExitCode::NotReachable,
                    L"The management service on WS42 could not be started.", L"Winmgmt"},
        FailureCase{"ConnectFails", 0x80041001, Step::Connect, ExitCode::NotReachable,
                    L"Connecting to root\\cimv2 on WS42 failed.", L"event log"},
        FailureCase{"NoClass", 0x80041010, Step::Read, ExitCode::NotReachable,
                    L"The class Tolva_DiagTest is not known in root\\cimv2 on WS42.", L"mofcomp zebdiag.mof"},
        FailureCase{"ProviderNotFound", 0x80041011, Step::Read, ExitCode::NotReachable,
                    L"The schema on WS42 names no provider for the class Tolva_DiagTest.", L"mofcomp"},
        FailureCase{"ProviderDoesNotLoad", 0x80041013, Step::Read, ExitCode::NotReachable,
                    L"The diagnostics provider could not be started on WS42.", L"zebdiag doctor"},
        FailureCase{"ProviderNotRegistered", 0x80040154, Step::Read, ExitCode::NotReachable,
                    L"The diagnostics provider could not be started on WS42.", L"zebdiag doctor"},
        FailureCase{"ProviderExecFails", 0x80080005, Step::Call, ExitCode::NotReachable,
                    L"The diagnostics provider could not be started on WS42.", L"zebdiag doctor"},
        FailureCase{"ProviderNotCapable", 0x80041024, Step::Write, ExitCode::NotReachable,
                    L"The provider is registered wrongly in root\\cimv2 on WS42.", L"mofcomp"},
        FailureCase{"ProviderCannotInitialize", 0x80041014, Step::Read, ExitCode::NotReachable,
                    L"The diagnostics provider on WS42 has started but cannot work.", L"zebdiag doctor"},
        FailureCase{"ProviderEnds", 0x80041004, Step::Call, ExitCode::CouldNotRun,
                    L"The diagnostics provider on WS42 failed or ended during the request.",
                    L"zebdiag doctor"},
        FailureCase{"ProviderHereIsGone", 0x800706BA, Step::Read, ExitCode::NotReachable,
                    L"The diagnostics provider on this computer failed or ended during the request.",
                    L"trace", L""},
        FailureCase{"ProviderHereEnds", 0x800706BE, Step::Call, ExitCode::NotReachable,
                    L"The diagnostics provider on this computer failed or ended during the request.",
                    L"trace", L"localhost"},
        FailureCase{"ProviderHereEndsBeforeTheCall", 0x800706BF, Step::Write, ExitCode::NotReachable,
                    L"The diagnostics provider on this computer failed or ended during the request.",
                    L"trace", L"."},
        FailureCase{"NoServiceHere", 0x800706BA, Step::Connect, ExitCode::NotReachable,
                    L"There is no answer from this computer.", L"switched on", L""},
        FailureCase{"AlreadyRunning", 0x80042000, Step::Call, ExitCode::Busy, L"The test is running already.",
                    L"zebdiag stop"},
        FailureCase{"ClearWhileRunning", 0x80042003, Step::Call, ExitCode::Busy,
                    L"The result cannot be cleared while the test runs.", L"zebdiag stop"},
        FailureCase{"NotRunning", 0x80042002, Step::Call, ExitCode::CouldNotRun, L"The test is not running.",
                    L""},
        FailureCase{"UnknownToEngine", 0x80042005, Step::Write, ExitCode::NotFound,
                    L"The provider on WS42 does not know this test any more.", L"zebdiag list"},
        FailureCase{"NotFound", 0x80041002, Step::Call, ExitCode::NotFound,
                    L"The provider on WS42 does not know this test any more.", L"zebdiag list"},
        FailureCase{"ReadFails", 0x80041001, Step::Read, ExitCode::CouldNotRun,
                    L"Reading Tolva_DiagTest on WS42 failed.", L"trace"},
        FailureCase{"CallFails", 0x80041001, Step::Call, ExitCode::CouldNotRun,
                    L"The provider on WS42 could not carry out the request.", L"trace"},
        FailureCase{"WriteFails", 0x80041008, Step::Write, ExitCode::CouldNotRun,
                    L"The provider on WS42 did not take the setting.", L"trace"},
        FailureCase{"OutOfMemory", 0x80041006, Step::Read, ExitCode::CouldNotRun,
                    L"WS42 has run out of memory.", L"Close other programs"}),
    NameOf<FailureCase>);

TEST(FailureTest, SentenceAboutThisComputerBeginsWithACapital)
{
    const CFailure failure = FailureOf(wmi::OutOfMemory, Step::Read, CTarget(), L"Tolva_DiagTest");
    EXPECT_EQ(failure.Cause, L"This computer has run out of memory.");
}

// So that the next step names the file of the trace.
TEST(FailureTest, TraceTellsOfAProviderThatEndsHere)
{
    const HRESULT status = HRESULT_FROM_WIN32(RPC_S_CALL_FAILED);
    EXPECT_TRUE(FailureOf(status, Step::Call, CTarget()).TraceTells);
    CTarget other;
    other.Computer = L"WS42";
    EXPECT_FALSE(FailureOf(status, Step::Call, other).TraceTells);
}

TEST(FailureTest, KeepsWhatTheProviderSaid)
{
    EXPECT_EQ(FailureOf(wmi::Failed, Step::Call, CTarget(), {}, L"no agent").Detail, L"no agent");
}

struct GraverCase
{
    const char* name;
    ExitCode a;
    ExitCode b;
    ExitCode graver;
};

class GraverTest : public testing::TestWithParam<GraverCase>
{
};

TEST_P(GraverTest, DoesNotHangOnTheOrder)
{
    EXPECT_EQ(Graver(GetParam().a, GetParam().b), GetParam().graver);
    EXPECT_EQ(Graver(GetParam().b, GetParam().a), GetParam().graver);
}

INSTANTIATE_TEST_SUITE_P(
    Pairs, GraverTest,
    testing::Values(
        GraverCase{"PassedPassed", ExitCode::Passed, ExitCode::Passed, ExitCode::Passed},
        GraverCase{"PassedStopped", ExitCode::Passed, ExitCode::Stopped, ExitCode::Stopped},
        GraverCase{"StoppedBusy", ExitCode::Stopped, ExitCode::Busy, ExitCode::Busy},
        GraverCase{"BusyCouldNotRun", ExitCode::Busy, ExitCode::CouldNotRun, ExitCode::CouldNotRun},
        GraverCase{"CouldNotRunFailed", ExitCode::CouldNotRun, ExitCode::Failed, ExitCode::Failed},
        GraverCase{"NotReachableFailed", ExitCode::NotReachable, ExitCode::Failed, ExitCode::Failed}),
    NameOf<GraverCase>);

struct CodeCase
{
    const char* name;
    ExitCode code;
    int number;
    const char* word;
};

class ExitCodeTest : public testing::TestWithParam<CodeCase>
{
};

// Scripts rely on the numbers and on the words.
TEST_P(ExitCodeTest, IsAsDocumented)
{
    EXPECT_EQ(static_cast<int>(GetParam().code), GetParam().number);
    EXPECT_STREQ(ExitCodeName(GetParam().code), GetParam().word);
}

INSTANTIATE_TEST_SUITE_P(Codes, ExitCodeTest,
                         testing::Values(CodeCase{"Passed", ExitCode::Passed, 0, "passed"},
                                         CodeCase{"Failed", ExitCode::Failed, 1, "failed"},
                                         CodeCase{"Stopped", ExitCode::Stopped, 2, "stopped"},
                                         CodeCase{"CouldNotRun", ExitCode::CouldNotRun, 3, "could_not_run"},
                                         CodeCase{"NotFound", ExitCode::NotFound, 4, "not_found"},
                                         CodeCase{"Busy", ExitCode::Busy, 5, "busy"},
                                         CodeCase{"NotReachable", ExitCode::NotReachable, 6, "not_reachable"},
                                         CodeCase{"Usage", ExitCode::Usage, 7, "usage"}),
                         NameOf<CodeCase>);
} // namespace
} // namespace zebdiag
