// Does what Wine's module functions leave undone. They answer S_OK all the same. On Windows they have done
// it, and nothing is left to do here.
#pragma once

#include "Common/src/com/AtlModule.h"

// Wine's AtlModuleUnregisterServerEx removes nothing: runs the script of the server's class in remove mode
// and unregisters version 1.0 of the type library.
void FinishUnregisteringUnderWine(atl::Module& module, UINT classScript, const GUID& typeLibrary) noexcept;

// Wine's AtlModuleRevokeClassObjects revokes nothing: revokes each class object of the map that still has a
// registration.
void FinishRevokingUnderWine(atl::ObjectEntry* objects) noexcept;
