// What the server reads from the registry when it starts. Values that cannot be read have built-in defaults.
#pragma once

#include "CDM/src/ZebHelpers.h"

#include <string>
#include <windows.h>

struct CTraceConfiguration
{
    std::string FileName;
    DWORD Level;
};

CTraceConfiguration ReadTraceConfiguration();

// The install directory, and the result store's path made from it.
CHostPaths ReadHostPaths();

// The install directory and the file's name as they stand, with no separator between. E_OUTOFMEMORY, or the
// code of a conversion that failed; `path` is then unchanged.
HRESULT FormResultStorePath(const std::string& installDir, std::wstring& path) noexcept;
