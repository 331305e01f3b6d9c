// The way from a client process to the service process.
#pragma once

#include "standin/locator/CallSink.h"

namespace standin
{
struct CServiceConnection
{
    ComPtr<IWbemServices> Services; // the service's own object, for asynchronous calls
    SharedHandle Process;           // the service process, to notice its end; may be null
};

// Has COM start the service process where none runs, and opens a namespace there. A service that ends just
// then is started anew. The namespace has the form root\cimv2; the locale may be null.
HRESULT ConnectService(const wchar_t* nameSpace, const wchar_t* locale, CServiceConnection& connection);
} // namespace standin
