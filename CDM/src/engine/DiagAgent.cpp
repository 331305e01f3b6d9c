#include "CDM/src/engine/DiagAgent.h"

#include "CDM/src/ZebDebug.h"
#include "Common/src/com/ComBoundary.h"

#include <atomic>

namespace
{
std::atomic<long> s_living{0};

// Calls an enumeration of the agent; the block becomes the holder's only when the call has succeeded.
template <class T, class Call>
HRESULT Enumerate(CVormArray<T>& list, Call&& call)
{
    CVormArray<T> holder;
    T* items = nullptr;
    ULONG count = 0;
    const HRESULT hr = AtComBoundary([&] { return call(&count, &items); });
    if (FAILED(hr))
        return hr;
    if (!items && count != 0)
        return E_UNEXPECTED;
    *holder.PutItems() = items;
    *holder.PutCount() = count;
    list = holder;
    return S_OK;
}
} // namespace

HRESULT CDiagAgent::Query(IVormRoot* root, std::shared_ptr<CDiagAgent>& agent)
{
    return AtComBoundary(
        [&]
        {
            ComPtr<IVormDiag> diagnostics;
            const HRESULT hr = root->QueryInterface(__uuidof(IVormDiag), diagnostics.PutVoid());
            if (FAILED(hr))
                return hr;
            if (!diagnostics)
                return E_NOINTERFACE;
            agent = std::make_shared<CDiagAgent>(diagnostics.Get());
            diagnostics.Detach();
            return S_OK;
        });
}

CDiagAgent::CDiagAgent(IVormDiag* diagnostics) noexcept : m_diagnostics(diagnostics)
{
    ++s_living;
}

long CDiagAgent::Living() noexcept
{
    return s_living;
}

CDiagAgent::~CDiagAgent()
{
    try
    {
        m_diagnostics->Release();
    }
    catch (...)
    {
        ZebDebug().Write("CDiagAgent::~CDiagAgent: the agent failed in Release");
    }
    --s_living;
}

HRESULT CDiagAgent::EnumAdapters(CVormArray<BSTR>& adapterKeys)
{
    return Enumerate(adapterKeys,
                     [&](ULONG* count, BSTR** items) { return m_diagnostics->EnumAdapters(count, items); });
}

HRESULT CDiagAgent::EnumDiagTests(BSTR adapterKey, CVormArray<VormTestDescriptor>& tests)
{
    return Enumerate(tests, [&](ULONG* count, VormTestDescriptor** items)
                     { return m_diagnostics->EnumDiagTests(adapterKey, count, items); });
}

HRESULT CDiagAgent::RunDiagTest(BSTR adapterKey, ULONG testId) noexcept
{
    return AtComBoundary([&] { return m_diagnostics->RunDiagTest(adapterKey, testId); });
}

HRESULT CDiagAgent::StopTest(BSTR adapterKey, ULONG testId) noexcept
{
    return AtComBoundary([&] { return m_diagnostics->StopTest(adapterKey, testId); });
}

HRESULT CDiagAgent::GetDiagTestStatistics(BSTR adapterKey, ULONG testId,
                                          VormTestStatistics& statistics) noexcept
{
    return AtComBoundary([&]
                         { return m_diagnostics->GetDiagTestStatistics(adapterKey, testId, &statistics); });
}
