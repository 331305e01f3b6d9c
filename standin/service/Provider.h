// A provider process that has been started and told to get ready.
#pragma once

#include "Common/src/com/ComPtr.h"
#include "standin/mof/Repository.h"

#include <wbemcli.h>

namespace standin
{
// Activates the registered class as a local server, has it initialise itself with `nameSpaceServices` and
// waits until it says that it is ready. WBEM_E_PROVIDER_LOAD_FAILURE where any of that fails.
HRESULT LoadProvider(const CProviderRegistration& registration, const std::wstring& nameSpace,
                     IWbemServices* nameSpaceServices, ComPtr<IWbemServices>& provider);

// Whether the provider's process still answers. One round trip.
bool IsProviderAlive(IWbemServices* provider);
} // namespace standin
