// One call to a provider on behalf of a request, from the start to its status.
#pragma once

#include "standin/service/ProviderPool.h"
#include "standin/service/Request.h"

#include <functional>

namespace standin
{
// Takes an object that a provider delivered. A failure goes back to the provider, which then should stop.
using ObjectConsumer = std::function<HRESULT(IWbemClassObject*)>;
// Begins the provider's asynchronous operation with a sink.
using ProviderStart = std::function<HRESULT(IWbemServices&, IWbemObjectSink*)>;

// Loads the provider where needed, makes the call and waits until the provider has given its status, has
// failed without one (its result then counts), has died (WBEM_E_PROVIDER_FAILURE), or the request has been
// cancelled (WBEM_E_CALL_CANCELLED). `consume` is not called any more afterwards.
COutcome CallProvider(CProviderPool& pool, const std::wstring& nameSpace,
                      const CProviderRegistration& registration, CRequest& request, ObjectConsumer consume,
                      const ProviderStart& start);
} // namespace standin
