// The value of one key of an object path, as a BSTR.
#pragma once

#include "CDM/src/engine/naming/InstancePath.h"

// Whether the form class="value" will do. It names the key of classes that have only one.
enum class KeyForm
{
    Named,
    NamedOrSingle
};

// A null BSTR where the path has no such key.
inline CBstr ReadKey(const CParsedObjectPath& path, const wchar_t* name, KeyForm form)
{
    const CKeyRef* const key = GetKeyRef(path, name, form == KeyForm::NamedOrSingle);
    return key ? key->Text() : CBstr();
}
