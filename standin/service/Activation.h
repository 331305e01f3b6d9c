// Starting a COM local server, also after one was killed.
#pragma once

#include <objbase.h>
#include <string>
#include <vector>

namespace standin
{
// CoCreateInstance for a class of a local server. Where the server turns out to be dead it is tried again,
// and in the end with the COM service restarted (see ComService.h). Several processes may do this at once.
HRESULT ActivateLocalServer(REFCLSID clsid, REFIID riid, void** out);

// The other half of it: a process that has not used the COM service yet activates for one that no longer can.
// The arguments are class, interface and the name of the CSharedReference to leave the object in; gives the
// HRESULT as the exit code.
int ActivateForAnother(const std::vector<std::wstring>& arguments);
} // namespace standin
