#include "tests/support/FakeAgent.h"

#include "Common/src/com/Bstr.h"
#include "tests/support/Allocations.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

void CFakeAgent::AddAdapter(const wchar_t* key, std::initializer_list<ULONG> testIds)
{
    m_adapters.push_back({key, {}});
    for (const ULONG testId : testIds)
        m_adapters.back().Tests.push_back({testId, 5000 + testId, 0});
}

void CFakeAgent::AddTest(const wchar_t* adapterKey, const VormTestDescriptor& test)
{
    Find(adapterKey)->Tests.push_back(test);
}

void CFakeAgent::SetOutcomes(ULONG testId, std::vector<HRESULT> outcomes)
{
    const CLockScope held(m_section);
    m_outcomes[testId] = std::move(outcomes);
}

void CFakeAgent::SetStatistics(const VormTestStatistics& statistics)
{
    const CLockScope held(m_section);
    m_statistics = statistics;
}

void CFakeAgent::BlockRuns(bool block)
{
    const CLockScope held(m_section);
    m_blocks = block;
    ResetEvent(m_end.Get());
    ResetEvent(m_blocked.Get());
}

void CFakeAgent::SetStopEndsRuns(bool ends)
{
    const CLockScope held(m_section);
    m_stopEndsRuns = ends;
}

void CFakeAgent::Fail(Method method, int n, HRESULT code, int times)
{
    const CLockScope held(m_section);
    m_failing = method;
    m_failIn = n;
    m_failTimes = times;
    m_failure = code;
    m_throws = false;
    m_failed = false;
}

void CFakeAgent::Throw(Method method, int n, int times)
{
    Fail(method, n, S_OK, times);
    const CLockScope held(m_section);
    m_throws = true;
}

bool CFakeAgent::Failed() const
{
    const CLockScope held(m_section);
    return m_failed;
}

std::vector<CFakeAgent::CCall> CFakeAgent::Calls() const
{
    const CLockScope held(m_section);
    return m_calls;
}

int CFakeAgent::Count(Method method) const
{
    const CLockScope held(m_section);
    return static_cast<int>(std::count_if(m_calls.begin(), m_calls.end(),
                                          [&](const CCall& call) { return call.What == method; }));
}

void CFakeAgent::Forget()
{
    const CLockScope held(m_section);
    m_calls.clear();
}

HRESULT CFakeAgent::Begin(Method method, BSTR adapterKey, ULONG testId)
{
    const CSparedAllocations spared;
    const CLockScope held(m_section);
    m_calls.push_back({method, adapterKey ? adapterKey : L"", testId});
    if (method != m_failing || m_failIn == 0)
        return S_OK;
    if (m_failIn > 1)
    {
        --m_failIn;
        return S_OK;
    }
    if (--m_failTimes == 0)
        m_failIn = 0;
    m_failed = true;
    if (m_throws)
        throw std::runtime_error("the agent throws");
    return m_failure;
}

CFakeAgent::CAdapter* CFakeAgent::Find(const std::wstring& key)
{
    const auto found = std::find_if(m_adapters.begin(), m_adapters.end(),
                                    [&](const CAdapter& adapter) { return adapter.Key == key; });
    return found == m_adapters.end() ? nullptr : &*found;
}

HRESULT CFakeAgent::NextOutcome(ULONG testId)
{
    const CSparedAllocations spared;
    const CLockScope held(m_section);
    std::vector<HRESULT>& outcomes = m_outcomes[testId];
    if (outcomes.empty())
        return S_OK;
    const HRESULT outcome = outcomes.front();
    if (outcomes.size() > 1)
        outcomes.erase(outcomes.begin());
    return outcome;
}

HRESULT CFakeAgent::QueryInterface(REFIID riid, void** out)
{
    if (IsEqualIID(riid, __uuidof(IVormDiag)))
        if (const HRESULT hr = Begin(Method::QueryDiagnostics); FAILED(hr))
        {
            *out = nullptr;
            return hr;
        }
    return CComObject::QueryInterface(riid, out);
}

ULONG CFakeAgent::Release()
{
    const bool throws = std::exchange(m_throwOnRelease, false);
    const ULONG left = CComObject::Release();
    if (throws)
        throw std::runtime_error("the agent throws while it is released");
    return left;
}

HRESULT CFakeAgent::Initialize(ULONG flags)
{
    return Begin(Method::Initialize, nullptr, flags);
}

HRESULT CFakeAgent::EnumAdapters(ULONG* count, BSTR** adapterKeys)
{
    if (const HRESULT hr = Begin(Method::EnumAdapters); FAILED(hr))
        return hr;
    const CSparedAllocations spared;
    *count = static_cast<ULONG>(m_adapters.size());
    *adapterKeys = static_cast<BSTR*>(CoTaskMemAlloc(sizeof(BSTR) * std::max<size_t>(1, m_adapters.size())));
    for (size_t i = 0; i < m_adapters.size(); ++i)
        (*adapterKeys)[i] = CBstr(m_adapters[i].Key.c_str()).Detach();
    return S_OK;
}

HRESULT CFakeAgent::EnumDiagTests(BSTR adapterKey, ULONG* count, VormTestDescriptor** tests)
{
    if (const HRESULT hr = Begin(Method::EnumDiagTests, adapterKey); FAILED(hr))
        return hr;
    const CAdapter* const adapter = Find(adapterKey);
    if (!adapter)
        return E_INVALIDARG;
    const CSparedAllocations spared;
    const size_t size = adapter->Tests.size();
    *count = static_cast<ULONG>(size);
    *tests = static_cast<VormTestDescriptor*>(
        CoTaskMemAlloc(sizeof(VormTestDescriptor) * std::max<size_t>(1, size)));
    std::copy(adapter->Tests.begin(), adapter->Tests.end(), *tests);
    return S_OK;
}

HRESULT CFakeAgent::RunDiagTest(BSTR adapterKey, ULONG testId)
{
    if (const HRESULT hr = Begin(Method::RunDiagTest, adapterKey, testId); FAILED(hr))
        return hr;
    bool blocks = false;
    {
        const CLockScope held(m_section);
        blocks = m_blocks;
    }
    if (blocks)
    {
        SetEvent(m_blocked.Get());
        WaitForSingleObject(m_end.Get(), INFINITE);
        ResetEvent(m_end.Get());
        ResetEvent(m_blocked.Get());
    }
    return NextOutcome(testId);
}

HRESULT CFakeAgent::StopTest(BSTR adapterKey, ULONG testId)
{
    if (const HRESULT hr = Begin(Method::StopTest, adapterKey, testId); FAILED(hr))
        return hr;
    WaitForSingleObject(m_stopsGo.Get(), INFINITE);
    const CLockScope held(m_section);
    if (m_stopEndsRuns)
        SetEvent(m_end.Get());
    return S_OK;
}

HRESULT CFakeAgent::GetDiagTestStatistics(BSTR adapterKey, ULONG testId, VormTestStatistics* stats)
{
    if (const HRESULT hr = Begin(Method::GetDiagTestStatistics, adapterKey, testId); FAILED(hr))
        return hr;
    const CLockScope held(m_section);
    *stats = m_statistics;
    return S_OK;
}
