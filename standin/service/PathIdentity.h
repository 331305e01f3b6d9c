// When two paths mean the same object.
#pragma once

#include "standin/object/ClassDefinition.h"
#include "standin/service/ObjectPath.h"

namespace standin
{
// A text that is equal for paths of the same instance: without server and namespace, names and values in
// lower case, only the keys that the class declares, in their order, whether named or not. Without a
// definition, all keys in the order of their names.
std::wstring PathIdentity(const CObjectPath& path, const CClassDefinition* definition);
} // namespace standin
