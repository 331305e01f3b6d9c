// The forms of the engine's keys: "<test number>@<adapter key>" files a test, its setting and its result;
// "<test number>@<adapter index>" names a result in the result store. Throw std::bad_alloc only.
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
// A key as maps compare it: upper case by the rules of the ANSI code page, up to its first NUL.
std::wstring FoldKey(BSTR key);
CBstr FoldedKey(BSTR key);
CBstr MakeTestKey(ULONG testId, BSTR adapterKey);
