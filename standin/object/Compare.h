// IWbemClassObject::CompareTo.
#pragma once

#include <wbemcli.h>

namespace standin
{
// WBEM_S_SAME or WBEM_S_DIFFERENT. `flags` are WBEM_COMPARISON_FLAG values. The objects need not be ours.
HRESULT CompareObjects(IWbemClassObject& a, IWbemClassObject* b, long flags);
} // namespace standin
