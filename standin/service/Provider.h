// A provider process that has been started and told to get ready.
#pragma once

#include "Common/src/com/ComPtr.h"
#include "Common/src/com/Owned.h"
#include "standin/mof/Repository.h"

#include <wbemcli.h>

namespace standin
{
struct CProvider
{
    ComPtr<IWbemServices> Services;
    CHandle Process;

    bool Alive() const noexcept { return WaitForSingleObject(Process.Get(), 0) == WAIT_TIMEOUT; }
};

// Activates the registered class as a local server, has it initialise itself with `nameSpaceServices` and
// waits until it says that it is ready. WBEM_E_PROVIDER_LOAD_FAILURE where any of that fails. One at a time.
HRESULT LoadProvider(const CProviderRegistration& registration, const std::wstring& nameSpace,
                     IWbemServices* nameSpaceServices, CProvider& provider);
} // namespace standin
