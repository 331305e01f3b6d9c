// Objects and contexts as bytes and back.
#pragma once

#include "Common/src/com/ComPtr.h"
#include "standin/object/Bytes.h"

#include <wbemcli.h>

namespace standin
{
// Any object or context of ours, wherever in this process it was made. A null pointer or a foreign object has
// no bytes, and no bytes are a null pointer. Throw CBadBytes or std::bad_alloc.
std::vector<BYTE> BytesOf(IWbemClassObject* object);
std::vector<BYTE> BytesOf(IWbemContext* context);
ComPtr<IWbemClassObject> ObjectFrom(std::span<const BYTE> bytes);
ComPtr<IWbemContext> ContextFrom(std::span<const BYTE> bytes);
} // namespace standin
