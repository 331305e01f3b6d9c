// Counted bytes in a marshalling stream.
#pragma once

#include <objidl.h>
#include <vector>

namespace standin
{
// A 32-bit size, then the bytes.
HRESULT WriteCounted(IStream* stream, const std::vector<BYTE>& bytes);
// WBEM_E_INVALID_STREAM where the stream ends early. No memory is taken for more than the stream has.
HRESULT ReadCounted(IStream* stream, std::vector<BYTE>& bytes);
} // namespace standin
