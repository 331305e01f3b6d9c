#include "tools/zebdiag/Failure.h"

#include "Common/src/com/WmiStatus.h"
#include "tools/zebdiag/languages/Said.h"

#include <algorithm>
#include <iterator>

namespace zebdiag
{
namespace
{
constexpr unsigned kLocate = static_cast<unsigned>(Step::Locate);
constexpr unsigned kConnect = static_cast<unsigned>(Step::Connect);
constexpr unsigned kRead = static_cast<unsigned>(Step::Read);
constexpr unsigned kCall = static_cast<unsigned>(Step::Call);
constexpr unsigned kWrite = static_cast<unsigned>(Step::Write);
constexpr unsigned kUse = kRead | kCall | kWrite;
constexpr unsigned kAny = kLocate | kConnect | kUse;

constexpr HRESULT Code(unsigned value)
{
    return static_cast<HRESULT>(value);
}

// In the texts {computer}, {namespace} and {class} stand for what was used.
struct CFailureRow
{
    HRESULT Status;
    unsigned Steps;
    ExitCode Exit;
    const wchar_t* Cause;
    const wchar_t* NextStep;
    bool NoProvider = false;
};

constexpr const wchar_t* kNoProvider =
    Marked(L"The diagnostics provider could not be started on {computer}.");
constexpr const wchar_t* kAskDoctor =
    Marked(L"Run \"zebdiag doctor\" on that computer: it names what is missing.");
constexpr const wchar_t* kNoSchema = Marked(L"The class {class} is not known in {namespace} on {computer}.");
constexpr const wchar_t* kCompileSchema =
    Marked(L"Install the provider's schema there as an administrator: \"mofcomp "
           L"zebdiag.mof\". If it is installed in "
           L"another namespace, name that with --namespace.");
constexpr const wchar_t* kDenied = Marked(L"Access to {namespace} on {computer} was denied.");
constexpr const wchar_t* kBeAdministrator = Marked(
    L"Run zebdiag as an administrator, or for another computer name an administrator of it with --user.");
constexpr const wchar_t* kNoAnswer = Marked(L"There is no answer from {computer}.");
constexpr const wchar_t* kCheckNetwork = Marked(
    L"Check the computer's name, that it is switched on, and that its firewall lets Windows Management "
    L"Instrumentation through.");
constexpr const wchar_t* kBroken = Marked(L"The connection to {computer} broke.");
constexpr const wchar_t* kTryAgain =
    Marked(L"Try again. If it happens again, look at the event log of that computer.");
constexpr const wchar_t* kNoService = Marked(L"The management service on {computer} could not be started.");
constexpr const wchar_t* kStartService =
    Marked(L"Start the service \"Windows Management Instrumentation\" (Winmgmt) "
           L"there, and see that it is not disabled.");
constexpr const wchar_t* kReadTrace =
    Marked(L"The provider's trace tells more. \"zebdiag doctor\" on that computer says whether it is "
           L"on, where it is, and how it is switched on.");
constexpr const wchar_t* kProviderEnded =
    Marked(L"The diagnostics provider on {computer} failed or ended during the request.");

// Ends the table: what no other row of the step says.
constexpr HRESULT kAnyStatus = S_OK;

// Go before the other rows if the target is this computer. There is no network between, and the service
// answered when the session began: what does not answer any more is the provider.
constexpr CFailureRow kLocalRows[] = {
    {HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE), kUse, ExitCode::NotReachable, kProviderEnded, kReadTrace},
    {HRESULT_FROM_WIN32(RPC_S_CALL_FAILED), kUse, ExitCode::NotReachable, kProviderEnded, kReadTrace},
    {HRESULT_FROM_WIN32(RPC_S_CALL_FAILED_DNE), kUse, ExitCode::NotReachable, kProviderEnded, kReadTrace},
};

// The first row that fits is the one.
constexpr CFailureRow kRows[] = {
    {REGDB_E_CLASSNOTREG, kLocate, ExitCode::NotReachable,
     Marked(L"Windows Management Instrumentation is not installed on this computer."),
     Marked(L"Install or repair it.")},

    {wmi::InvalidNamespace, kAny, ExitCode::NotReachable,
     Marked(L"There is no namespace {namespace} on {computer}."),
     Marked(
         L"Name the namespace that the provider was registered in with --namespace; usually it is root\\cimv2.")},
    {Code(WBEM_E_LOCAL_CREDENTIALS), kConnect, ExitCode::NotReachable,
     Marked(L"Another user cannot be named for this computer itself."),
     Marked(L"Leave out --user, or start zebdiag as that user.")},
    {HRESULT_FROM_WIN32(ERROR_LOGON_FAILURE), kConnect, ExitCode::NotReachable,
     Marked(L"{computer} does not accept this user name and password."),
     Marked(L"Check both; give the user as DOMAIN\\name.")},
    {wmi::InvalidParameter, kConnect, ExitCode::NotReachable,
     Marked(L"The computer, the namespace or the language was not accepted."),
     Marked(L"Check --computer, --namespace and --locale.")},
    {Code(CO_E_SERVER_EXEC_FAILURE), kLocate | kConnect, ExitCode::NotReachable, kNoService, kStartService},
    {HRESULT_FROM_WIN32(ERROR_SERVICE_DISABLED), kAny, ExitCode::NotReachable, kNoService, kStartService},
    {REGDB_E_CLASSNOTREG, kConnect, ExitCode::NotReachable, kNoService, kStartService},

    {wmi::AccessDenied, kAny, ExitCode::NotReachable, kDenied, kBeAdministrator},
    {E_ACCESSDENIED, kAny, ExitCode::NotReachable, kDenied, kBeAdministrator},
    {HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE), kAny, ExitCode::NotReachable, kNoAnswer, kCheckNetwork},
    {HRESULT_FROM_WIN32(ERROR_BAD_NETPATH), kAny, ExitCode::NotReachable, kNoAnswer, kCheckNetwork},
    {HRESULT_FROM_WIN32(RPC_S_CALL_FAILED), kAny, ExitCode::NotReachable, kBroken, kTryAgain},
    {HRESULT_FROM_WIN32(RPC_S_CALL_FAILED_DNE), kAny, ExitCode::NotReachable, kBroken, kTryAgain},
    {Code(RPC_E_DISCONNECTED), kAny, ExitCode::NotReachable, kBroken, kTryAgain},
    {Code(WBEM_E_TRANSPORT_FAILURE), kAny, ExitCode::NotReachable, kBroken, kTryAgain},
    {Code(WBEM_E_SHUTTING_DOWN), kAny, ExitCode::NotReachable,
     Marked(L"The management service on {computer} is shutting down."), Marked(L"Try again when it runs.")},

    {wmi::InvalidClass, kUse, ExitCode::NotReachable, kNoSchema, kCompileSchema},
    {wmi::InvalidMethod, kCall, ExitCode::NotReachable,
     Marked(L"The schema on {computer} has not got this method of {class}."), kCompileSchema},
    {wmi::ProviderNotFound, kUse, ExitCode::NotReachable,
     Marked(L"The schema on {computer} names no provider for the class {class}."), kCompileSchema},
    {Code(WBEM_E_INVALID_PROVIDER_REGISTRATION), kUse, ExitCode::NotReachable,
     Marked(L"The provider is registered wrongly in {namespace} on {computer}."), kCompileSchema},
    {Code(WBEM_E_PROVIDER_NOT_CAPABLE), kUse, ExitCode::NotReachable,
     Marked(L"The provider is registered wrongly in {namespace} on {computer}."), kCompileSchema},
    {wmi::ProviderLoadFailure, kUse, ExitCode::NotReachable, kNoProvider, kAskDoctor, true},
    {REGDB_E_CLASSNOTREG, kUse, ExitCode::NotReachable, kNoProvider, kAskDoctor, true},
    {Code(CO_E_SERVER_EXEC_FAILURE), kUse, ExitCode::NotReachable, kNoProvider, kAskDoctor, true},
    {HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND), kUse, ExitCode::NotReachable, kNoProvider, kAskDoctor, true},
    {Code(WBEM_E_INITIALIZATION_FAILURE), kUse, ExitCode::NotReachable,
     Marked(L"The diagnostics provider on {computer} has started but cannot work."), kAskDoctor, true},

    {WBEM_S_TIMEDOUT, kUse, ExitCode::NotReachable,
     Marked(L"The diagnostics provider on {computer} has not answered in time."), kReadTrace},
    {wmi::ProviderFailure, kUse, ExitCode::CouldNotRun, kProviderEnded, kReadTrace},

    {Code(0x80042000), kUse, ExitCode::Busy, Marked(L"The test is running already."),
     Marked(L"Wait for its end, or stop it with \"zebdiag stop\".")},
    {Code(0x80042003), kUse, ExitCode::Busy, Marked(L"The result cannot be cleared while the test runs."),
     Marked(L"Wait for its end, or stop it with \"zebdiag stop\".")},
    {Code(0x80042002), kUse, ExitCode::CouldNotRun, Marked(L"The test is not running."), L""},
    {Code(0x80042005), kUse, ExitCode::NotFound,
     Marked(L"The provider on {computer} does not know this test any more."),
     Marked(L"See what there is with \"zebdiag list\".")},
    {wmi::NotFound, kUse, ExitCode::NotFound,
     Marked(L"The provider on {computer} does not know this test any more."),
     Marked(L"See what there is with \"zebdiag list\".")},
    {wmi::OutOfMemory, kAny, ExitCode::CouldNotRun, Marked(L"{computer} has run out of memory."),
     Marked(L"Close other programs there and try again.")},
    {E_OUTOFMEMORY, kAny, ExitCode::CouldNotRun, Marked(L"The memory was not enough."),
     Marked(L"Close other programs and try again.")},

    {kAnyStatus, kLocate, ExitCode::NotReachable,
     Marked(L"Windows Management Instrumentation cannot be used on this computer."), Marked(L"Repair it.")},
    {kAnyStatus, kConnect, ExitCode::NotReachable, Marked(L"Connecting to {namespace} on {computer} failed."),
     Marked(L"Look at the event log of that computer.")},
    {kAnyStatus, kRead, ExitCode::CouldNotRun, Marked(L"Reading {class} on {computer} failed."), kReadTrace},
    {kAnyStatus, kCall, ExitCode::CouldNotRun,
     Marked(L"The provider on {computer} could not carry out the request."), kReadTrace},
    {kAnyStatus, kWrite, ExitCode::CouldNotRun,
     Marked(L"The provider on {computer} did not take the setting."), kReadTrace},
};

const CFailureRow& RowOf(HRESULT status, unsigned step, bool local)
{
    const auto fits = [=](const CFailureRow& row)
    { return (row.Status == status || row.Status == kAnyStatus) && (row.Steps & step); };
    const auto localRow = std::ranges::find_if(kLocalRows, fits);
    return local && localRow != std::end(kLocalRows) ? *localRow : *std::ranges::find_if(kRows, fits);
}

std::wstring Fill(std::wstring text, const CTarget& target, const std::wstring& subject)
{
    const struct
    {
        std::wstring_view Place;
        std::wstring Value;
    } values[] = {
        {L"{computer}", target.ComputerInWords()}, {L"{namespace}", target.Namespace}, {L"{class}", subject}};
    for (const auto& value : values)
        for (size_t at = 0; (at = text.find(value.Place, at)) != std::wstring::npos; at += value.Value.size())
            text.replace(at, value.Place.size(), value.Value);
    // A sentence may begin with the words for this computer.
    if (target.IsLocal() && text.starts_with(values[0].Value))
        CharUpperBuffW(text.data(), 1);
    return text;
}
} // namespace

CFailure::CFailure(ExitCode code, std::wstring cause, std::wstring nextStep, HRESULT status,
                   std::wstring detail)
    : Code(code), Cause(std::move(cause)), NextStep(std::move(nextStep)), Status(status),
      Detail(std::move(detail))
{
}

std::wstring StatusText(HRESULT status)
{
    wchar_t text[16] = {};
    _snwprintf(text, 15, L"0x%08lX", static_cast<unsigned long>(status));
    return text;
}

CFailure FailureOf(HRESULT status, Step step, const CTarget& target, const std::wstring& subject,
                   std::wstring detail)
{
    const CFailureRow& row = RowOf(status, static_cast<unsigned>(step), target.IsLocal());
    CFailure failure(row.Exit, Fill(Said(row.Cause), target, subject),
                     Fill(Said(row.NextStep), target, subject), status, std::move(detail));
    failure.NoProvider = row.NoProvider;
    failure.TraceTells = row.NextStep == kReadTrace;
    return failure;
}
} // namespace zebdiag
