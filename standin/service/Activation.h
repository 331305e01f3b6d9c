// Starting a provider as a COM local server.
//
// Each time a process of its own asks COM for it and leaves what it gets to the service. So the service is no
// client of COM's service, which may have to be restarted, and holds no other proxy of the
// provider's process than the provider's own (see proxy/HeldReference.h).
#pragma once

#include "Common/src/com/ComPtr.h"
#include "Common/src/com/Owned.h"

#include <objbase.h>
#include <string>
#include <vector>

namespace standin
{
struct CLocalServer
{
    ComPtr<IUnknown> Object;
    CHandle Process; // the server's, to notice its end
};

// The call failed because the process that serves the object has ended or is ending.
bool IsServerGone(HRESULT hr) noexcept;

// One activation at a time. Leaves in `step` what it did last.
HRESULT ActivateLocalServer(REFCLSID clsid, REFIID riid, CLocalServer& server, const wchar_t*& step);

// What that process of its own does. The arguments are class, interface and the name of a section for the
// reference; gives the HRESULT as the exit code.
int ActivateForService(const std::vector<std::wstring>& arguments);
} // namespace standin
