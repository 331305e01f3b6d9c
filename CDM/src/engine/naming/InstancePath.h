// Object path strings taken apart: an optional server and namespace, the class, and its keys with typed
// values.
#pragma once

#include "Common/src/com/Bstr.h"

#include <optional>
#include <string>
#include <variant>
#include <vector>
#include <windows.h>

struct CKeyRef
{
    std::optional<std::wstring> Name; // absent in the form class=value
    std::variant<std::wstring, LONG> Value;

    // The text of a string value, the decimal digits of a number.
    CBstr Text() const;
};

struct CParsedObjectPath
{
    std::wstring Server;
    std::vector<std::wstring> Namespaces;
    std::wstring Class;
    std::vector<CKeyRef> Keys; // in their order of writing
    bool Singleton = false;    // the form class=@
    std::optional<std::wstring> DefaultKeyName;
};

// Accepts a server prefix, absolute and relative namespaces. WBEM_E_INVALID_OBJECT_PATH for anything that is
// not an object path with a class; `parsed` is then unchanged. Throws std::bad_alloc only.
HRESULT ParseObjectPath(const wchar_t* path, CParsedObjectPath& parsed);

// The first key with this name (A to Z folded), or null. An unnamed key matches when `acceptUnnamed` is set,
// or else when the path's default key name is the wanted one.
const CKeyRef* GetKeyRef(const CParsedObjectPath& path, const wchar_t* name, bool acceptUnnamed);
inline void SetDefaultKeyName(CParsedObjectPath& path, const wchar_t* name)
{
    path.DefaultKeyName = name;
}

// Whether the form class="value" will do. It names the key of classes that have only one.
enum class KeyForm
{
    Named,
    NamedOrSingle
};

// The value of one key; a null BSTR if the path has no such key.
CBstr ReadKey(const CParsedObjectPath& path, const wchar_t* name, KeyForm form);
