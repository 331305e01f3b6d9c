// VorlProxy.exe: the scripted agent behind a local server of the real agent's class, so that every call to it
// is marshalled. COM starts it; it ends by itself once no client holds an object of it any more.
#include "Common/src/com/ComBoundary.h"
#include "Common/src/wine/StubHold.h"
#include "agent/VorlIds.h"
#include "agent/scripted/ScriptSource.h"
#include "agent/scripted/ScriptedAgent.h"
#include "agent/server/AgentRegistration.h"
#include "agent/server/ServerLife.h"

#include <cstdio>
#include <iterator>

namespace
{
// A client that asked COM for the agent may die before it makes an object.
constexpr std::chrono::seconds kFirstUse{60};
// A client that gives one object back and asks for the next finds the same process.
constexpr std::chrono::milliseconds kGrace{300};

constexpr CAgentClass kAgent = {
    kClsidVorl, L"ZEB Diagnostics adapter agent", [](REFIID riid, void** out) -> HRESULT {
        return MakeCom<CScriptedAgent>(LoadScript, ScriptedThrow::IsServerFault)->QueryInterface(riid, out);
    }};

HRESULT Serve()
{
    HoldActivationStubs();
    HoldStubs({__uuidof(IVormRoot), __uuidof(IVormDiag)});
    ComPtr<IUnknown> factory;
    HRESULT hr = GetAgentFactory(kAgent, __uuidof(IUnknown), factory.PutVoid());
    DWORD cookie = 0;
    if (SUCCEEDED(hr))
        hr =
            CoRegisterClassObject(kAgent.Id, factory.Get(), CLSCTX_LOCAL_SERVER, REGCLS_MULTIPLEUSE, &cookie);
    if (FAILED(hr))
        return hr;
    WaitUntilServerIsUnused(kFirstUse, kGrace);
    hr = CoRevokeClassObject(cookie);
    // A client that was handed the factory just before is served to its end.
    WaitUntilServerIsUnused(kGrace, std::chrono::milliseconds(0));
    return hr;
}

HRESULT ServeInApartment()
{
    HRESULT hr = CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    if (FAILED(hr))
        return hr;
    hr = Serve();
    CoUninitialize();
    return hr;
}

struct CSwitch
{
    const wchar_t* Name;
    HRESULT (*Act)();
};

// COM's own switch for starting a local server, and registration.
constexpr CSwitch kSwitches[] = {
    {L"Embedding", ServeInApartment},
    {L"RegServer", [] { return RegisterAgent(kAgent, ServerKind::Local); }},
    {L"UnregServer", [] { return UnregisterAgent(kAgent, ServerKind::Local); }},
};
} // namespace

int wmain(int argc, wchar_t** argv)
{
    for (const CSwitch& known : kSwitches)
        if (argc == 2 && (argv[1][0] == L'/' || argv[1][0] == L'-') && _wcsicmp(argv[1] + 1, known.Name) == 0)
        {
            const HRESULT hr = AtComBoundary(known.Act);
            if (FAILED(hr))
                std::fprintf(stderr, "VorlProxy: failed with 0x%08lX\n", static_cast<unsigned long>(hr));
            return SUCCEEDED(hr) ? 0 : 1;
        }
    std::fputs("usage: VorlProxy /RegServer | /UnregServer\nCOM starts it with /Embedding.\n", stderr);
    return 2;
}
