#include "CDM/src/server/Server.h"

#include "CDM/src/ZebDebug.h"
#include "CDM/src/engine/DiagAgent.h"
#include "CDM/src/server/CommandLine.h"
#include "CDM/src/server/Configuration.h"
#include "CDM/src/server/ServerModule.h"
#include "Common/src/WomClassCache.h"
#include "Common/src/com/ComBoundary.h"
#include "Common/src/wine/StubHold.h"

#include <objbase.h>

namespace
{
const UINT g_forceExitMessage = RegisterWindowMessageA("Force Veltrane(R) ZEB WMI Providers to exit");

// A provider object releases its lock before it stores its results, which can take longer than the monitor's
// five seconds. The process waits for that, but not forever.
void WaitForLastProvider() noexcept
{
    constexpr DWORD kStepMilliseconds = 50;
    constexpr DWORD kLimitMilliseconds = 60000;
    for (DWORD waited = 0; CServerModule::Providers() > 0 && waited < kLimitMilliseconds;
         waited += kStepMilliseconds)
        Sleep(kStepMilliseconds);
}

// A thread that stores results works with static objects, one that is in the agent with the agent's library.
bool IsStillAtWork() noexcept
{
    return CServerModule::Providers() > 0 || CDiagAgent::Living() > 0;
}

// Takes nothing away from such a thread before the process is gone.
void EndAtOnce(HRESULT exitCode) noexcept
{
    ZebDebug().Write("The server ends while a provider or the agent is still at work");
    TerminateProcess(GetCurrentProcess(), static_cast<UINT>(exitCode));
}

HRESULT Serve(CServerModule& module) noexcept
{
    module.StartMonitor();
    HoldActivationStubs();
    const HRESULT hr =
        module.RegisterClassObjects(CLSCTX_LOCAL_SERVER, REGCLS_MULTIPLEUSE | REGCLS_SUSPENDED);
    if (FAILED(hr))
    {
        // No client could reach the server, or end it.
        ZebDebug().Write("The server ends because its class could not be registered, hr = <%x>", hr);
        return hr;
    }
    CoResumeClassObjects();

    MSG message;
    while (GetMessageA(&message, nullptr, 0, 0) > 0)
        DispatchMessageA(&message);

    module.Close();
    module.RevokeClassObjects();
    Sleep(1000);
    WaitForLastProvider();
    return S_OK;
}

HRESULT Act(CServerModule& module, ServerAction action) noexcept
{
    if (action == ServerAction::Serve)
        return Serve(module);
    const HRESULT hr = action == ServerAction::Register ? module.RegisterServer() : module.UnregisterServer();
    if (FAILED(hr))
        ReportRegistrationFailure(action, hr);
    return hr;
}

HRESULT Run(HINSTANCE instance)
{
    // In the end, resource libraries are looked for by name alone. The current directory is no place for
    // them: whoever starts the server chooses it.
    SetDllDirectoryW(L"");

    const CTraceConfiguration trace = ReadTraceConfiguration();
    ZebDebug().Configure("ZebDiag", trace.FileName.c_str(), static_cast<long>(trace.Level), 0, false, 0);

    CServerModule& module = CServerModule::Instance();
    module.SetPaths(ReadHostPaths());
    const char* const commandLine = GetCommandLineA();

    CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    CoInitializeSecurity(nullptr, -1, nullptr, nullptr, RPC_C_AUTHN_LEVEL_CALL, RPC_C_IMP_LEVEL_IMPERSONATE,
                         nullptr, EOAC_NONE, nullptr);
    module.Init(instance);
    module.SetMainThread(GetCurrentThreadId());

    const HRESULT hr = Act(module, ScanCommandLine(commandLine));

    if (IsStillAtWork())
        EndAtOnce(hr);
    WomClassCache::Drop();
    module.Term();
    module.SetPaths({});
    CoUninitialize();
    return hr;
}
} // namespace

int RunServer(HINSTANCE instance) noexcept
{
    return AtComBoundary([&] { return Run(instance); });
}

UINT ForceExitMessage() noexcept
{
    return g_forceExitMessage;
}
