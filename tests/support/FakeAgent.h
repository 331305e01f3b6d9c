// An adapter agent in the test's own process. A test says which adapters and tests there are, how runs end
// and which calls fail or throw; afterwards it looks at what was called. Any thread may call it; it is
// prepared before.
#pragma once

#include "Common/src/com/ComObject.h"
#include "Common/src/com/CriticalSection.h"
#include "Common/src/com/Owned.h"
#include "agent/Vorl.h"

#include <initializer_list>
#include <map>
#include <string>
#include <vector>

class CFakeAgent final : public CComObject<IVormRoot, IVormDiag>
{
  public:
    enum class Method
    {
        QueryDiagnostics,
        Initialize,
        EnumAdapters,
        EnumDiagTests,
        RunDiagTest,
        StopTest,
        GetDiagTestStatistics,
    };
    struct CCall
    {
        Method What;
        std::wstring AdapterKey;
        ULONG TestID; // of Initialize: its flags
    };

    // Room for the log of calls, so that noting one allocates nothing.
    CFakeAgent() { m_calls.reserve(4096); }

    // The tests' name strings are 5000 + the test number.
    void AddAdapter(const wchar_t* key, std::initializer_list<ULONG> testIds);
    void AddTest(const wchar_t* adapterKey, const VormTestDescriptor& test);

    // How runs of a test end, in turn; the last one stands for all later runs. Without any: S_OK.
    void SetOutcomes(ULONG testId, std::vector<HRESULT> outcomes);
    void SetStatistics(const VormTestStatistics& statistics);
    // Whether a run from now on blocks until StopTest or EndRuns; the blocked run then ends with its outcome.
    void BlockRuns(bool block = true);
    // Whether StopTest ends a blocked run (it does unless told otherwise).
    void SetStopEndsRuns(bool ends);
    void EndRuns() { SetEvent(m_end.Get()); }
    // From now on StopTest, once it is counted, does not come back before LetStopsGo.
    void BlockStops() { ResetEvent(m_stopsGo.Get()); }
    void LetStopsGo() { SetEvent(m_stopsGo.Get()); }
    // Signalled while a run is blocked.
    HANDLE Blocked() const noexcept { return m_blocked.Get(); }

    // The n-th call of a method from now on (counted from 1) answers `code`, or throws; so do those after it,
    // `times` in all.
    void Fail(Method method, int n, HRESULT code, int times = 1);
    void Throw(Method method, int n, int times = 1);
    // Whether a planned failure has come true, once or more.
    bool Failed() const;
    // The next Release of anybody's does.
    void ThrowWhenReleased() { m_throwOnRelease = true; }

    std::vector<CCall> Calls() const;
    int Count(Method method) const;
    // Of the calls so far.
    void Forget();

    STDMETHODIMP QueryInterface(REFIID riid, void** out) override;
    STDMETHODIMP_(ULONG) Release() override;
    STDMETHODIMP Initialize(ULONG flags) override;
    STDMETHODIMP EnumAdapters(ULONG* count, BSTR** adapterKeys) override;
    STDMETHODIMP EnumDiagTests(BSTR adapterKey, ULONG* count, VormTestDescriptor** tests) override;
    STDMETHODIMP RunDiagTest(BSTR adapterKey, ULONG testId) override;
    STDMETHODIMP StopTest(BSTR adapterKey, ULONG testId) override;
    STDMETHODIMP GetDiagTestStatistics(BSTR adapterKey, ULONG testId, VormTestStatistics* stats) override;

  private:
    struct CAdapter
    {
        std::wstring Key;
        std::vector<VormTestDescriptor> Tests;
    };

    // Notes the call and carries out the failure that is planned for it: throws, or gives a failure code.
    HRESULT Begin(Method method, BSTR adapterKey = nullptr, ULONG testId = 0);
    CAdapter* Find(const std::wstring& key);
    HRESULT NextOutcome(ULONG testId);

    mutable CCriticalSection m_section;
    std::vector<CAdapter> m_adapters;
    std::map<ULONG, std::vector<HRESULT>> m_outcomes;
    VormTestStatistics m_statistics{};
    std::vector<CCall> m_calls;
    bool m_blocks = false;
    bool m_stopEndsRuns = true;
    CHandle m_end{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    CHandle m_blocked{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    CHandle m_stopsGo{CreateEventW(nullptr, TRUE, TRUE, nullptr)};

    Method m_failing = Method::Initialize;
    int m_failIn = 0;
    int m_failTimes = 0;
    HRESULT m_failure = S_OK;
    bool m_throws = false;
    bool m_failed = false;
    bool m_throwOnRelease = false;
};
