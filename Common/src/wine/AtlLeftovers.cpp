#include "Common/src/wine/AtlLeftovers.h"

#include <oleauto.h>
#include <utility>

void FinishUnregisteringUnderWine(atl::Module& module, UINT classScript, const GUID& typeLibrary) noexcept
{
    AtlModuleUpdateRegistryFromResourceD(&module, MAKEINTRESOURCEW(classScript), FALSE, nullptr, nullptr);
    UnRegisterTypeLib(typeLibrary, 1, 0, LOCALE_NEUTRAL, SYS_WIN64);
}

void FinishRevokingUnderWine(atl::ObjectEntry* objects) noexcept
{
    for (atl::ObjectEntry* entry = objects; entry->clsid; ++entry)
        if (const DWORD registration = std::exchange(entry->registration, 0))
            CoRevokeClassObject(registration);
}
