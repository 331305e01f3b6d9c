// Where resource libraries are looked for.
#pragma once

#include <windows.h>

// Loads the library of the locale's language for a base name from the first folder that has it: the override
// folder, the common resource folder, the provider's folder, the system's search order. Null where none has;
// each step is traced. Throws std::bad_alloc only.
HMODULE SearchResourceDll(LCID locale, const char* baseName);
