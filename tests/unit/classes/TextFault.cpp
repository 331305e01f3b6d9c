#include "tests/unit/classes/TextFault.h"

#include "tests/support/ImportHook.h"

#include <oleauto.h>

ZEB_HOOKED_IMPORT("oleaut32", SysAllocString)
ZEB_HOOKED_IMPORT("oleaut32", SysAllocStringLen)

namespace
{
thread_local int s_left = 0;
thread_local bool s_happened = false;

bool Refused()
{
    if (s_left == 0 || --s_left > 0)
        return false;
    s_happened = true;
    return true;
}

BSTR(WINAPI* const s_allocate)(const OLECHAR*) = __imp_SysAllocString;
BSTR(WINAPI* const s_allocateLength)(const OLECHAR*, UINT) = __imp_SysAllocStringLen;

BSTR WINAPI Allocate(const OLECHAR* text)
{
    return Refused() ? nullptr : s_allocate(text);
}
BSTR WINAPI AllocateLength(const OLECHAR* text, UINT length)
{
    return Refused() ? nullptr : s_allocateLength(text, length);
}
} // namespace

CTextFault::CTextFault(int n)
{
    s_left = n;
    s_happened = false;
    __imp_SysAllocString = &Allocate;
    __imp_SysAllocStringLen = &AllocateLength;
}

CTextFault::~CTextFault()
{
    s_left = 0;
    __imp_SysAllocString = s_allocate;
    __imp_SysAllocStringLen = s_allocateLength;
}

bool CTextFault::Happened() const
{
    return s_happened;
}
