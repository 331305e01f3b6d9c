#include "tests/unit/framework/Imports.h"

#include <cstring>

#define SECURITY_WIN32
#include <security.h>

ZEB_HOOKED_IMPORT("ole32", CoTaskMemFree)
ZEB_HOOKED_IMPORT("oleaut32", SysFreeString)
ZEB_HOOKED_IMPORT("oleaut32", SysAllocString)
ZEB_HOOKED_IMPORT("oleaut32", SafeArrayCreate)
ZEB_HOOKED_IMPORT("oleaut32", SafeArrayPutElement)
ZEB_HOOKED_IMPORT("oleaut32", SafeArrayGetElement)
ZEB_HOOKED_IMPORT("oleaut32", SafeArrayGetLBound)
ZEB_HOOKED_IMPORT("oleaut32", SafeArrayGetUBound)
ZEB_HOOKED_IMPORT("advapi32", OpenThreadToken)
ZEB_HOOKED_IMPORT("advapi32", GetTokenInformation)
ZEB_HOOKED_IMPORT("ole32", CoCreateInstance)

BOOLEAN SEC_ENTRY GetUserNameExA(EXTENDED_NAME_FORMAT format, char* name, ULONG* size)
{
    if (!g_userName || format != NameSamCompatible || *size <= strlen(g_userName))
        return FALSE;
    strcpy(name, g_userName);
    *size = static_cast<ULONG>(strlen(name));
    return TRUE;
}
