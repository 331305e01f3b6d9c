// Why a command cannot do what it was asked, in the words of the user: the cause, and what to do next.
#pragma once

#include "tools/zebdiag/ExitCode.h"
#include "tools/zebdiag/Options.h"

#include <exception>
#include <string>
#include <windows.h>

namespace zebdiag
{
// Thrown by everything below the commands, caught in one place at the top.
class CFailure : public std::exception
{
  public:
    CFailure(ExitCode code, std::wstring cause, std::wstring nextStep, HRESULT status = S_OK,
             std::wstring detail = {});

    const char* what() const noexcept override { return "a command could not be carried out"; }

    ExitCode Code;
    std::wstring Cause;
    std::wstring NextStep;   // may be empty
    HRESULT Status;          // S_OK where no call failed
    std::wstring Detail;     // what the provider itself said; may be empty
    bool NoProvider = false; // the service could not start it
    bool TraceTells = false; // the provider's trace says more
};

// What was being done when a status came back; the same status means different things in each.
enum class Step : unsigned
{
    Locate = 1,  // getting hold of the management service's client
    Connect = 2, // connecting to the namespace
    Read = 4,    // reading a class or instances
    Call = 8,    // calling a method
    Write = 16   // putting an instance
};

// "0x8004100E".
std::wstring StatusText(HRESULT status);

// The failure that a status means. `subject` is the class that was used; `detail` what the provider said.
CFailure FailureOf(HRESULT status, Step step, const CTarget& target, const std::wstring& subject = {},
                   std::wstring detail = {});
} // namespace zebdiag
