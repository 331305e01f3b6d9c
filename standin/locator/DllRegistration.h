// The DLL's classes in the registry. Two of them, the locator and the call context, replace what the system
// has in this prefix.
#pragma once

#include <windows.h>

namespace standin
{
// Needs write access to HKEY_LOCAL_MACHINE; SELFREG_E_CLASS where it has not got it. Repeating it is
// harmless.
HRESULT RegisterClasses(HINSTANCE dll);
} // namespace standin
