// What a failed call leaves behind for its thread.
#pragma once

#include "Common/src/com/ComPtr.h"

#include <wbemcli.h>

namespace standin
{
// Makes a status object the error object of the calling thread: GetErrorInfo then gives an IErrorInfo with
// its "Description" and "ProviderName", which also answers for IWbemClassObject.
void SetErrorObject(const ComPtr<IWbemClassObject>& status) noexcept;
// Forgets what an earlier call left.
void ClearErrorObject() noexcept;
} // namespace standin
