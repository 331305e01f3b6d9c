// The generated proxies name these three slots; the headers of the toolchain do not declare them.
#pragma once

#include <objbase.h>
HRESULT STDMETHODCALLTYPE IUnknown_QueryInterface_Proxy(IUnknown* self, REFIID riid, void** out);
ULONG STDMETHODCALLTYPE IUnknown_AddRef_Proxy(IUnknown* self);
ULONG STDMETHODCALLTYPE IUnknown_Release_Proxy(IUnknown* self);
