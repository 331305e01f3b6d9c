#include "agent/scripted/ScriptedAgent.h"

#include "Common/src/com/Bstr.h"
#include "Common/src/com/ComBoundary.h"
#include "agent/AgentCodes.h"
#include "agent/scripted/ScriptValue.h"
#include "agent/server/VormLists.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>

namespace
{
std::wstring_view View(BSTR text) noexcept
{
    return {text ? text : L"", SysStringLen(text)};
}

void WaitForEventNamed(const std::wstring& name)
{
    const CHandle event(CreateEventW(nullptr, TRUE, FALSE, name.c_str()));
    if (!event)
        throw std::runtime_error("an event of the script cannot be waited for");
    WaitForSingleObject(event.Get(), INFINITE);
}

// The exception of a script leaves the COM method on purpose: clients are tested with agents that do this.
HRESULT ThrowAsScripted(ScriptedThrow how)
{
    if (how == ScriptedThrow::IsServerFault)
        return RPC_E_SERVERFAULT;
    throw std::runtime_error("the script of the agent says that this call throws");
}
} // namespace

template <class Body>
HRESULT CScriptedAgent::Perform(Call call, BSTR adapterKey, std::optional<ULONG> testId, Body&& body)
{
    bool throws = false;
    const HRESULT hr = AtComBoundary(
        [&]() -> HRESULT
        {
            const std::shared_ptr<CScriptPlay> play = m_play.load();
            if (!play)
                return vorl::NotInitialized;
            if (const CFault* fault = play->Enter(call, View(adapterKey), testId))
            {
                if (!fault->HangUntil.empty())
                    WaitForEventNamed(fault->HangUntil);
                throws = fault->Throw;
                if (throws)
                    return E_UNEXPECTED;
                if (fault->Result)
                    return *fault->Result;
            }
            return body(*play);
        });
    return throws ? ThrowAsScripted(m_throw) : hr;
}

STDMETHODIMP_(ULONG) CScriptedAgent::Release()
{
    const std::shared_ptr<CScriptPlay> play = m_play.load();
    const ScriptedThrow how = m_throw;
    const ULONG left = CComObject::Release();
    if (left > 0 || !play)
        return left;
    // The object is gone from here on; what the script says about the last release is still to happen.
    bool throws = false;
    AtComBoundary(
        [&]
        {
            const CFault* fault = play->Enter(Call::Release);
            if (fault && !fault->HangUntil.empty())
                WaitForEventNamed(fault->HangUntil);
            throws = fault && fault->Throw;
            return S_OK;
        });
    if (throws)
        ThrowAsScripted(how);
    return left;
}

HRESULT CScriptedAgent::Load()
{
    if (m_play.load())
        return S_OK;
    try
    {
        m_play = std::make_shared<CScriptPlay>(m_load());
        return S_OK;
    }
    catch (const CScriptError& error)
    {
        return error.Code();
    }
}

STDMETHODIMP CScriptedAgent::Initialize(ULONG)
{
    const HRESULT hr = AtComBoundary([&] { return Load(); });
    if (FAILED(hr))
        return hr;
    return Perform(Call::Initialize, nullptr, {}, [](CScriptPlay&) { return S_OK; });
}

STDMETHODIMP CScriptedAgent::EnumAdapters(ULONG* count, BSTR** adapterKeys)
{
    if (!count || !adapterKeys)
        return E_POINTER;
    *count = 0;
    *adapterKeys = nullptr;
    return Perform(Call::EnumAdapters, nullptr, {},
                   [&](CScriptPlay& play)
                   {
                       const auto& adapters = play.Script().Adapters;
                       std::vector<std::wstring> keys;
                       std::transform(adapters.begin(), adapters.end(), std::back_inserter(keys),
                                      [](const CScriptedAdapter& adapter) { return adapter.Key; });
                       return HandOutKeys(keys, count, adapterKeys);
                   });
}

STDMETHODIMP CScriptedAgent::EnumDiagTests(BSTR adapterKey, ULONG* count, VormTestDescriptor** tests)
{
    if (!count || !tests)
        return E_POINTER;
    *count = 0;
    *tests = nullptr;
    return Perform(Call::EnumDiagTests, adapterKey, {},
                   [&](CScriptPlay& play)
                   {
                       const CScriptedAdapter* adapter = play.FindAdapter(View(adapterKey));
                       if (!adapter)
                           return vorl::NoSuchAdapter;
                       std::vector<VormTestDescriptor> descriptors;
                       std::transform(adapter->Tests.begin(), adapter->Tests.end(),
                                      std::back_inserter(descriptors),
                                      [](const CScriptedTest& test) { return test.Descriptor; });
                       return HandOutTests(descriptors, count, tests);
                   });
}

STDMETHODIMP CScriptedAgent::RunDiagTest(BSTR adapterKey, ULONG testId)
{
    // Begun before the call is counted: whoever sees the count can stop the run.
    std::unique_ptr<CRunTable::CRun> run;
    const HRESULT begun = AtComBoundary(
        [&]
        {
            run = m_runs.Begin(View(adapterKey), testId);
            return S_OK;
        });
    if (FAILED(begun))
        return begun;
    return Perform(Call::RunDiagTest, adapterKey, testId,
                   [&](CScriptPlay& play)
                   {
                       const CScriptedTest* test = play.FindTest(View(adapterKey), testId);
                       if (!test)
                           return play.FindAdapter(View(adapterKey)) ? vorl::NoSuchTest : vorl::NoSuchAdapter;
                       if (!run)
                           return vorl::AlreadyRunning;
                       const HRESULT outcome = play.BeginRun(*test);
                       const bool stopped = run->WaitForStop(test->Duration.value_or(INFINITE));
                       return stopped && !test->IsSenderResponder() ? vorl::Stopped : outcome;
                   });
}

STDMETHODIMP CScriptedAgent::StopTest(BSTR adapterKey, ULONG testId)
{
    return Perform(Call::StopTest, adapterKey, testId,
                   [&](CScriptPlay&)
                   { return m_runs.Stop(View(adapterKey), testId) ? S_OK : vorl::NotRunning; });
}

STDMETHODIMP CScriptedAgent::GetDiagTestStatistics(BSTR adapterKey, ULONG testId, VormTestStatistics* stats)
{
    if (!stats)
        return E_POINTER;
    *stats = {};
    return Perform(Call::GetDiagTestStatistics, adapterKey, testId,
                   [&](CScriptPlay& play)
                   {
                       const CScriptedTest* test = play.FindTest(View(adapterKey), testId);
                       if (!test)
                           return play.FindAdapter(View(adapterKey)) ? vorl::NoSuchTest : vorl::NoSuchAdapter;
                       if (!test->GrowingStatistics && test->Statistics.empty())
                           return vorl::NoStatistics;
                       *stats = play.Poll(*test);
                       return S_OK;
                   });
}
