// An agent for many clients at once. A request to stop a test is never lost: it ends the run that is going on
// or the next one. Free-threaded.
#pragma once

#include "Common/src/com/Bstr.h"
#include "Common/src/com/ComObject.h"
#include "Common/src/com/Owned.h"
#include "agent/AgentCodes.h"
#include "agent/Vorl.h"

#include <span>

// One test of one adapter.
struct CStressTest
{
    const wchar_t* adapter;
    ULONG id;
    DWORD milliseconds; // how long a run takes; 0: it is over before it can be stopped, INFINITE: it must be
    HRESULT outcome;
    CHandle stop{CreateEventW(nullptr, FALSE, FALSE, nullptr)};
};

class CStressAgent final : public CComObject<IVormRoot, IVormDiag>
{
  public:
    // `tests` outlives the agent; those of one adapter stand together.
    explicit CStressAgent(std::span<CStressTest> tests) : m_tests(tests) {}

    STDMETHODIMP Initialize(ULONG) override { return S_OK; }
    STDMETHODIMP EnumAdapters(ULONG* count, BSTR** adapterKeys) override
    {
        *count = 0;
        *adapterKeys = static_cast<BSTR*>(CoTaskMemAlloc(sizeof(BSTR) * m_tests.size()));
        for (size_t i = 0; i < m_tests.size(); ++i)
            if (i == 0 || wcscmp(m_tests[i].adapter, m_tests[i - 1].adapter) != 0)
                (*adapterKeys)[(*count)++] = CBstr(m_tests[i].adapter).Detach();
        return S_OK;
    }
    STDMETHODIMP EnumDiagTests(BSTR adapterKey, ULONG* count, VormTestDescriptor** tests) override
    {
        *count = 0;
        *tests =
            static_cast<VormTestDescriptor*>(CoTaskMemAlloc(sizeof(VormTestDescriptor) * m_tests.size()));
        for (const CStressTest& test : m_tests)
            if (wcscmp(test.adapter, adapterKey) == 0)
                (*tests)[(*count)++] = {test.id, 3500 + test.id, 0};
        return S_OK;
    }
    STDMETHODIMP RunDiagTest(BSTR adapterKey, ULONG testId) override
    {
        CStressTest* const test = Find(adapterKey, testId);
        if (!test)
            return vorl::NoSuchTest;
        if (test->milliseconds == 0)
            return test->outcome;
        const bool stopped = WaitForSingleObject(test->stop.Get(), test->milliseconds) == WAIT_OBJECT_0;
        return stopped && test->milliseconds != INFINITE ? vorl::Stopped : test->outcome;
    }
    STDMETHODIMP StopTest(BSTR adapterKey, ULONG testId) override
    {
        CStressTest* const test = Find(adapterKey, testId);
        return test && SetEvent(test->stop.Get()) ? S_OK : vorl::NoSuchTest;
    }
    STDMETHODIMP GetDiagTestStatistics(BSTR, ULONG, VormTestStatistics* statistics) override
    {
        *statistics = {};
        return S_OK;
    }

  private:
    CStressTest* Find(BSTR adapterKey, ULONG testId) const
    {
        for (CStressTest& test : m_tests)
            if (wcscmp(test.adapter, adapterKey) == 0 && test.id == testId)
                return &test;
        return nullptr;
    }

    std::span<CStressTest> m_tests;
};
