// The DLL's classes in the registry. Two of them, the locator and the call context, may belong to another
// implementation already: it is remembered and put back on unregistration.
#pragma once

#include <windows.h>

namespace standin
{
// Need write access to HKEY_LOCAL_MACHINE; SELFREG_E_CLASS where they have not got it. Repeating them is
// harmless.
HRESULT RegisterClasses(HINSTANCE dll);
HRESULT UnregisterClasses();
} // namespace standin
