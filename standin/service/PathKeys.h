// The keys of an object path, held against the class that it names.
#pragma once

#include "standin/object/ClassDefinition.h"
#include "standin/service/ObjectPath.h"

namespace standin
{
// Whether an instance's path gives each key of its class once, or its only key without a name, and nothing
// else. Unless the stand-in is strict, properties of the class that are no keys of it may be given as well.
bool HasKeysOf(const CClassDefinition& definition, const CObjectPath& path);

// A text that is equal for paths of the same instance: without server and namespace, names and values in
// lower case, all keys that are given, in the order of their names, whether the only key is named or not.
// Unless the stand-in is strict, what is no key of the class does not count. The class is null where there is
// no such class.
std::wstring PathIdentity(const CClassDefinition* definition, const CObjectPath& path);
} // namespace standin
