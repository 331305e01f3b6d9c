// The server module support of the system's ATL.DLL, as far as the server uses it. The toolchain has the
// import library but no header; these are the records that the functions take.
#pragma once

#include <unknwn.h>
#include <windows.h>

namespace atl
{
using Creator = HRESULT WINAPI(void* creator, REFIID riid, void** out);

// One class of the server; a map of them ends with an entry of nulls. The functions call every pointer that
// they find set, and some of those that are not.
struct ObjectEntry
{
    const CLSID* clsid;
    HRESULT(WINAPI* updateRegistry)(BOOL registering);
    Creator* getClassObject; // called with `createInstance` as its creator
    Creator* createInstance;
    IUnknown* classObject;
    DWORD registration;
    const wchar_t*(WINAPI* description)(); // null text: a class that registers itself
    const void* (*categories)();
    void(WINAPI* objectMain)(BOOL starting);
};

struct Module
{
    UINT size;
    HINSTANCE instance;
    HINSTANCE resources;
    HINSTANCE typeLibrary;
    ObjectEntry* objects;
    LONG lockCount;
    HANDLE heap;
    CRITICAL_SECTION staticData;
    CRITICAL_SECTION windowCreation;
    CRITICAL_SECTION objectMap;
    DWORD buildVersion;
    void* windows;
    BOOL destroyHeap;
    const GUID* version;
    DWORD heapCount;
    HANDLE* heaps;
    int heapIndex;
    void* terminators;
};
static_assert(sizeof(void*) != 8 || (sizeof(ObjectEntry) == 72 && sizeof(Module) == 240));
} // namespace atl

extern "C"
{
    HRESULT WINAPI AtlModuleInit(atl::Module* module, atl::ObjectEntry* objects, HINSTANCE instance);
    HRESULT WINAPI AtlModuleTerm(atl::Module* module);
    HRESULT WINAPI AtlModuleRegisterClassObjects(atl::Module* module, DWORD context, DWORD flags);
    HRESULT WINAPI AtlModuleRevokeClassObjects(atl::Module* module);
    HRESULT WINAPI AtlModuleRegisterServer(atl::Module* module, BOOL typeLibrary, const CLSID* oneClass);
    HRESULT WINAPI AtlModuleUnregisterServerEx(atl::Module* module, BOOL typeLibrary, const CLSID* oneClass);
    // `resource` names a script of type "REGISTRY"; the last two are further replacements and a registrar.
    HRESULT WINAPI AtlModuleUpdateRegistryFromResourceD(atl::Module* module, const wchar_t* resource,
                                                        BOOL registering, void* replacements,
                                                        IUnknown* registrar);
}
