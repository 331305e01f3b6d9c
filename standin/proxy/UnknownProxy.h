// The runtime's IUnknown half of a proxy, which generated proxy sources use and the toolchain's headers lack.
#pragma once

#include <objbase.h>

HRESULT STDMETHODCALLTYPE IUnknown_QueryInterface_Proxy(IUnknown* self, REFIID riid, void** out);
ULONG STDMETHODCALLTYPE IUnknown_AddRef_Proxy(IUnknown* self);
ULONG STDMETHODCALLTYPE IUnknown_Release_Proxy(IUnknown* self);
