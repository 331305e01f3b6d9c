// Diagnostic object keys taken apart, and the object paths by which the management classes name each other.
// Keys count up to their first NUL, as everywhere in the engine. Values go into paths as they are: quotes and
// backslashes are not escaped. Throw std::bad_alloc only.
#pragma once

#include "Common/src/com/Bstr.h"

// The part before the first "@"; a null BSTR where there is none.
CBstr ParseForTestName(std::wstring_view key);
// The part after the first "@"; a null BSTR where there is none.
CBstr ParseForAdapterKey(std::wstring_view key);
// first + "@" + second
CBstr JoinKey(std::wstring_view first, std::wstring_view second);

// With `cimKeyMode` off, references to service-derived classes carry the full CIM key set.
CBstr CreateTestReference(std::wstring_view testKey, bool cimKeyMode);
CBstr CreateSettingReference(std::wstring_view settingKey);
// A null BSTR, and a trace line, for a key without an adapter part.
CBstr CreateResultReference(std::wstring_view key);
CBstr CreateSysElemReference(std::wstring_view deviceId, bool cimKeyMode);
