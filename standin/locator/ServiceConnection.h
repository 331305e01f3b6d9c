// The way from a client process to the service process.
#pragma once

#include "standin/locator/CallSink.h"

#include <string>

namespace standin
{
struct CServiceConnection
{
    ComPtr<IWbemServices> Services; // the service's own object, for asynchronous calls
    SharedHandle Process;           // the service process, to notice its end; may be null
};

// Starts the service process where none runs, and opens a namespace there. A service that ends just then is
// started anew; CO_E_SERVER_EXEC_FAILURE where it cannot be. The namespace has the form root\cimv2, the
// locale the form MS_409.
HRESULT ConnectService(const std::wstring& nameSpace, const std::wstring& locale,
                       CServiceConnection& connection);
} // namespace standin
