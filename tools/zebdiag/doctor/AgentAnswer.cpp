#include "tools/zebdiag/doctor/AgentAnswer.h"

#include "Common/src/com/Bstr.h"
#include "Common/src/com/ComBoundary.h"
#include "Common/src/com/ComPtr.h"
#include "Common/src/com/Owned.h"
#include "agent/Vorl.h"
#include "agent/VorlIds.h"
#include "tools/zebdiag/doctor/Places.h"

#include <memory>
#include <string>

namespace zebdiag
{
namespace
{
// Exit codes of the asking process; every other one is a status or a crash.
constexpr DWORD kHasTests = 0;
constexpr DWORD kNoAdapter = 1;
constexpr DWORD kNoTests = 2;

constexpr DWORD kAgentPatience = 15000; // milliseconds
constexpr ULONG kAgentLanguage = 1033;  // as the provider asks
constexpr DWORD kTestAgent = 1;
constexpr DWORD kProxyAgent = 2;

struct FreeTaskMemory
{
    void operator()(void* memory) const noexcept { CoTaskMemFree(memory); }
};

HRESULT Create(ComPtr<IVormRoot>& root)
{
    DWORD selector = 0;
    DWORD size = sizeof selector;
    RegGetValueW(HKEY_LOCAL_MACHINE, kProvidersKey, L"TestVorl", RRF_RT_REG_DWORD, nullptr, &selector, &size);
    return CoCreateInstance(selector == kTestAgent ? kClsidVorlTest : kClsidVorl, nullptr,
                            selector == kProxyAgent ? CLSCTX_LOCAL_SERVER : CLSCTX_ALL, IID_IVormRoot,
                            root.PutVoid());
}

// As the provider does, which goes on without an adapter whose tests cannot be listed.
HRESULT CountTests(IVormDiag* agent, ULONG& adapters, ULONG& tests)
{
    BSTR* keys = nullptr;
    HRESULT hr = agent->EnumAdapters(&adapters, &keys);
    const std::unique_ptr<BSTR[], FreeTaskMemory> list(keys);
    for (ULONG i = 0; SUCCEEDED(hr) && i < adapters; ++i)
    {
        ULONG count = 0;
        VormTestDescriptor* descriptors = nullptr;
        const CBstr key = CBstr::Attach(keys[i]);
        const HRESULT listed = agent->EnumDiagTests(key.Get(), &count, &descriptors);
        CoTaskMemFree(descriptors);
        if (SUCCEEDED(listed))
            tests += count;
        else if (tests == 0 && i + 1 == adapters)
            hr = listed;
    }
    return hr;
}

std::wstring OwnCommand()
{
    wchar_t path[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    return L"\"" + std::wstring(path) + L"\" " + kAskAgentArgument;
}
} // namespace

DWORD AskAgentHere() noexcept
{
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
    ULONG adapters = 0;
    ULONG tests = 0;
    const HRESULT hr = AtComBoundary(
        [&]
        {
            ComPtr<IVormRoot> root;
            ComPtr<IVormDiag> agent;
            HRESULT status = Create(root);
            if (SUCCEEDED(status))
                status = root->Initialize(kAgentLanguage);
            if (SUCCEEDED(status))
                status = root->QueryInterface(IID_IVormDiag, agent.PutVoid());
            return SUCCEEDED(status) ? CountTests(agent.Get(), adapters, tests) : status;
        });
    return FAILED(hr)      ? static_cast<DWORD>(hr)
           : adapters == 0 ? kNoAdapter
           : tests == 0    ? kNoTests
                           : kHasTests;
}

CAgentAnswer AgentAnswerOf(DWORD exitCode) noexcept
{
    switch (exitCode)
    {
    case kHasTests:
        return {AgentSays::HasTests, S_OK};
    case kNoAdapter:
        return {AgentSays::NoAdapter, S_OK};
    case kNoTests:
        return {AgentSays::NoTests, S_OK};
    default:
        // A process that crashes ends with the exception's code, whose severity is not that of a status.
        return exitCode >> 30 == 2 ? CAgentAnswer{AgentSays::Failed, static_cast<HRESULT>(exitCode)}
                                   : CAgentAnswer{AgentSays::Crashed, S_OK};
    }
}

CAgentAnswer AskAgent()
{
    std::wstring command = OwnCommand();
    STARTUPINFOW start = {};
    start.cb = sizeof start;
    PROCESS_INFORMATION process = {};
    if (!CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start,
                        &process))
        return {}; // then the trace has to tell
    const CHandle thread(process.hThread);
    const CHandle ended(process.hProcess);
    if (WaitForSingleObject(ended.Get(), kAgentPatience) != WAIT_OBJECT_0)
    {
        TerminateProcess(ended.Get(), 0);
        return {AgentSays::Nothing, S_OK};
    }
    DWORD code = 0;
    GetExitCodeProcess(ended.Get(), &code);
    return AgentAnswerOf(code);
}
} // namespace zebdiag
