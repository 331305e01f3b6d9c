#include "agent/host/HostAgent.h"

#include "Common/src/com/ComBoundary.h"
#include "agent/AgentCodes.h"
#include "agent/host/HostTest.h"
#include "agent/server/VormLists.h"

#include <algorithm>
#include <iterator>

namespace
{
std::wstring ToText(BSTR text)
{
    return {text ? text : L"", SysStringLen(text)};
}
} // namespace

STDMETHODIMP CHostAgent::Initialize(ULONG)
{
    return S_OK;
}

STDMETHODIMP CHostAgent::EnumAdapters(ULONG* count, BSTR** adapterKeys)
{
    if (!count || !adapterKeys)
        return E_POINTER;
    *count = 0;
    *adapterKeys = nullptr;
    return AtComBoundary(
        [&]() -> HRESULT
        {
            std::vector<CAdapterFacts> adapters;
            if (m_network->ListAdapters(adapters) != NO_ERROR)
                return vorl::FactsUnavailable;
            std::vector<std::wstring> keys;
            std::transform(adapters.begin(), adapters.end(), std::back_inserter(keys),
                           [](const CAdapterFacts& adapter) { return adapter.Key; });
            return HandOutKeys(keys, count, adapterKeys);
        });
}

STDMETHODIMP CHostAgent::EnumDiagTests(BSTR adapterKey, ULONG* count, VormTestDescriptor** tests)
{
    if (!count || !tests)
        return E_POINTER;
    *count = 0;
    *tests = nullptr;
    return AtComBoundary(
        [&]() -> HRESULT
        {
            CAdapterFacts adapter;
            const HRESULT hr = CHostRun(*m_network, ToText(adapterKey), nullptr, 0).Read(adapter);
            if (FAILED(hr))
                return hr;
            std::vector<VormTestDescriptor> descriptors;
            for (const CHostTest& test : HostTests())
                descriptors.push_back({test.Id, vorl::NameString(test.Id), 0});
            return HandOutTests(descriptors, count, tests);
        });
}

STDMETHODIMP CHostAgent::RunDiagTest(BSTR adapterKey, ULONG testId)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            const auto tests = HostTests();
            const auto test =
                std::find_if(tests.begin(), tests.end(), [&](const CHostTest& t) { return t.Id == testId; });
            if (test == tests.end())
                return vorl::NoSuchTest;
            const std::wstring key = ToText(adapterKey);
            const auto run = m_runs.Begin(key, testId);
            if (!run)
                return vorl::AlreadyRunning;
            if (!test->IsMeasured)
                return test->Run(CHostRun(*m_network, key, run->StopEvent(), m_sampling));
            CMeasurement& measurement = m_measurements.Of(key, testId);
            measurement.Begin();
            return measurement.Ended(
                test->Run(CHostRun(*m_network, key, run->StopEvent(), m_sampling, &measurement)));
        });
}

STDMETHODIMP CHostAgent::StopTest(BSTR adapterKey, ULONG testId)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            const std::wstring key = ToText(adapterKey);
            // One that has failed by itself cannot be stopped any more: the provider would take it for
            // passed.
            const CMeasurement* const measurement = m_measurements.Find(key, testId);
            if (measurement && FAILED(measurement->Outcome()))
                return measurement->Outcome();
            return m_runs.Stop(key, testId) ? S_OK : vorl::NotRunning;
        });
}

STDMETHODIMP CHostAgent::GetDiagTestStatistics(BSTR adapterKey, ULONG testId, VormTestStatistics* stats)
{
    if (!stats)
        return E_POINTER;
    *stats = {};
    return AtComBoundary(
        [&]() -> HRESULT
        {
            const CMeasurement* const measurement = m_measurements.Find(ToText(adapterKey), testId);
            if (measurement)
                return measurement->Read(*stats) ? S_OK : vorl::NotRunning;
            const auto tests = HostTests();
            const bool measured =
                std::any_of(tests.begin(), tests.end(),
                            [&](const CHostTest& t) { return t.Id == testId && t.IsMeasured; });
            return measured ? vorl::NotRunning : vorl::NoStatistics;
        });
}
