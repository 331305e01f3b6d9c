// Starting a COM local server, also after one was killed.
//
// Wine's COM service keeps the class registration of a process that ended without revoking it, and from then
// on answers every activation of the class with that dead process. Restarting the service is the only way to
// make it forget; it forgets the registrations of all living servers as well, so who serves a class must be
// ready to find a second process of its own started, and to register again.
#pragma once

#include <objbase.h>

namespace standin
{
// CoCreateInstance for a class of a local server. Where the server turns out to be dead it is tried again,
// and in the end with the COM service restarted. Several processes may do this at once.
HRESULT ActivateLocalServer(REFCLSID clsid, REFIID riid, void** out);
} // namespace standin
