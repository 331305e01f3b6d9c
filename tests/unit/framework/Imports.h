// The functions of the system that tests of this area make fail.
#pragma once

#include "tests/support/ImportHook.h"

#include <objbase.h>
#include <oleauto.h>

extern "C"
{
    extern decltype(&CoTaskMemFree) __imp_CoTaskMemFree;
    extern decltype(&SysFreeString) __imp_SysFreeString;
    extern decltype(&SysAllocString) __imp_SysAllocString;
    extern decltype(&SafeArrayCreate) __imp_SafeArrayCreate;
    extern decltype(&SafeArrayPutElement) __imp_SafeArrayPutElement;
    extern decltype(&SafeArrayGetElement) __imp_SafeArrayGetElement;
    extern decltype(&SafeArrayGetLBound) __imp_SafeArrayGetLBound;
    extern decltype(&SafeArrayGetUBound) __imp_SafeArrayGetUBound;
    extern decltype(&OpenThreadToken) __imp_OpenThreadToken;
    extern decltype(&GetTokenInformation) __imp_GetTokenInformation;
    extern decltype(&CoCreateInstance) __imp_CoCreateInstance;
}

// The platform does not declare this one as imported, so that it is replaced as a whole: the name that the
// thread has in the tests, or a failure where it is null.
inline const char* g_userName = "HALVERN\\tester";
