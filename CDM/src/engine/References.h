// Diagnostic object keys taken apart, and the object paths by which the management classes name each other.
// Every function consumes its key. Values go into paths as they are: quotes and backslashes are not escaped.
// Throw std::bad_alloc only.
#pragma once

#include "Common/src/com/Bstr.h"

// The part before the first "@"; a null BSTR where there is none.
CBstr ParseForTestName(CBstr key);
// The part after the first "@"; a null BSTR where there is none.
CBstr ParseForAdapterKey(CBstr key);
// first + "@" + second
CBstr JoinKey(CBstr first, CBstr second);

// With `cimKeyMode` off, references to service-derived classes carry the full CIM key set.
CBstr CreateTestReference(CBstr testKey, bool cimKeyMode);
CBstr CreateSettingReference(CBstr settingKey);
// A null BSTR, and a trace line, for a key without an adapter part.
CBstr CreateResultReference(CBstr key);
CBstr CreateSysElemReference(CBstr deviceId, bool cimKeyMode);
