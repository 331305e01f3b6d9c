// A whole adapter agent in one file, to begin an agent of one's own from: one adapter with one test, which
// watches for a second whether there is a link. docs/agents.md says what the provider expects of each call.
// What every agent needs besides is taken from agent/server: the DLL's entry points with its registration,
// the lists that are handed out, and the table of runs. Where a driver would be asked, a registry value is
// read, so that the agent can be tried without hardware.
#include "Common/src/com/ComBoundary.h"
#include "Common/src/com/ComObject.h"
#include "agent/AgentCodes.h"
#include "agent/Vorl.h"
#include "agent/VorlIds.h"
#include "agent/server/AgentClass.h"
#include "agent/server/RunTable.h"
#include "agent/server/ServerLife.h"
#include "agent/server/VormLists.h"

namespace
{
// Keys stay the same from start to start, and have no "@".
constexpr wchar_t kAdapter[] = L"EXAMPLE-ADAPTER";
constexpr ULONG kLinkTest = 1;
constexpr int kLooks = 10;
constexpr DWORD kBetweenLooks = 100; // milliseconds

// Ask the driver here. There is a link unless the value is 0.
bool HasLink() noexcept
{
    DWORD link = 1;
    DWORD size = sizeof link;
    RegGetValueW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Veltrane\\Halvern\\ZEB\\ExampleAgent", L"Link",
                 RRF_RT_REG_DWORD, nullptr, &link, &size);
    return link != 0;
}

// The provider passes keys in upper case, so they are compared without.
HRESULT FindAdapter(BSTR key) noexcept
{
    return key && _wcsicmp(key, kAdapter) == 0 ? S_OK : vorl::NoSuchAdapter;
}

HRESULT FindTest(BSTR key, ULONG testId) noexcept
{
    const HRESULT hr = FindAdapter(key);
    return SUCCEEDED(hr) && testId != kLinkTest ? vorl::NoSuchTest : hr;
}

// The provider calls from any of its threads, several at once. No exception may leave a call.
class CExampleAgent final : public CComObject<IVormRoot, IVormDiag>
{
  public:
    // Once, before anything else: the place to look for the hardware. A failure keeps the provider from
    // starting.
    STDMETHODIMP Initialize(ULONG) override { return S_OK; }

    STDMETHODIMP EnumAdapters(ULONG* count, BSTR** adapterKeys) override
    {
        if (!count || !adapterKeys)
            return E_POINTER;
        *count = 0;
        *adapterKeys = nullptr;
        return AtComBoundary([&] { return HandOutKeys({kAdapter}, count, adapterKeys); });
    }

    STDMETHODIMP EnumDiagTests(BSTR adapterKey, ULONG* count, VormTestDescriptor** tests) override
    {
        if (!count || !tests)
            return E_POINTER;
        *count = 0;
        *tests = nullptr;
        if (const HRESULT hr = FindAdapter(adapterKey); FAILED(hr))
            return hr;
        return AtComBoundary(
            [&] {
                return HandOutTests({{kLinkTest, vorl::NameString(kLinkTest), 0}}, count, tests);
            });
    }

    // Returns when the test has ended. S_OK is passed, and any failure is the reason why it did not pass.
    STDMETHODIMP RunDiagTest(BSTR adapterKey, ULONG testId) override
    {
        if (const HRESULT hr = FindTest(adapterKey, testId); FAILED(hr))
            return hr;
        return AtComBoundary(
            [&]() -> HRESULT
            {
                const auto run = m_runs.Begin(adapterKey, testId);
                if (!run)
                    return vorl::AlreadyRunning;
                for (int look = 0; look < kLooks; ++look)
                {
                    if (!HasLink())
                        return vorl::link::Down;
                    if (run->WaitForStop(kBetweenLooks))
                        return vorl::Stopped; // by this code the provider knows a run that was stopped
                }
                return S_OK;
            });
    }

    // Comes on another thread while RunDiagTest blocks.
    STDMETHODIMP StopTest(BSTR adapterKey, ULONG testId) override
    {
        if (const HRESULT hr = FindTest(adapterKey, testId); FAILED(hr))
            return hr;
        return AtComBoundary([&] { return m_runs.Stop(adapterKey, testId) ? S_OK : vorl::NotRunning; });
    }

    // For tests 9 and 10, the sender and the responder, which this agent does not offer.
    STDMETHODIMP GetDiagTestStatistics(BSTR adapterKey, ULONG testId, VormTestStatistics* stats) override
    {
        if (!stats)
            return E_POINTER;
        *stats = {};
        const HRESULT hr = FindTest(adapterKey, testId);
        return FAILED(hr) ? hr : vorl::NoStatistics;
    }

  private:
    CRunTable m_runs;
    CServerLock m_lock; // keeps the DLL loaded
};
} // namespace

// What the entry points of agent/server/InprocServer.cpp serve and register. An agent takes the place of
// Vorl.dll by having its class.
const CAgentClass& ServedAgent() noexcept
{
    static constexpr CAgentClass agent = {kClsidVorl, L"Example of an adapter agent",
                                          [](REFIID riid, void** out) -> HRESULT
                                          { return MakeCom<CExampleAgent>()->QueryInterface(riid, out); }};
    return agent;
}
