// What the service does for each operation that a client can ask for.
#pragma once

#include "standin/pipe/Messages.h"

namespace standin
{
class CRequest;
class CService;

// Carries the call out, on a thread of its own; the request gets its objects, the outcome is given back. What
// is wrong with the call itself is an outcome too: WBEM_E_INVALID_PARAMETER, WBEM_E_INVALID_NAMESPACE,
// WBEM_E_INVALID_OBJECT_PATH and the like.
COutcome CarryOut(CService& service, const CCallMessage& call, CRequest& request);
} // namespace standin
