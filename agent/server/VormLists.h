// The lists that an agent hands out: blocks from the COM task allocator which belong to the caller, as do the
// strings in them. Either the whole list is handed out or nothing; an empty list is a null block.
#pragma once

#include "agent/Vorl.h"

#include <string>
#include <vector>

HRESULT HandOutKeys(const std::vector<std::wstring>& keys, ULONG* count, BSTR** out);
HRESULT HandOutTests(const std::vector<VormTestDescriptor>& tests, ULONG* count, VormTestDescriptor** out);
