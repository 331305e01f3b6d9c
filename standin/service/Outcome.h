// How a request ended.
#pragma once

#include "Common/src/com/Bstr.h"
#include "Common/src/com/ComPtr.h"

#include <wbemcli.h>

namespace standin
{
struct COutcome
{
    COutcome() = default;
    COutcome(HRESULT result) noexcept : Result(result) {}

    bool Failed() const noexcept { return FAILED(Result); }

    HRESULT Result = WBEM_S_NO_ERROR;
    CBstr Text;                      // a put instance's path
    ComPtr<IWbemClassObject> Status; // what the provider says about a failure
    ComPtr<IWbemClassObject> Object; // the one object of a call that asks for one
};
} // namespace standin
