// Class definitions in their marshalled form.
#pragma once

#include "standin/object/ClassDefinition.h"

namespace standin
{
// Worked out once for each definition.
std::shared_ptr<const std::vector<BYTE>> EncodeDefinition(const CClassDefinition& definition);
// Throws CBadBytes or std::bad_alloc. The same bytes, decoded again soon, give the same definition: whoever
// enumerates gets a thousand instances of one class, which takes far longer to decode than to compare.
ClassDefinition DecodeDefinition(std::span<const BYTE> bytes, int nesting);
} // namespace standin
