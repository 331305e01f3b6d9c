// The engine's keys, made and taken apart, and the object paths by which the management classes name each
// other. "<test number>@<adapter key>" files a test, its setting and its result; "<test number>@<adapter
// index>" names a result in the result store. Keys count up to their first NUL. Values go into paths as they
// are: quotes and backslashes are not escaped. Throw std::bad_alloc only.
#pragma once

#include "Common/src/com/Bstr.h"

#include <string>
#include <windows.h>

// The agent's numbers of the two tests that run against each other for a configured time.
constexpr bool IsSenderResponder(ULONG testId) noexcept
{
    return testId == 9 || testId == 10;
}

// Upper-case hexadecimal without leading zeros.
CBstr TestNumberText(ULONG testId);
CBstr AdapterIndexText(ULONG index);
// A key as maps compare it: upper case by the rules of the ANSI code page.
std::wstring FoldKey(BSTR key);
CBstr FoldedKey(BSTR key);
CBstr MakeTestKey(ULONG testId, BSTR adapterKey);
// first + "@" + second
CBstr JoinKey(std::wstring_view first, std::wstring_view second);

// The part before the first "@", and the part after it; a null BSTR for a key without one.
CBstr ParseForTestName(std::wstring_view key);
CBstr ParseForAdapterKey(std::wstring_view key);

// With `cimKeyMode` off, references to service-derived classes carry the full CIM key set.
CBstr CreateTestReference(std::wstring_view testKey, bool cimKeyMode);
CBstr CreateSettingReference(std::wstring_view settingKey);
// A null BSTR, and a trace line, for a key without an adapter part.
CBstr CreateResultReference(std::wstring_view key);
CBstr CreateSysElemReference(std::wstring_view deviceId, bool cimKeyMode);
