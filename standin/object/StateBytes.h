// Class objects and instances in their marshalled form.
#pragma once

#include "standin/object/ObjectState.h"

namespace standin
{
std::vector<BYTE> EncodeState(const CObjectState& object);

// Makes an embedded object of its bytes.
using DecodeEmbedded = ComPtr<IWbemClassObject> (*)(std::span<const BYTE> bytes, int nesting);
// Throws CBadBytes or std::bad_alloc.
CObjectState DecodeState(std::span<const BYTE> bytes, int nesting, DecodeEmbedded decodeEmbedded);
} // namespace standin
