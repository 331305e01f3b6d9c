// Definitions, objects and contexts in their marshalled form.
#pragma once

#include "standin/object/Bytes.h"
#include "standin/object/ObjectView.h"

namespace standin
{
std::vector<BYTE> EncodeDefinition(const CClassDefinition& definition);
// `definitionBytes` is what Bytes() of the view's definition gives.
std::vector<BYTE> EncodeObject(const CObjectView& object, const std::vector<BYTE>& definitionBytes);

// Throw CBadBytes or std::bad_alloc. Instances of one class, decoded one after the other, share a definition.
ClassDefinition DecodeDefinition(std::span<const BYTE> bytes, int nesting);
ComPtr<IWbemClassObject> DecodeObject(std::span<const BYTE> bytes, int nesting);

// Any object or context of ours, wherever in this process it was made. A null pointer or a foreign object has
// no bytes, and no bytes are a null pointer. Throw CBadBytes or std::bad_alloc.
std::vector<BYTE> BytesOf(IWbemClassObject* object);
std::vector<BYTE> BytesOf(IWbemContext* context);
ComPtr<IWbemClassObject> ObjectFrom(std::span<const BYTE> bytes);
ComPtr<IWbemContext> ContextFrom(std::span<const BYTE> bytes);
} // namespace standin
