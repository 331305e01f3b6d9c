// The server module of this process: the system's module record with its object map and lock count, and what
// this server adds to it, the shutdown monitor and the paths that a provider object is made with.
#pragma once

#include "CDM/src/ProviderBase.h"
#include "CDM/src/ZebHelpers.h"
#include "CDM/src/server/ShutdownMonitor.h"
#include "Common/src/com/AtlModule.h"

class CServerModule final : public IServerLock
{
  public:
    // The one of this process: COM's request for a class object brings nothing along to find it by.
    static CServerModule& Instance() noexcept;

    // Begins and ends the module; COM is initialised around both.
    HRESULT Init(HINSTANCE instance) noexcept;
    void Term() noexcept;

    // Before clients come.
    void SetPaths(CHostPaths paths) noexcept { m_paths = std::move(paths); }
    void SetMainThread(DWORD thread) noexcept { m_mainThread = thread; }
    const GUID& TypeLibrary() const noexcept { return m_typeLibrary; }

    // The registry entries of module and class, and the type library.
    HRESULT RegisterServer() noexcept;
    HRESULT UnregisterServer() noexcept;

    // False if no monitor could be started: the server then runs until it is ended from outside.
    bool StartMonitor() noexcept { return m_monitor.Start(m_mainThread); }
    HRESULT RegisterClassObjects(DWORD context, DWORD flags) noexcept;
    void RevokeClassObjects() noexcept;
    // A new provider object; CO_E_SERVER_STOPPING once the server has decided to end. Throws std::bad_alloc.
    HRESULT CreateProvider(REFIID riid, void** out);
    // Nothing is made any more.
    void Close() noexcept { m_monitor.Close(); }

    // Counts; the unlock that leaves none wakes the monitor.
    LONG Lock() noexcept override;
    LONG Unlock() noexcept override;
    // How many provider objects there are, those included that have given up their lock and are still storing
    // their results.
    static long Providers() noexcept;

  private:
    CServerModule() noexcept = default;
    HRESULT RunScript(UINT resource, BOOL registering) noexcept;
    static HRESULT WINAPI UpdateClassRegistry(BOOL registering) noexcept;

    static atl::ObjectEntry s_objects[];

    atl::Module m_record{};
    GUID m_typeLibrary{};
    DWORD m_mainThread = 0;
    CHostPaths m_paths;
    CMonitorActions m_monitorActions;
    CShutdownMonitor m_monitor{m_record.lockCount, m_monitorActions};
};
